#include "base/languages.h"

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <string_view>

#include "base/settings.h"

namespace orlocal {
namespace {

constexpr std::string_view kEnglish = "en";

std::string_view valueOfVariable(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::string_view() : std::string_view(value);
}

/// "de_CH.UTF-8@euro" without what follows the dot or the at sign. Empty for what could not be a folder's name.
std::string_view languageAndRegion(std::string_view locale) {
  locale = locale.substr(0, locale.find_first_of(".@"));
  const bool isName = std::all_of(locale.begin(), locale.end(), [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '-';
  });
  return isName ? locale : std::string_view();
}

bool isUntranslated(std::string_view name) { return name.empty() || name == "C" || name == "POSIX"; }

void append(std::vector<std::string>& languages, std::string_view locale) {
  const auto name = languageAndRegion(locale);
  if (isUntranslated(name)) { return; }
  languages.emplace_back(name);
  if (const auto region = name.find_first_of("_-"); region != std::string_view::npos) {
    languages.emplace_back(name.substr(0, region));
  }
}

}  // namespace

std::vector<std::string> preferredLanguages() {
  std::string_view locale;
  for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    locale = valueOfVariable(name);
    if (!locale.empty()) { break; }
  }
  std::vector<std::string> languages;
  std::string_view list = isUntranslated(locale) && !locale.empty() ? std::string_view() : valueOfVariable("LANGUAGE");
  if (list.empty()) { list = locale; }
  // A server's process is started with no language, or with the one of nobody ("C").
  const auto set = isUntranslated(languageAndRegion(list)) ? Settings::ofUser().fileValue(Setting::kLanguage)
                                                           : std::optional<SettingValue>();
  if (set) { list = set->text; }
  for (std::size_t begin = 0; begin <= list.size();) {
    const auto end = std::min(list.find(':', begin), list.size());
    append(languages, list.substr(begin, end - begin));
    begin = end + 1;
  }
  languages.emplace_back(kEnglish);
  return languages;
}

}  // namespace orlocal
