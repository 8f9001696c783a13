// A host in which nothing happens but ten idle messages a second.
#include <chrono>
#include <stdexcept>
#include <thread>

#include "files.h"
#include "host/plugin/update_script.h"
#include "parts.h"
#include "processes.h"
#include "questions.h"
#include "solution.h"

namespace orlocal::bench {
namespace {

constexpr int kTurns = 20;  ///< two seconds
constexpr auto kBetween = std::chrono::milliseconds(100);

/// Processor time of a second.
template <class Turn>
Outcome idleFor(int turns, const Turn& turn) {
  const double before = processorSeconds();
  for (int i = 0; i < turns; ++i) {
    turn();
    std::this_thread::sleep_for(kBetween);
  }
  const double seconds = turns * std::chrono::duration<double>(kBetween).count();
  return {(processorSeconds() - before) / seconds, 1};
}

void orThrow(const Status& status) {
  if (!status) { throw std::runtime_error(status.error().message); }
}

}  // namespace

void measureIdling(Report& report, const Setting& setting) {
  const std::size_t events = setting.sizes.front();
  const int turns = setting.smoke ? 2 : kTurns;
  useStore(storeFile(setting, events));
  const auto host = [&] {
    return inChild([&] {
      const auto plugin = startPlugin(setting.plugin);
      orThrow(host::registerUpdateScript(*plugin, "Solution", "Calendar changed"));
      askPlugin()(monthOf2026(11));
      orThrow(plugin->idle());
      return idleFor(turns, [&] { orThrow(plugin->idle()); });
    });
  };
  const auto nothing = [&] { return inChild([&] { return idleFor(turns, [] {}); }); };
  Row row = compare(setting.smoke ? 1 : 5, {"", host}, {{"the same waiting without a plug-in", nothing}});
  row.name = "processor time of a second, idle host";
  row.events = events;
  report.add(std::move(row));

  const auto difference = [&] { return Outcome{host().amount - nothing().amount, 1}; };
  Row above = compare(setting.smoke ? 1 : 5, {"", difference}, {});
  above.name = "the same above the waiting";
  above.events = events;
  above.aim = 0.3e-3;
  report.add(std::move(above));
}

}  // namespace orlocal::bench
