#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/result.h"

namespace orlocal::host {

/// Words apart by blanks; quotes, double ones anywhere and single ones around a word, keep blanks in it.
Result<std::vector<std::string>> quotedWords(std::string_view text);

}  // namespace orlocal::host
