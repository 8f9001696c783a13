#include "host/commands/command_line/nearest_word.h"

#include <algorithm>
#include <array>

#include "base/text.h"

namespace orlocal::host {

namespace {

/// A slip in every third letter is still a slip; more is another word, and so is any in two letters.
std::size_t mostSlips(std::string_view word) { return word.size() < 3 ? 0 : (word.size() + 1) / 3; }

/// Longer ones are no mistyped words, and comparing them would take their square.
constexpr std::size_t kLongest = 64;

}  // namespace

std::size_t editDistance(std::string_view a, std::string_view b) {
  // Rows of the table of distances between beginnings: two before, one before, this one.
  std::array<std::vector<std::size_t>, 3> rows;
  for (auto& row : rows) { row.resize(b.size() + 1); }
  auto& [before, last, current] = rows;
  const auto same = [&](std::size_t i, std::size_t j) { return asciiLower(a[i - 1]) == asciiLower(b[j - 1]); };
  for (std::size_t j = 0; j <= b.size(); ++j) { last[j] = j; }
  for (std::size_t i = 1; i <= a.size(); ++i) {
    current[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t exchanged = last[j - 1] + (same(i, j) ? 0 : 1);
      current[j] = std::min({last[j] + 1, current[j - 1] + 1, exchanged});
      if (i > 1 && j > 1 && same(i, j - 1) && same(i - 1, j)) { current[j] = std::min(current[j], before[j - 2] + 1); }
    }
    std::swap(before, last);
    std::swap(last, current);
  }
  return last[b.size()];
}

std::optional<std::string> nearestWord(std::string_view word, const std::vector<std::string>& known) {
  if (word.empty() || word.size() > kLongest) { return std::nullopt; }
  const std::string* nearest = nullptr;
  std::size_t distance = mostSlips(word) + 1;
  for (const std::string& candidate : known) {
    if (candidate.size() > kLongest) { continue; }
    const std::size_t slips = editDistance(word, candidate);
    if (slips < distance) {
      nearest = &candidate;
      distance = slips;
    }
  }
  if (nearest != nullptr) { return *nearest; }
  // What was left unfinished.
  const auto begun = std::find_if(known.begin(), known.end(), [&](const std::string& candidate) {
    return word.size() > 1 && equalsNoCase(std::string_view(candidate).substr(0, word.size()), word);
  });
  return begun == known.end() ? std::nullopt : std::optional(*begun);
}

}  // namespace orlocal::host
