// ExprEnv.
#include "host/fmwrapper/handles.h"

namespace fmx {

using namespace orlocal::host;

namespace {

RegistrationKey keyOf(const QuadChar* pluginId, std::int16_t id) { return {of(pluginId).code, id}; }

}  // namespace

FM_FUNCTION ExprEnv* FM_ExprEnv_Constructor1(Exception* x) {
  return guarded(x, [] { return makeHandle<ExprEnv>(); });
}
FM_FUNCTION ErrorCode FM_ExprEnv_Evaluate(const void* self, const Text* expression, Data* result, Exception* x) {
  return guarded(x, [&] { return Registry::instance().evaluate(selfOf<ExprEnv>(self), of(expression), of(result)); });
}
FM_FUNCTION ErrorCode FM_ExprEnv_RegisterExternalFunction(const QuadChar* pluginId, std::int16_t functionId,
                                                          const Text* functionName, const Text* functionPrototype,
                                                          std::int16_t minArgs, std::int16_t maxArgs,
                                                          std::uint32_t compatibleOnFlags, ExternalFunction funcPtr,
                                                          Exception* x) {
  return guarded(x, [&] {
    return Registry::instance().registerFunction({.key = keyOf(pluginId, functionId),
                                                  .name = of(functionName),
                                                  .prototype = of(functionPrototype),
                                                  .description = {},
                                                  .minArgs = minArgs,
                                                  .maxArgs = maxArgs,
                                                  .flags = compatibleOnFlags,
                                                  .function = funcPtr});
  });
}
FM_FUNCTION ErrorCode FM_ExprEnv_RegisterExternalFunctionEx(const QuadChar* pluginId, std::int16_t functionId,
                                                            const Text* functionName, const Text* functionPrototype,
                                                            const Text* functionDescription, std::int16_t minArgs,
                                                            std::int16_t maxArgs, std::uint32_t compatibleOnFlags,
                                                            ExternalFunction funcPtr, Exception* x) {
  return guarded(x, [&] {
    return Registry::instance().registerFunction({.key = keyOf(pluginId, functionId),
                                                  .name = of(functionName),
                                                  .prototype = of(functionPrototype),
                                                  .description = of(functionDescription),
                                                  .minArgs = minArgs,
                                                  .maxArgs = maxArgs,
                                                  .flags = compatibleOnFlags,
                                                  .function = funcPtr});
  });
}
FM_FUNCTION ErrorCode FM_ExprEnv_UnRegisterExternalFunction(const QuadChar* pluginId, std::int16_t functionId,
                                                            Exception* x) {
  return guarded(x, [&] { return Registry::instance().unregisterFunction(keyOf(pluginId, functionId)); });
}
FM_FUNCTION std::uintptr_t FM_ExprEnv_SessionID(const void* self, Exception* x) {
  return guarded(x, [&] { return selfOf<ExprEnv>(self).sessionId; });
}
FM_FUNCTION std::uintptr_t FM_ExprEnv_FileID(const void* self, Exception* x) {
  return guarded(x, [&] { return selfOf<ExprEnv>(self).fileId; });
}
FM_FUNCTION ErrorCode FM_ExprEnv_RegisterScriptStep(const QuadChar* pluginId, std::int16_t scriptStepId,
                                                    const Text* scriptStepName, const Text* scriptStepDefinition,
                                                    const Text* scriptStepDescription, std::uint32_t compatibleOnFlags,
                                                    ExternalFunction funcPtr, Exception* x) {
  return guarded(x, [&] {
    return Registry::instance().registerStep({.key = keyOf(pluginId, scriptStepId),
                                              .name = of(scriptStepName),
                                              .definition = of(scriptStepDefinition),
                                              .description = of(scriptStepDescription),
                                              .flags = compatibleOnFlags,
                                              .function = funcPtr});
  });
}
FM_FUNCTION ErrorCode FM_ExprEnv_UnRegisterScriptStep(const QuadChar* pluginId, std::int16_t scriptStepId,
                                                      Exception* x) {
  return guarded(x, [&] { return Registry::instance().unregisterStep(keyOf(pluginId, scriptStepId)); });
}
FM_FUNCTION void FM_ExprEnv_Delete(void* self, Exception*) { deleteHandle<ExprEnv>(self); }

}  // namespace fmx
