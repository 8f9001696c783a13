// Messages between start-up and shutdown, in any order.
#include <algorithm>
#include <array>

#include <fmt/format.h>

#include "host/check/check.h"
#include "host/check/raw_call.h"
#include "host/check/trial.h"

namespace orlocal::host::check {
namespace {

constexpr std::array<std::uint8_t, 8> kMessages = {fmx::kCallStartUp,      fmx::kCallIdle,
                                                   fmx::kCallShutdown,     fmx::kCallPreferences,
                                                   fmx::kCallGetString,    fmx::kCallSessionShutdown,
                                                   fmx::kCallFileShutdown, fmx::kCallSchemaChange};

void send(const Plugin& plugin, std::uint8_t message) {
  // A string needs room to go to.
  if (message == fmx::kCallGetString) {
    askString(plugin, Plugin::kNameString, 256);
    return;
  }
  fmx::ExternCall record = messageFor(plugin, message);
  entryOf(plugin)(&record);
}

void takesIdleTime(Trial& trial) {
  const auto plugin = trial.started();
  if (plugin == nullptr) { return; }
  for (int i = 0; i < 1'000; ++i) {
    trial.step(fmt::format("idle message {}", i + 1));
    send(*plugin, fmx::kCallIdle);
  }
}

void takesEveryIdleLevel(Trial& trial) {
  const auto plugin = trial.started();
  if (plugin == nullptr) { return; }
  for (int level = 0; level <= 255; ++level) {
    trial.step(fmt::format("idle level {}", level));
    fmx::ExternCall record = messageFor(*plugin, fmx::kCallIdle);
    record.parm1 = static_cast<std::uint8_t>(level);
    entryOf (*plugin)(&record);
  }
}

void takesUnsafeIdleTime(Trial& trial) {
  const auto plugin = trial.started();
  if (plugin == nullptr) { return; }
  trial.step("an idle message that forbids calls");
  fmx::ExternCall record = messageFor(*plugin, fmx::kCallIdle);
  record.unsafeCalls = 1;
  entryOf (*plugin)(&record);
}

/// Messages that belong between start-up and shutdown, outside of them.
void takesMessagesTooEarly(Trial& trial) {
  const auto plugin = trial.opened();
  if (plugin == nullptr) { return; }
  for (const std::uint8_t message : kMessages) {
    if (message == fmx::kCallStartUp) { continue; }
    trial.step(fmt::format("message {} before start-up", message));
    send(*plugin, message);
  }
}

void takesMessagesTooLate(Trial& trial) {
  const auto plugin = trial.started();
  if (plugin == nullptr) { return; }
  send(*plugin, fmx::kCallShutdown);
  for (const std::uint8_t message : kMessages) {
    if (message == fmx::kCallStartUp) { continue; }
    trial.step(fmt::format("message {} after shutdown", message));
    send(*plugin, message);
  }
}

void takesSessionsEnd(Trial& trial) {
  const auto plugin = trial.started();
  if (plugin == nullptr) { return; }
  for (const std::uintptr_t session : {std::uintptr_t{0}, std::uintptr_t{1}, ~std::uintptr_t{0}}) {
    for (const std::uint8_t message : {fmx::kCallSessionShutdown, fmx::kCallFileShutdown, fmx::kCallSchemaChange}) {
      trial.step(fmt::format("message {} of session {}", message, session));
      fmx::ExternCall record = messageFor(*plugin, message);
      record.parm2 = session;
      record.parm3 = session;
      entryOf (*plugin)(&record);
    }
  }
  trial.functions();
}

void takesUnknownMessages(Trial& trial) {
  const auto plugin = trial.started();
  if (plugin == nullptr) { return; }
  for (int message = 0; message <= 255; ++message) {
    if (std::find(kMessages.begin(), kMessages.end(), message) != kMessages.end()) { continue; }
    trial.step(fmt::format("message {}, which no host sends", message));
    send(*plugin, static_cast<std::uint8_t>(message));
  }
  trial.functions();
}

void takesPairsOfMessages(Trial& trial) {
  const auto plugin = trial.opened();
  if (plugin == nullptr) { return; }
  for (const std::uint8_t first : kMessages) {
    for (const std::uint8_t second : kMessages) {
      trial.step(fmt::format("message {}, then {}", first, second));
      send(*plugin, first);
      send(*plugin, second);
    }
  }
}

void takesAnyOrder(Trial& trial) {
  const auto plugin = trial.opened();
  if (plugin == nullptr) { return; }
  std::string last;
  for (int i = 0; i < 500; ++i) {
    const std::uint8_t message = kMessages[trial.below(kMessages.size())];
    trial.step(fmt::format("message {} of a random order: {}, after{}", i + 1, message, last));
    last = fmt::format("{} {}", last.size() > 24 ? last.substr(last.find(' ', 1)) : last, message);
    send(*plugin, message);
  }
}

void doesWithoutCallbacks(Trial& trial) {
  const auto plugin = trial.opened();
  if (plugin == nullptr) { return; }
  for (const std::uint8_t message : {fmx::kCallStartUp, fmx::kCallIdle, fmx::kCallShutdown}) {
    trial.step(fmt::format("message {} of a host without callbacks", message));
    fmx::ExternCall record = messageFor(*plugin, message);
    record.cStartScript = nullptr;
    record.cCurrentEnv = nullptr;
    entryOf (*plugin)(&record);
  }
}

void stillWorksAfterwards(Trial& trial) {
  const auto plugin = trial.started();
  if (plugin == nullptr) { return; }
  for (const std::uint8_t message : kMessages) {
    if (message != fmx::kCallStartUp && message != fmx::kCallShutdown) { send(*plugin, message); }
  }
  for (const auto& function : trial.functions()) {
    trial.step(fmt::format("calling {}", nameOf(*function)));
    trial.call(*function, std::vector<Value>(fewestArguments(*function)));
  }
}

}  // namespace

std::vector<Check> messageChecks() {
  return {
      {"message-idle", "A thousand idle messages do no harm.", Level::kBasic, takesIdleTime},
      {"message-idle-levels", "Idle messages may have any level.", Level::kUsual, takesEveryIdleLevel},
      {"message-idle-unsafe", "Idle messages may forbid calls.", Level::kUsual, takesUnsafeIdleTime},
      {"message-too-early", "Messages may come before start-up.", Level::kUsual, takesMessagesTooEarly},
      {"message-too-late", "Messages may come after shutdown.", Level::kUsual, takesMessagesTooLate},
      {"message-sessions", "Sessions and files may end, and schemas change.", Level::kUsual, takesSessionsEnd},
      {"message-unknown", "Messages that are not known are passed over.", Level::kUsual, takesUnknownMessages},
      {"message-pairs", "Any message may follow any other.", Level::kUsual, takesPairsOfMessages},
      {"message-any-order", "Five hundred messages in a random order do no harm.", Level::kStrict, takesAnyOrder},
      {"message-no-callbacks", "A host may have no callbacks.", Level::kStrict, doesWithoutCallbacks},
      {"message-then-calls", "Functions work after all messages.", Level::kBasic, stillWorksAfterwards},
  };
}

}  // namespace orlocal::host::check
