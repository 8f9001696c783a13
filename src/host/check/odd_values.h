#pragma once

#include <string>
#include <vector>

#include "host/check/trial.h"
#include "host/fmwrapper/value.h"

namespace orlocal::host::check {

/// A value that a solution may pass, and what it is in words.
struct OddValue {
  std::string words;
  Value value;
};

/// Empty, short and strange texts; lone surrogates; a NUL; separators of lists.
std::vector<OddValue> oddTexts();
/// The ends of whole numbers, fractions, 400 digits, "not a number".
std::vector<OddValue> oddNumbers();
/// First and last dates, times beyond a day, timestamps, empty ones of each.
std::vector<OddValue> oddDates();
/// Empty, invalid, and of every native type.
std::vector<OddValue> oddKinds();
/// All of these.
std::vector<OddValue> oddValues();

}  // namespace orlocal::host::check
