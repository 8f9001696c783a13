// Start-up and shutdown, for hosts of all versions.
#include <cstring>

#include <fmt/format.h>

#include "host/check/check.h"
#include "host/check/raw_call.h"
#include "host/check/trial.h"

namespace orlocal::host::check {
namespace {

constexpr std::int16_t kFirstWithDescriptions = 56;
constexpr std::int16_t kFirstWithSteps = 57;
constexpr std::intptr_t kNotForThisHost = -1;

/// Start-up for a host of that version; what it answered.
std::intptr_t startFor(const Plugin& plugin, std::int16_t version) {
  fmx::ExternCall record = messageFor(plugin, fmx::kCallStartUp, version);
  const std::u16string text = u"Host";
  record.parm2 = reinterpret_cast<std::uintptr_t>(text.c_str());
  entryOf(plugin)(&record);
  return static_cast<std::intptr_t>(record.result);
}

void shutDown(const Plugin& plugin, std::int16_t version = 62) {
  fmx::ExternCall record = messageFor(plugin, fmx::kCallShutdown, version);
  entryOf(plugin)(&record);
}

void answersAVersion(Trial& trial) {
  const auto plugin = trial.opened();
  if (plugin == nullptr) { return; }
  const std::intptr_t version = startFor(*plugin, 62);
  trial.expect(version >= 4 && version <= 255,
               fmt::format("start-up answers {}, which is no interface version.", version));
}

/// Starts for each version; `look` is told the version and the answer while it is started.
template <class Look>
void forEveryVersion(Trial& trial, Look look) {
  const auto plugin = trial.opened();
  if (plugin == nullptr) { return; }
  for (std::int16_t version = 0; version <= 300; ++version) {
    trial.step(fmt::format("starting for a host of version {}", version));
    const std::intptr_t answer = startFor(*plugin, version);
    look(version, answer);
    shutDown(*plugin, version);
  }
}

void survivesEveryVersion(Trial& trial) {
  forEveryVersion(trial, [&](std::int16_t version, std::intptr_t answer) {
    trial.expect(answer == kNotForThisHost || (answer >= 0 && answer <= 300),
                 fmt::format("a host of version {} is answered {}.", version, answer));
  });
}

void registersOnlyWhereItRuns(Trial& trial) {
  forEveryVersion(trial, [&](std::int16_t version, std::intptr_t answer) {
    const std::size_t registered = Registry::instance().functions().size();
    trial.expect(
        answer != kNotForThisHost || registered == 0,
        fmt::format("it is not for hosts of version {}, and registers {} functions there.", version, registered));
  });
}

void describesOnlyWhereHostsCan(Trial& trial) {
  forEveryVersion(trial, [&](std::int16_t version, std::intptr_t) {
    if (version >= kFirstWithDescriptions) { return; }
    for (const auto& function : Registry::instance().functions()) {
      trial.expect(function->description.empty(),
                   fmt::format("{} is registered with a description on a host of version {}, which has no such call.",
                               nameOf(*function), version));
    }
  });
}

void registersStepsOnlyWhereHostsCan(Trial& trial) {
  forEveryVersion(trial, [&](std::int16_t version, std::intptr_t) {
    trial.expect(version >= kFirstWithSteps || Registry::instance().steps().empty(),
                 fmt::format("it registers script steps on a host of version {}, which has no such call.", version));
  });
}

void startsAgain(Trial& trial) {
  const auto plugin = trial.opened();
  if (plugin == nullptr) { return; }
  startFor(*plugin, 62);
  const std::size_t functions = Registry::instance().functions().size(), steps = Registry::instance().steps().size();
  for (int i = 2; i <= 20; ++i) {
    trial.step(fmt::format("start-up number {}", i));
    // Now and then without the shutdown between.
    if (i % 3 != 0) { shutDown(*plugin); }
    startFor(*plugin, 62);
    trial.expect(
        Registry::instance().functions().size() == functions && Registry::instance().steps().size() == steps,
        fmt::format("start-up {} leaves {} functions and {} steps registered, the first one left {} and {}.", i,
                    Registry::instance().functions().size(), Registry::instance().steps().size(), functions, steps));
  }
}

void takesAllBack(Trial& trial) {
  const auto plugin = trial.opened();
  if (plugin == nullptr) { return; }
  startFor(*plugin, 62);
  shutDown(*plugin);
  trial.expect(Registry::instance().functions().empty(),
               fmt::format("{} functions stay registered after shutdown.", Registry::instance().functions().size()));
  trial.expect(Registry::instance().steps().empty(),
               fmt::format("{} script steps stay registered after shutdown.", Registry::instance().steps().size()));
}

void shutsDownAnyTime(Trial& trial) {
  const auto plugin = trial.opened();
  if (plugin == nullptr) { return; }
  trial.step("shutting down before start-up");
  shutDown(*plugin);
  trial.step("starting after that");
  trial.expect(startFor(*plugin, 62) > 0, "it does not start after a shutdown that came first.");
  trial.step("shutting down twice");
  shutDown(*plugin);
  shutDown(*plugin);
  trial.step("starting after that");
  trial.expect(startFor(*plugin, 62) > 0, "it does not start after two shutdowns.");
}

void startsForEveryKindOfHost(Trial& trial) {
  const auto plugin = trial.opened();
  if (plugin == nullptr) { return; }
  for (int kind = 0; kind <= 255; ++kind) {
    trial.step(fmt::format("starting for an application of kind {}", kind));
    fmx::ExternCall record = messageFor(*plugin, fmx::kCallStartUp);
    record.parm1 = static_cast<std::uint8_t>(kind);
    entryOf (*plugin)(&record);
    shutDown(*plugin);
  }
}

void startsWithoutAVersionText(Trial& trial) {
  const auto plugin = trial.opened();
  if (plugin == nullptr) { return; }
  fmx::ExternCall record = messageFor(*plugin, fmx::kCallStartUp);
  entryOf (*plugin)(&record);
  trial.expect(static_cast<std::intptr_t>(record.result) > 0, "it does not start without the host's version text.");
}

/// A record at an odd address, as packed records are.
void takesRecordsAnywhere(Trial& trial) {
  const auto plugin = trial.opened();
  if (plugin == nullptr) { return; }
  alignas(16) unsigned char room[sizeof(fmx::ExternCall) + 16] = {};
  for (std::size_t shift = 0; shift < 16; ++shift) {
    trial.step(fmt::format("a record {} bytes behind a multiple of 16", shift));
    const fmx::ExternCall sent = messageFor(*plugin, fmx::kCallStartUp);
    std::memcpy(room + shift, &sent, sizeof sent);
    entryOf (*plugin)(reinterpret_cast<fmx::ExternCall*>(room + shift));
    fmx::ExternCall answered{};
    std::memcpy(&answered, room + shift, sizeof answered);
    trial.expect(static_cast<std::intptr_t>(answered.result) > 0, "it does not start from such a record.");
    shutDown(*plugin);
  }
}

void leavesTheRecordAsItIs(Trial& trial) {
  const auto plugin = trial.opened();
  if (plugin == nullptr) { return; }
  for (const std::uint8_t message : {fmx::kCallStartUp, fmx::kCallIdle, fmx::kCallShutdown}) {
    trial.step(fmt::format("message {}", message));
    const fmx::ExternCall sent = messageFor(*plugin, message);
    fmx::ExternCall record = sent;
    entryOf (*plugin)(&record);
    // The answer is the plug-in's; all else is the host's.
    record.result = sent.result;
    record.unused = sent.unused;
    trial.expect(std::memcmp(&record, &sent, sizeof sent) == 0,
                 fmt::format("message {} changes what the host wrote into its record.", message));
  }
}

}  // namespace

std::vector<Check> startChecks() {
  return {
      {"start-answer", "Start-up answers the interface version that the plug-in speaks.", Level::kBasic,
       answersAVersion},
      {"start-every-version", "Hosts of all versions from 0 to 300 get an answer.", Level::kBasic,
       survivesEveryVersion},
      {"start-refused-registers-nothing", "Nothing is registered with a host that it is not for.", Level::kUsual,
       registersOnlyWhereItRuns},
      {"start-descriptions", "Descriptions are given only to hosts that take them.", Level::kBasic,
       describesOnlyWhereHostsCan},
      {"start-steps", "Script steps are registered only with hosts that know them.", Level::kBasic,
       registersStepsOnlyWhereHostsCan},
      {"start-again", "Start-up may come again and again.", Level::kUsual, startsAgain},
      {"start-kinds", "It starts for every kind of application.", Level::kUsual, startsForEveryKindOfHost},
      {"start-no-text", "It starts without the host's version text.", Level::kUsual, startsWithoutAVersionText},
      {"shutdown-takes-back", "Shutdown takes back all that was registered.", Level::kUsual, takesAllBack},
      {"shutdown-any-time", "Shutdown may come first, and twice.", Level::kUsual, shutsDownAnyTime},
      {"record-anywhere", "The host's record may lie at any address.", Level::kUsual, takesRecordsAnywhere},
      {"record-untouched", "Nothing but the answer is written into the host's record.", Level::kStrict,
       leavesTheRecordAsItIs},
  };
}

}  // namespace orlocal::host::check
