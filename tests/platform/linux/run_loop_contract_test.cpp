#include "platform/run_loop_contract.h"

#include "fakes/no_descriptor_left.h"
#include "platform/linux/run_loop.h"

namespace orlocal::contract {
namespace {

class LinuxRunLoopSubject final : public RunLoopSubject {
 public:
  RunLoop& loop() override { return currentThreadRunLoop(); }
  std::chrono::microseconds time() override {
    return std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now().time_since_epoch());
  }
  bool withoutWaysToWake(const std::function<void(RunLoop&)>& work,
                         const std::function<void(RunLoop&)>& afterwards) override {
    if (fakes::kSanitizersNeedDescriptors) { return false; }
    // The loop of a new thread has not got its way to be woken yet.
    std::thread([&] {
      {
        const fakes::NoDescriptorLeft none;
        work(currentThreadRunLoop());
      }
      afterwards(currentThreadRunLoop());
    }).join();
    return true;
  }
};

INSTANTIATE_TEST_SUITE_P(Linux, RunLoopContract, testing::Values([]() -> std::unique_ptr<RunLoopSubject> {
                           return std::make_unique<LinuxRunLoopSubject>();
                         }));

}  // namespace
}  // namespace orlocal::contract
