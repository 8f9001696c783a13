#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "measure.h"
#include "setting.h"
#include "store/time/time.h"

// The same question, which occurrences overlap a range, put to the plug-in and to its floors.
namespace orlocal::bench {

struct Range {
  store::LocalTime from, to;
};

Range monthOf2026(int month);
inline const Range kYear2026{store::LocalTime(2026, 1, 1), store::LocalTime(2027, 1, 1)};

std::int64_t utcSeconds(store::LocalTime local);
/// As a solution writes it.
std::u16string timestamp(store::LocalTime local);

/// Returns how many occurrences there were.
using Ask = std::function<std::size_t(const Range&)>;

/// Asks the plug-in that this process has started.
Ask askPlugin();

/// Measures in a process that has just begun. `ask` has not opened its file yet, and does with the first question.
using Asking = std::function<Outcome(const Ask& ask)>;

/// Has the plug-in, plain rows and a covering index answer in turn, over the store with so many events.
Row compareAnswers(const Setting& setting, std::size_t events, const Asking& asking);

}  // namespace orlocal::bench
