#include "host/check/check.h"

namespace orlocal::host::check {

std::vector<Check> allChecks() {
  std::vector<Check> all;
  for (auto some : {fileChecks, loadingChecks, stringChecks, startChecks, messageChecks, registrationChecks, stepChecks,
                    callChecks, keepingChecks, hostFailureChecks, surroundingsChecks}) {
    const auto checks = some();
    all.insert(all.end(), checks.begin(), checks.end());
  }
  return all;
}

}  // namespace orlocal::host::check
