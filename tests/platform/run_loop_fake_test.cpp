#include "fakes/fake_run_loop.h"
#include "platform/run_loop_contract.h"

namespace orlocal::contract {
namespace {

class FakeRunLoopSubject final : public RunLoopSubject {
 public:
  RunLoop& loop() override { return m_loop; }
  std::chrono::microseconds time() override { return m_loop.m_passed; }
  bool withoutWaysToWake(const std::function<void(RunLoop&)>& work,
                         const std::function<void(RunLoop&)>& afterwards) override {
    fakes::FakeRunLoop other;
    other.m_takesPorts = false;
    work(other);
    other.m_takesPorts = true;
    afterwards(other);
    return true;
  }

 private:
  fakes::FakeRunLoop m_loop;
};

INSTANTIATE_TEST_SUITE_P(Fake, RunLoopContract, testing::Values([]() -> std::unique_ptr<RunLoopSubject> {
                           return std::make_unique<FakeRunLoopSubject>();
                         }));

}  // namespace
}  // namespace orlocal::contract
