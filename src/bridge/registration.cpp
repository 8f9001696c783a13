#include "bridge/registration.h"

#include "bridge/function_table.h"
#include "bridge/script_steps.h"
#include "bridge/state.h"
#include "bridge/strings.h"
#include "platform/host/text.h"
#include "platform/host/values.h"

namespace orlocal {
namespace {

constexpr std::int16_t kLastWithoutDescriptions = 55;
constexpr std::int16_t kLastWithoutScriptSteps = 56;
constexpr std::uint32_t kDescriptionOffset = 200;

/// The plug-in's own ID.
struct PluginId : HostQuadChar {
  PluginId() : HostQuadChar('O', 'r', 'l', 'o') {}
};

std::int16_t hostVersion() { return gFMX_ExternCallPtr->extnVersion; }

}  // namespace

void RegisterFunction(std::int16_t functionId, std::int16_t minArgs, std::int16_t maxArgs,
                      fmx::ExternalFunction function) {
  const PluginId pluginId;
  HostText name;
  HostText prototype;
  HostText description;
  const auto stringId = static_cast<std::uint32_t>(functionId);
  Do_GetString(stringId, name, true);
  Do_GetString(stringId, prototype, false);
  if (hostVersion() <= kLastWithoutDescriptions) {
    hostCall<fmx::FM_ExprEnv_RegisterExternalFunction>(pluginId.get(), functionId, name.get(), prototype.get(), minArgs,
                                                       maxArgs, kFunctionFlags, function);
  } else {
    Do_GetString(stringId + kDescriptionOffset, description, false);
    hostCall<fmx::FM_ExprEnv_RegisterExternalFunctionEx>(pluginId.get(), functionId, name.get(), prototype.get(),
                                                         description.get(), minArgs, maxArgs, kFunctionFlags, function);
  }
  if (hostVersion() <= kLastWithoutScriptSteps) { return; }
  HostText definition;
  Do_GetString(stringId + kDescriptionOffset, description, false);
  GetXMLDefinition(functionId, definition);
  hostCall<fmx::FM_ExprEnv_RegisterScriptStep>(pluginId.get(), functionId, name.get(), definition.get(),
                                               description.get(), kFunctionFlags, function);
}

void registerFunctions() {
  for (const auto& entry : kFunctions) { RegisterFunction(entry.id, entry.minArgs, entry.maxArgs, entry.function); }
}

void unregisterFunctions() {
  const PluginId pluginId;
  for (std::int16_t id = kFirstId; id <= kLastId; ++id) {
    hostCall<fmx::FM_ExprEnv_UnRegisterExternalFunction>(pluginId.get(), id);
  }
  if (hostVersion() <= kLastWithoutScriptSteps) { return; }
  for (std::int16_t id = kFirstId; id <= kLastId; ++id) {
    hostCall<fmx::FM_ExprEnv_UnRegisterScriptStep>(pluginId.get(), id);
  }
}

}  // namespace orlocal
