#pragma once

#include <string>
#include <vector>

#include "base/translation.h"

namespace orlocal::host {

/// "a", "a and b", "a, b and c"; empty for none.
inline std::string listed(const std::vector<std::string>& words) {
  std::string text;
  for (std::size_t i = 0; i < words.size(); ++i) {
    text = i == 0 ? words[i] : i + 1 == words.size() ? tr("{} and {}", text, words[i]) : text + ", " + words[i];
  }
  return text;
}

}  // namespace orlocal::host
