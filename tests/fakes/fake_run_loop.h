#pragma once

#include <algorithm>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>

#include "platform/exception.h"
#include "platform/run_loop.h"

namespace orlocal::fakes {

/// A loop by a clock of its own, so that running takes no time: it turns every ten milliseconds of that clock. Each
/// turn serves what waits when it begins.
class FakeRunLoop : public RunLoop {
 public:
  /// Has `work` done in the next turn. Any thread.
  void perform(std::function<void()> work) {
    const std::lock_guard lock(m_guard);
    m_waiting.push_back(std::move(work));
  }

  void runFor(std::chrono::microseconds time) override {
    m_lastTime = time;
    ++m_runs;
    m_passed += time;
    constexpr std::chrono::microseconds kTurn{10000};
    for (auto turns = std::max<std::int64_t>(1, time / kTurn); turns > 0; --turns) { turn(); }
  }

  void turn() override {
    std::deque<std::function<void()>> now;
    {
      const std::lock_guard lock(m_guard);
      now.swap(m_waiting);
    }
    for (const auto& work : now) { work(); }
  }

  std::unique_ptr<RunLoopPort> addPort(std::function<void()> handler) override {
    if (!m_takesPorts) { throw Exception("NSPortException", "no room for a port"); }
    return std::make_unique<Port>(*this, std::make_shared<std::function<void()>>(std::move(handler)));
  }

  int m_runs = 0;                           ///< calls of `runFor`
  std::chrono::microseconds m_lastTime{0};  ///< of the last one
  std::chrono::microseconds m_passed{0};    ///< on its clock
  bool m_takesPorts = true;                 ///< whether there is a way left to wake it

 private:
  class Port : public RunLoopPort {
   public:
    Port(FakeRunLoop& loop, std::shared_ptr<std::function<void()>> handler)
        : m_loop(loop), m_handler(std::move(handler)) {}

    void send() override {
      m_loop.perform([weak = std::weak_ptr(m_handler)] {
        if (const auto handler = weak.lock()) { (*handler)(); }
      });
    }

   private:
    FakeRunLoop& m_loop;
    std::shared_ptr<std::function<void()>> m_handler;
  };

  std::mutex m_guard;
  std::deque<std::function<void()>> m_waiting;
};

}  // namespace orlocal::fakes
