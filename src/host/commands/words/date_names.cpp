#include "host/commands/words/date_names.h"

#include <algorithm>
#include <span>

#include <fmt/format.h>
#include <unicode/dtfmtsym.h>

#include "base/translation.h"

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

template <std::size_t Size>
void take(std::array<std::string, Size>& names, std::span<const icu::UnicodeString> from) {
  for (std::size_t i = 0; i < std::min(Size, from.size()); ++i) { from[i].toUTF8String(names[i]); }
}

}  // namespace

DateNames::DateNames(std::string_view language) {
  const WrittenLanguage* found = writtenLanguage(language);
  const WrittenLanguage& written = found != nullptr ? *found : kWritten[0];
  m_afterDay = written.afterDay;
  UErrorCode error = U_ZERO_ERROR;
  const icu::DateFormatSymbols symbols(icu::Locale(std::string(written.name).c_str()), error);
  using Symbols = icu::DateFormatSymbols;
  const auto weekdays = [&](Symbols::DtWidthType width) {
    int count = 0;
    const auto* names = symbols.getWeekdays(count, Symbols::STANDALONE, width);
    // They begin at 1 there.
    return std::span(names, static_cast<std::size_t>(count)).subspan(1);
  };
  const auto months = [&](Symbols::DtContextType context, Symbols::DtWidthType width) {
    int count = 0;
    const auto* names = symbols.getMonths(count, context, width);
    return std::span(names, static_cast<std::size_t>(count));
  };
  take(m_weekdays, weekdays(Symbols::WIDE));
  take(m_shortWeekdays, weekdays(Symbols::ABBREVIATED));
  take(m_months, months(Symbols::FORMAT, Symbols::WIDE));
  take(m_shortMonths, months(Symbols::STANDALONE, Symbols::ABBREVIATED));
}

const DateNames& DateNames::ofUser() {
  // Translators: the language of this catalogue, such as de.
  static const DateNames kNames(translated("en"));
  return kNames;
}

std::size_t DateNames::placeOf(store::LocalDay day) {
  // The calendar library counts from Monday.
  return (static_cast<std::size_t>(cctz::get_weekday(day)) + 1) % 7;
}

std::string DateNames::longDay(store::LocalDay day) const { return fmt::format("{}, {}", weekday(day), date(day)); }

std::string DateNames::shortDay(store::LocalDay day) const {
  return fmt::format("{} {} {}", shortWeekday(day), shortDayOfYear(day.month(), day.day()), day.year());
}

std::string DateNames::date(store::LocalDay day) const {
  return fmt::format("{} {}", dayOfYear(day.month(), day.day()), day.year());
}

std::string DateNames::dayOfYear(int ofMonth, int dayOfMonth) const {
  return fmt::format("{}{} {}", dayOfMonth, m_afterDay, month(ofMonth));
}

std::string DateNames::shortDayOfYear(int ofMonth, int dayOfMonth) const {
  return fmt::format("{}{} {}", dayOfMonth, m_afterDay, shortMonth(ofMonth));
}

}  // namespace orlocal::host
