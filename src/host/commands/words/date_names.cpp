#include "host/commands/words/date_names.h"

#include <algorithm>

#include <fmt/format.h>
#include <unicode/dtfmtsym.h>

#include "base/languages.h"

namespace orlocal::host {
namespace {

struct WrittenLanguage {
  std::string_view name;
  std::string_view afterDay;
};
/// The first stands in for the others.
constexpr WrittenLanguage kWritten[] = {{"en", ""}, {"de", "."}};

const WrittenLanguage* writtenLanguage(std::string_view language) {
  const std::string_view name = language.substr(0, language.find_first_of("_-"));
  const auto* const found = std::find_if(std::begin(kWritten), std::end(kWritten),
                                         [name](const WrittenLanguage& row) { return row.name == name; });
  return found != std::end(kWritten) ? found : nullptr;
}

/// The first that we write in of those that the user wants.
std::string_view languageOfUser() {
  for (const std::string& language : preferredLanguages()) {
    if (const auto* written = writtenLanguage(language)) { return written->name; }
  }
  return kWritten[0].name;
}

template <std::size_t Size>
void take(std::array<std::string, Size>& names, const icu::UnicodeString* from, int count, int first) {
  for (std::size_t i = 0; i < Size && static_cast<int>(i) + first < count; ++i) {
    from[i + static_cast<std::size_t>(first)].toUTF8String(names[i]);
  }
}

}  // namespace

DateNames::DateNames(std::string_view language) {
  const WrittenLanguage* found = writtenLanguage(language);
  const WrittenLanguage& written = found != nullptr ? *found : kWritten[0];
  m_afterDay = written.afterDay;
  UErrorCode error = U_ZERO_ERROR;
  const icu::DateFormatSymbols symbols(icu::Locale(std::string(written.name).c_str()), error);
  // Weekdays begin at 1 there.
  int count = 0;
  const auto* weekdays = symbols.getWeekdays(count, icu::DateFormatSymbols::STANDALONE, icu::DateFormatSymbols::WIDE);
  take(m_weekdays, weekdays, count, 1);
  const auto* months = symbols.getMonths(count, icu::DateFormatSymbols::FORMAT, icu::DateFormatSymbols::WIDE);
  take(m_months, months, count, 0);
}

const DateNames& DateNames::ofUser() {
  static const DateNames kNames(languageOfUser());
  return kNames;
}

const std::string& DateNames::weekday(store::LocalDay day) const {
  // The calendar library counts from Monday.
  const auto fromMonday = static_cast<std::size_t>(cctz::get_weekday(day));
  return m_weekdays[(fromMonday + 1) % m_weekdays.size()];
}

std::string DateNames::longDay(store::LocalDay day) const {
  return fmt::format("{}, {}{} {} {}", weekday(day), day.day(), m_afterDay, month(day.month()), day.year());
}

}  // namespace orlocal::host
