#pragma once

#include <deque>
#include <functional>
#include <memory>

#include "platform/run_loop.h"

namespace orlocal::fakes {

/// A loop without a clock: each run serves what waits when it begins, and takes no time.
class FakeRunLoop : public RunLoop {
 public:
  /// Has `work` done in the next run.
  void perform(std::function<void()> work) { m_waiting.push_back(std::move(work)); }

  void runFor(std::chrono::microseconds time) override {
    m_lastTime = time;
    ++m_runs;
    turn();
  }

  void turn() override {
    std::deque<std::function<void()>> now;
    now.swap(m_waiting);
    for (const auto& work : now) work();
  }

  std::unique_ptr<RunLoopPort> addPort(std::function<void()> handler) override {
    return std::make_unique<Port>(*this, std::make_shared<std::function<void()>>(std::move(handler)));
  }

  int m_runs = 0;                           ///< calls of `runFor`
  std::chrono::microseconds m_lastTime{0};  ///< of the last one

 private:
  class Port : public RunLoopPort {
   public:
    Port(FakeRunLoop& loop, std::shared_ptr<std::function<void()>> handler)
        : m_loop(loop), m_handler(std::move(handler)) {}

    void send() override {
      m_loop.perform([weak = std::weak_ptr(m_handler)] {
        if (const auto handler = weak.lock()) (*handler)();
      });
    }

   private:
    FakeRunLoop& m_loop;
    std::shared_ptr<std::function<void()>> m_handler;
  };

  std::deque<std::function<void()>> m_waiting;
};

}  // namespace orlocal::fakes
