#pragma once

#include <cstdint>
#include <optional>

#include "backend/error_codes.h"
#include "bridge/conversions.h"
#include "platform/host/data.h"

namespace orlocal {

/// What every function does around its own work: clear the error state, read arguments, hand back a number, or
/// "!!ERROR!!" with the reason kept. Make one first thing, read the arguments, then `run` the work.
class CallFrame {
 public:
  CallFrame(const fmx::DataVect* arguments, fmx::Data* result);

  OptionalText text(std::uint32_t position) const { return textArgument(m_arguments, position); }
  /// The text in lower case.
  OptionalText word(std::uint32_t position) const;
  std::int32_t number(std::uint32_t position) const { return numberArgument(m_arguments, position); }
  std::optional<Date> date(std::uint32_t position) const { return dateArgument(m_arguments, position); }

  /// The function's result number, or nothing when it leaves the result as it is.
  using Outcome = std::optional<std::int32_t>;

  /// Does the function's work and writes the result. Whatever the work says, `g_llasterror` decides. Always gives 0:
  /// the host sees no failure but the result.
  template <class Work>
  fmx::ErrorCode run(const Work& work) {
    clearErrors();
    finish(work());
    return 0;
  }

 private:
  /// Forgets what the last call left behind, when it is made.
  struct FreshErrors {
    FreshErrors();
  };

  static void clearErrors();
  void finish(Outcome outcome);

  // In this order: working objects of the call, a clear state, then what the host passed.
  HostNumber m_number;
  HostText m_text;
  [[no_unique_address]] FreshErrors m_freshErrors;
  fmx::Data* m_result;
  HostArguments m_arguments;
};

/// What a function that acts has to say when it worked.
inline constexpr CallFrame::Outcome kDone = 0;
inline constexpr CallFrame::Outcome kNothing = std::nullopt;

}  // namespace orlocal
