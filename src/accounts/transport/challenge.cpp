#include "accounts/transport/challenge.h"

#include "base/text.h"

namespace orlocal::accounts {
namespace {

/// Splits a list at commas outside of quotes.
std::vector<std::string_view> listed(std::string_view text) {
  std::vector<std::string_view> parts;
  std::size_t begin = 0;
  bool quoted = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (quoted && text[i] == '\\') {
      ++i;
    } else if (text[i] == '"') {
      quoted = !quoted;
    } else if (text[i] == ',' && !quoted) {
      parts.push_back(text.substr(begin, i - begin));
      begin = i + 1;
    }
  }
  parts.push_back(text.substr(begin));
  return parts;
}

}  // namespace

bool offers(const HttpResponse& response, std::string_view scheme) {
  for (const HttpHeader& field : response.headers) {
    if (!equalsNoCase(field.name, "WWW-Authenticate")) { continue; }
    for (const std::string_view part : listed(field.value)) {
      // A parameter has an equals sign where a scheme has a blank or its end.
      const std::string_view words = trimmed(part);
      if (equalsNoCase(words.substr(0, words.find_first_of(" \t=")), scheme) &&
          (words.size() == scheme.size() || words[scheme.size()] != '=')) {
        return true;
      }
    }
  }
  return false;
}

}  // namespace orlocal::accounts
