#pragma once

#include <cstddef>
#include <functional>
#include <type_traits>
#include <vector>

namespace orlocal::bench {

/// Runs `work` in a forked child, so that it starts with nothing warmed up in the process; it leaves its answer, of
/// `size` bytes, at `answer`. Throws when the child fails. The parent must not have started the plug-in.
void inChild(const std::function<void(void*)>& work, void* answer, std::size_t size);

template <class Work>
auto inChild(const Work& work) {
  using Answer = std::invoke_result_t<Work>;
  static_assert(std::is_trivially_copyable_v<Answer>);
  Answer answer{};
  inChild([&](void* place) { *static_cast<Answer*>(place) = work(); }, &answer, sizeof answer);
  return answer;
}

/// What one of several processes got done beside the others.
struct Tally {
  std::size_t steps = 0;
  double perSecond = 0;
  double median = 0;     ///< seconds of a step
  double processor = 0;  ///< processor time of a step in seconds, on average
};

/// What a process repeats; it is made in that process.
using Step = std::function<void()>;
using Worker = std::function<Step()>;

/// Runs each worker in a process of its own: all make ready, begin at the same moment, and repeat their step as long.
std::vector<Tally> runTogether(const std::vector<Worker>& workers, double seconds);

/// Processor time that this process has used so far, in seconds.
double processorSeconds();

/// The process's peak of resident memory in KiB (VmHWM of /proc/self/status).
double peakResidentKiB();

}  // namespace orlocal::bench
