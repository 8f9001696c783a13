#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/result.h"
#include "host/calc/function_library.h"
#include "host/fmwrapper/value.h"

namespace orlocal::host::calc {

/// What bounds a calculation. What runs into a bound is `?`, with the reason among the failures.
struct Limits {
  std::size_t iterations = 50'000;            ///< of one While, as in the host
  int depth = 1'000;                          ///< of calls within calls, through Evaluate too
  std::size_t textLength = 64 * 1024 * 1024;  ///< UTF-16 units of one text
};

/// What a calculation came to.
struct Outcome {
  Value value;
  std::vector<std::string> failures;  ///< why calls failed, in order; empty for most calculations
};

/// Evaluates calculations one after the other and keeps their `$` and `$$` variables: a session is to its calculations
/// what a script is to its steps. One thread, except for `interrupt`.
class Session {
 public:
  explicit Session(FunctionLibrary& library, Limits limits = {});
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  /// The source is UTF-8. A failure means that the calculation could not be read and that nothing of it was done.
  Result<Outcome> evaluate(std::string_view source);

  /// Fails when the calculation cannot be read; nothing of it is done.
  Status check(std::string_view source) const;

  /// Ends the running calculation early with `?`. May be called from a signal handler and from any thread; without a
  /// running calculation it does nothing.
  void interrupt() noexcept;

  /// `$name` and `$$name` of all variables that hold something, in lower case, in order.
  std::vector<std::string> variableNames() const;

 private:
  class Evaluator;
  std::unique_ptr<Evaluator> m_evaluator;
};

}  // namespace orlocal::host::calc
