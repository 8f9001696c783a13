// Hosts whose own functions fail: each call that the plug-in makes, with each status, one at a time.
#include <exception>

#include <fmt/format.h>

#include "host/check/check.h"
#include "host/check/odd_values.h"
#include "host/check/raw_call.h"
#include "host/check/trial.h"
#include "host/fmwrapper/failing_calls.h"
#include "host/fmwrapper/handles.h"

namespace orlocal::host::check {
namespace {

constexpr std::int32_t kCodes[] = {kOutOfMemory, kOtherFailure};

/// Whether an exception that leaves the plug-in is a failure: a host that is built without them ends by it, others
/// take it for a failed call.
enum class Exceptions { kAllowed, kRefused };

/// Does `work` once for each call that it makes of the host, which fails then; `what` names it.
template <class Work>
void withEachCallFailing(Trial& trial, const std::string& what, Exceptions exceptions, Work work) {
  for (const std::int32_t code : kCodes) {
    for (std::uint64_t nth = 1;; ++nth) {
      trial.step(fmt::format("{}; call {} of the host fails with {}", what, nth, code));
      failHostCall(nth, code);
      bool threw = false;
      try {
        work();
      } catch (const std::exception&) { threw = true; } catch (...) {
        threw = true;
      }
      const std::uint64_t calls = endFailingHostCalls();
      if (threw && exceptions == Exceptions::kRefused) {
        trial.fail(fmt::format("an exception leaves it: {}; call {} of the host fails with {}.", what, nth, code));
      }
      if (calls < nth) { break; }
    }
  }
}

void startWithFailures(Trial& trial, Exceptions exceptions) {
  const auto plugin = trial.opened();
  if (plugin == nullptr) { return; }
  const auto message = [&](std::uint8_t number) {
    fmx::ExternCall record = messageFor(*plugin, number);
    entryOf (*plugin)(&record);
    return static_cast<std::intptr_t>(record.result);
  };
  withEachCallFailing(trial, "start-up and shutdown", exceptions, [&] {
    message(fmx::kCallStartUp);
    message(fmx::kCallShutdown);
  });
  trial.step("start-up on a host that works again");
  message(fmx::kCallShutdown);
  trial.expect(message(fmx::kCallStartUp) > 0, "it does not start any more after the host's functions failed.");
  trial.functions();
}

void callWithFailures(Trial& trial, Exceptions exceptions) {
  const auto plugin = trial.started();
  if (plugin == nullptr) { return; }
  for (const auto& function : trial.functions()) {
    const std::size_t count = mostArguments(*function);
    for (const char16_t* word : {u"event", u"1"}) {
      const std::vector<Value> arguments(count, Value::ofText(word));
      withEachCallFailing(trial, fmt::format("{} with words", nameOf(*function)), exceptions, [&] {
        Value result;
        const Environment environment;
        function->function(function->key.id, handleOf<fmx::ExprEnv>(environment), handleOf<fmx::DataVect>(arguments),
                           handleOf<fmx::Data>(result));
      });
      trial.step(fmt::format("{} on a host that works again", nameOf(*function)));
      trial.call(*function, arguments);
    }
  }
}

void survivesInStartUp(Trial& trial) { startWithFailures(trial, Exceptions::kAllowed); }
void containsInStartUp(Trial& trial) { startWithFailures(trial, Exceptions::kRefused); }
void survivesInCalls(Trial& trial) { callWithFailures(trial, Exceptions::kAllowed); }
void containsInCalls(Trial& trial) { callWithFailures(trial, Exceptions::kRefused); }

void takesFailingCallbacks(Trial& trial) {
  const auto plugin = trial.opened();
  if (plugin == nullptr) { return; }
  for (const std::uint8_t number : {fmx::kCallStartUp, fmx::kCallIdle, fmx::kCallShutdown}) {
    trial.step(fmt::format("message {} of a host whose callbacks fail", number));
    fmx::ExternCall record = messageFor(*plugin, number);
    record.cStartScript = [](const fmx::Text*, const fmx::Text*, std::uint8_t, const fmx::Data*) -> fmx::ErrorCode {
      return 3;
    };
    record.cCurrentEnv = [](fmx::ExprEnv*) -> fmx::ErrorCode { return 3; };
    entryOf (*plugin)(&record);
  }
}

}  // namespace

std::vector<Check> hostFailureChecks() {
  return {
      {"host-fails-start", "Start-up outlives any failure of the host's functions.", Level::kUsual, survivesInStartUp},
      {"host-fails-calls", "Functions outlive any failure of the host's functions.", Level::kUsual, survivesInCalls},
      {"host-fails-callbacks", "Callbacks of the host may fail.", Level::kUsual, takesFailingCallbacks},
      {"host-fails-start-quietly", "No exception leaves start-up when the host's functions fail.", Level::kStrict,
       containsInStartUp},
      {"host-fails-calls-quietly", "No exception leaves a function when the host's functions fail.", Level::kStrict,
       containsInCalls},
  };
}

}  // namespace orlocal::host::check
