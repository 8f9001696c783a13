#include "host/language/message_catalogue.h"

#include <clocale>
#include <cstdlib>
#include <string>
#include <string_view>

#include <libintl.h>

#include "base/languages.h"
#include "base/translation.h"

namespace orlocal::host {
namespace {

constexpr const char* kDomain = "orlocal";
/// From the program's folder: as it is built, and as it is installed.
constexpr const char* kFolders[] = {"locale", ORLOCAL_LOCALE_FOLDER};

class Gettext final : public Catalogue {
 public:
  const char* message(const char* english) const override { return ::dgettext(kDomain, english); }
  const char* message(const char* one, const char* many, std::size_t count) const override {
    return ::dngettext(kDomain, one, many, count);
  }
};

bool isEnglish(std::string_view language) { return language.substr(0, language.find_first_of("_-")) == "en"; }

/// Those that come before English, with colons between, as LANGUAGE has them.
std::string languagesBeforeEnglish() {
  std::string list;
  for (const std::string& language : preferredLanguages()) {
    if (isEnglish(language)) { break; }
    list += (list.empty() ? "" : ":") + language;
  }
  return list;
}

}  // namespace

void speakLanguageOfUser(const std::filesystem::path& programFile) {
  const std::string languages = languagesBeforeEnglish();
  if (languages.empty()) { return; }
  // Nothing is translated in the locale "C", and a user's own need not have been generated on this machine. This one is
  // part of the C library; LANGUAGE then says which language it is.
  if (std::setlocale(LC_MESSAGES, "C.UTF-8") == nullptr) { return; }
  ::setenv("LANGUAGE", languages.c_str(), 1);
  for (const char* folder : kFolders) {
    const std::filesystem::path place = (programFile.parent_path() / folder).lexically_normal();
    std::error_code error;
    if (!std::filesystem::is_directory(place, error)) { continue; }
    ::bindtextdomain(kDomain, place.c_str());
    break;
  }
  // What the system says of failures, where it has that language, is told in the same letters.
  for (const char* domain : {kDomain, "libc"}) { ::bind_textdomain_codeset(domain, "UTF-8"); }
  static const Gettext kCatalogue;
  useCatalogue(&kCatalogue);
}

}  // namespace orlocal::host
