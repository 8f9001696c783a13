#include "base/translation.h"

namespace orlocal {
namespace {

const Catalogue* g_catalogue = nullptr;

std::string formatted(const char* translation, const char* english, fmt::format_args args) {
  if (translation != english) {
    try {
      return fmt::vformat(translation, args);
    } catch (const fmt::format_error&) {
      // A message that cannot be put together is better read in English than not at all.
    }
  }
  return fmt::vformat(english, args);
}

}  // namespace

void useCatalogue(const Catalogue* catalogue) { g_catalogue = catalogue; }

std::string translated(const char* english) {
  // Catalogues keep a description of themselves under the empty text.
  return g_catalogue == nullptr || *english == '\0' ? english : g_catalogue->message(english);
}

namespace translation {

std::string put(const char* english, fmt::format_args args) {
  return formatted(g_catalogue == nullptr ? english : g_catalogue->message(english), english, args);
}

std::string put(const char* one, const char* many, std::size_t count, fmt::format_args args) {
  const char* english = count == 1 ? one : many;
  return formatted(g_catalogue == nullptr ? english : g_catalogue->message(one, many, count), english, args);
}

}  // namespace translation
}  // namespace orlocal
