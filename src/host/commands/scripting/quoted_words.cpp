#include "host/commands/scripting/quoted_words.h"

#include "base/translation.h"

namespace orlocal::host {

Result<std::vector<std::string>> quotedWords(std::string_view text) {
  std::vector<std::string> words;
  bool inside = false;
  char quote = '\0';
  const auto begin = [&] {
    if (!inside) { words.emplace_back(); }
    inside = true;
  };
  for (const char c : text) {
    if (quote == '\0' && (c == '"' || (c == '\'' && !inside))) {
      begin();
      quote = c;
    } else if (c == quote) {
      quote = '\0';
    } else if (quote == '\0' && (c == ' ' || c == '\t')) {
      inside = false;
    } else {
      begin();
      words.back() += c;
    }
  }
  if (quote != '\0') { return failure(ErrorCode::kInvalid, tr("a quote is not closed")); }
  return words;
}

}  // namespace orlocal::host
