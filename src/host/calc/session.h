#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/result.h"
#include "host/calc/function_library.h"
#include "host/calc/outcome.h"

namespace orlocal::host::calc {

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
  class Context;
  std::unique_ptr<Context> m_context;
};

}  // namespace orlocal::host::calc
