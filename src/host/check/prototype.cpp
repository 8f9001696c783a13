#include "host/check/prototype.h"

#include "base/text.h"

namespace orlocal::host::check {

Prototype readPrototype(std::string_view text) {
  Prototype read;
  const std::size_t open = text.find('(');
  read.name = trimmed(text.substr(0, open));
  if (open == std::string_view::npos) { return read; }
  const std::size_t close = text.rfind(')');
  if (close == std::string_view::npos || close < open) {
    read.isWellFormed = false;
    return read;
  }
  std::string_view within = text.substr(open + 1, close - open - 1);
  std::string name;
  int braces = 0;
  const auto take = [&] {
    const std::string_view trimmedName = trimmed(name);
    if (trimmedName == "…" || trimmedName == "...") {
      read.endsOpen = true;
    } else if (!trimmedName.empty()) {
      (braces > 0 ? read.optional : read.required).emplace_back(trimmedName);
    }
    name.clear();
  };
  for (const char c : within) {
    if (c == ';') {
      take();
    } else if (c == '{') {
      take();
      ++braces;
    } else if (c == '}') {
      take();
      --braces;
      if (braces < 0) { read.isWellFormed = false; }
    } else {
      name += c;
    }
  }
  take();
  read.isWellFormed = read.isWellFormed && braces == 0;
  return read;
}

}  // namespace orlocal::host::check
