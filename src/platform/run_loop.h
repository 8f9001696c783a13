#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace orlocal {

/// A way to wake a run loop. Destroying it takes it out of its loop.
class RunLoopPort {
 public:
  virtual ~RunLoopPort() = default;

  /// Makes the loop call the port's handler soon. Never waits; several calls may lead to one handling.
  /// The one call of this seam that any thread may make.
  virtual void send() = 0;
};

/// The loop of the thread that calls it. Handlers run inside `runFor` and `turn`, on that thread.
class RunLoop {
 public:
  virtual ~RunLoop() = default;

  /// Serves whatever comes until `time` has passed; sleeps in between.
  virtual void runFor(std::chrono::microseconds time) = 0;

  /// Serves what is ready now and returns at once.
  virtual void turn() = 0;

  /// Adds a source whose `handler` runs on this loop after each `send`, in every mode. Throws `Exception` when the
  /// system has no way left to wake the loop; the loop stays as it was.
  virtual std::unique_ptr<RunLoopPort> addPort(std::function<void()> handler) = 0;
};

}  // namespace orlocal
