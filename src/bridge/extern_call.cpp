#include "bridge/extern_call.h"

#include <cstdint>
#include <memory>

#include "backend/eventkit/ical_ek_functions.h"
#include "backend/legacy/ical_functions.h"
#include "bridge/configured_script.h"
#include "bridge/plugin_error.h"
#include "bridge/registration.h"
#include "bridge/state.h"
#include "bridge/strings.h"
#include "platform/platform.h"
#include "platform/run_loop.h"
#include "platform/system_version.h"

namespace orlocal {
namespace {

constexpr int kOldestHost = 50;
constexpr int kNewestHost = 255;
/// The interface version that we speak.
constexpr std::uintptr_t kOurVersion = 57;
constexpr auto kNotForThisHost = static_cast<std::uintptr_t>(-1);

constexpr long kLastLegacyMinorVersion = 7;

bool g_started = false;

void startUp(fmx::ExternCall& call) {
  const auto aboveOldest = static_cast<std::uint16_t>(call.extnVersion - kOldestHost);
  if (aboveOldest > kNewestHost - kOldestHost) {
    call.result = kNotForThisHost;
    return;
  }
  registerFunctions();
  Do_PluginInit();
  registerConfiguredScript();
  g_started = true;
  call.result = kOurVersion;
}

void shutDown() {
  g_started = false;
  unregisterFunctions();
  // Nobody may call again before the host copies the store's file.
  platform().closeStores();
}

/// Calendar changes made elsewhere reach us through the run loop, and the host's idle time is when it may turn.
void idle() {
  if (g_started) { platform().currentRunLoop().turn(); }
}

}  // namespace

bool UseEKImplementation() {
  const auto minor = platform().systemVersion().minorVersion();
  return minor && *minor > kLastLegacyMinorVersion;
}

void Do_PluginInit() {
  // Whatever the system says at a later start-up: solutions keep the back end that they began with.
  const bool chosen = g_sharedEKFunctions != nullptr || g_sharedFunctions != nullptr;
  if (!chosen) { g_bUseEK = UseEKImplementation(); }
  g_sharedEKFunctions = g_bUseEK ? iCalEKFunctions::sharedICalFunctions() : nullptr;
  g_sharedFunctions = g_bUseEK ? nullptr : iCalFunctions::sharedICalFunctions();
  static std::unique_ptr<orlo_PluginError> s_error;
  s_error = std::make_unique<orlo_PluginError>();
  error = s_error.get();
}

}  // namespace orlocal

void FMExternCallProc(fmx::ExternCall* call) {
  using namespace orlocal;
  gFMX_ExternCallPtr = call;
  switch (call->whichCall) {
    case fmx::kCallGetString:
      Do_GetString(call->parm1, static_cast<std::uint32_t>(call->parm2), static_cast<std::int32_t>(call->parm3),
                   reinterpret_cast<char16_t*>(call->result));
      break;
    case fmx::kCallShutdown:
      shutDown();
      break;
    case fmx::kCallStartUp:
      startUp(*call);
      break;
    case fmx::kCallIdle:
      idle();
      break;
    default:
      break;
  }
}
