#include "host/fmwrapper/failing_calls.h"

namespace orlocal::host {
namespace {

struct Plan {
  std::uint64_t nth = 0, counted = 0;
  std::int32_t code = 0;
};
Plan plan;

}  // namespace

std::atomic<bool> hostCallsAreCounted = false;

void failHostCall(std::uint64_t nth, std::int32_t code) {
  plan = {nth, 0, code};
  hostCallsAreCounted = true;
}

std::uint64_t endFailingHostCalls() {
  hostCallsAreCounted = false;
  return plan.counted;
}

std::int32_t failureOfThisCall() { return ++plan.counted == plan.nth ? plan.code : 0; }

}  // namespace orlocal::host
