#include "bridge/recording_host.h"

#include <utility>

#include <dlfcn.h>

#include "platform/host/text.h"
#include "platform/host/values.h"

namespace orlocal::fakes {

RecordingHost& RecordingHost::instance() {
  static RecordingHost host;
  return host;
}

namespace {

RecordingHost& host() { return RecordingHost::instance(); }

std::string textNoted(const fmx::Text* text) {
  const bool wasRecording = std::exchange(host().isRecording, false);
  const auto value = textOf(text).value_or("");
  host().isRecording = wasRecording;
  return value;
}

std::string idNoted(const fmx::QuadChar* id) {
  std::string text;
  for (std::int32_t i = 0; i < 4; ++i) { text += static_cast<char>(hostCall<fmx::FM_QuadChar_operatorCAR>(id, i)); }
  return text;
}

/// What a failed call returns; nobody looks at it.
template <class Result>
Result nothing() {
  return Result();
}

/// The function of that name in the host's library.
template <class Function>
Function* next(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace
}  // namespace orlocal::fakes

// The executable's definitions come before the library's.
namespace fmx {
extern "C" {

using orlocal::fakes::RecordingHost;
using orlocal::fakes::Registration;

#define ORLO_FORWARD(Result, Name, Parameters, Arguments, Noted)              \
  Result Name Parameters {                                                    \
    auto& host = RecordingHost::instance();                                   \
    host.note(Noted);                                                         \
    if (host.fails(#Name, 0, x)) return orlocal::fakes::nothing<Result>();    \
    static auto* const real = orlocal::fakes::next<Result Parameters>(#Name); \
    return real Arguments;                                                    \
  }

ORLO_FORWARD(FixPt*, FM_FixPt_Constructor1, (std::int32_t val, std::int32_t precision, Exception* x),
             (val, precision, x), "FM_FixPt_Constructor1 " + std::to_string(val) + " " + std::to_string(precision))
ORLO_FORWARD(void, FM_FixPt_AssignInt, (void* self, std::int32_t that, Exception* x), (self, that, x),
             "FM_FixPt_AssignInt " + std::to_string(that))
ORLO_FORWARD(std::int32_t, FM_FixPt_AsLong, (const void* self, Exception* x), (self, x), "FM_FixPt_AsLong")
ORLO_FORWARD(Text*, FM_Text_Constructor1, (Exception * x), (x), "FM_Text_Constructor1")
ORLO_FORWARD(std::uint32_t, FM_Text_GetSize, (const void* self, Exception* x), (self, x), "FM_Text_GetSize")
ORLO_FORWARD(void, FM_Text_GetUnicode,
             (const void* self, char16_t* s, std::uint32_t position, std::uint32_t size, Exception* x),
             (self, s, position, size, x),
             "FM_Text_GetUnicode " + std::to_string(position) + " " + std::to_string(size))
ORLO_FORWARD(void, FM_Text_Assign, (void* self, const char* s, std::int32_t encoding, Exception* x),
             (self, s, encoding, x), "FM_Text_Assign " + std::string(s) + " encoding " + std::to_string(encoding))
ORLO_FORWARD(void, FM_Text_AssignUnicode, (void* self, const char16_t* s, Exception* x), (self, s, x),
             "FM_Text_AssignUnicode " + orlocal::utf8FromUtf16(s))
ORLO_FORWARD(void, FM_Text_SetText,
             (void* self, const Text* other, std::uint32_t position, std::uint32_t size, Exception* x),
             (self, other, position, size, x), "FM_Text_SetText")
ORLO_FORWARD(void, FM_Text_Uppercase, (const void* self, Exception* x), (self, x), "FM_Text_Uppercase")
ORLO_FORWARD(bool, FM_Text_operatorEQ, (const void* self, const Text* that, Exception* x), (self, that, x),
             "FM_Text_operatorEQ")
ORLO_FORWARD(std::uint32_t, FM_DataVect_Size, (const void* self, Exception* x), (self, x), "FM_DataVect_Size")
ORLO_FORWARD(const Data*, FM_DataVect_At, (const void* self, std::uint32_t position, Exception* x), (self, position, x),
             "FM_DataVect_At " + std::to_string(position))
ORLO_FORWARD(const Text*, FM_DataVect_AtAsText, (const void* self, std::uint32_t position, Exception* x),
             (self, position, x), "FM_DataVect_AtAsText " + std::to_string(position))
ORLO_FORWARD(const FixPt*, FM_DataVect_AtAsNumber, (const void* self, std::uint32_t position, Exception* x),
             (self, position, x), "FM_DataVect_AtAsNumber " + std::to_string(position))
ORLO_FORWARD(const DateTime*, FM_DataVect_AtAsTimeStamp, (const void* self, std::uint32_t position, Exception* x),
             (self, position, x), "FM_DataVect_AtAsTimeStamp " + std::to_string(position))
ORLO_FORWARD(std::int16_t, FM_DateTime_GetYear, (const void* self, Exception* x), (self, x), "FM_DateTime_GetYear")
ORLO_FORWARD(std::int16_t, FM_DateTime_GetMonth, (const void* self, Exception* x), (self, x), "FM_DateTime_GetMonth")
ORLO_FORWARD(std::int16_t, FM_DateTime_GetDay, (const void* self, Exception* x), (self, x), "FM_DateTime_GetDay")
ORLO_FORWARD(std::int32_t, FM_DateTime_GetHour, (const void* self, Exception* x), (self, x), "FM_DateTime_GetHour")
ORLO_FORWARD(std::int16_t, FM_DateTime_GetMinute, (const void* self, Exception* x), (self, x), "FM_DateTime_GetMinute")
ORLO_FORWARD(std::int16_t, FM_DateTime_GetSec, (const void* self, Exception* x), (self, x), "FM_DateTime_GetSec")
ORLO_FORWARD(const Locale*, FM_Data_GetLocale, (const void* self, Exception* x), (self, x), "FM_Data_GetLocale")
ORLO_FORWARD(ErrorCode, FM_Data_SetAsText,
             (void* self, const Text* textData, const Locale* sourceLocale, std::int32_t nativeType, Exception* x),
             (self, textData, sourceLocale, nativeType, x), "FM_Data_SetAsText type " + std::to_string(nativeType))
ORLO_FORWARD(void, FM_Data_SetAsNumber, (void* self, const FixPt* numericData, std::int32_t nativeType, Exception* x),
             (self, numericData, nativeType, x), "FM_Data_SetAsNumber type " + std::to_string(nativeType))
ORLO_FORWARD(Locale*, FM_Locale_Constructor1, (std::int32_t inputType, Exception* x), (inputType, x),
             "FM_Locale_Constructor1 " + std::to_string(inputType))
#undef ORLO_FORWARD

// An object is gone whatever the host says of it.
#define ORLO_FORWARD_DELETE(Name)                                                     \
  void Name(void* self, Exception* x) {                                               \
    auto& host = RecordingHost::instance();                                           \
    host.note(#Name);                                                                 \
    static auto* const real = orlocal::fakes::next<void(void*, Exception* x)>(#Name); \
    real(self, x);                                                                    \
    static_cast<void>(host.fails(#Name, 0, x));                                       \
  }

ORLO_FORWARD_DELETE(FM_FixPt_Delete)
ORLO_FORWARD_DELETE(FM_Text_Delete)
#undef ORLO_FORWARD_DELETE

ErrorCode FM_ExprEnv_RegisterExternalFunction(const QuadChar* pluginId, std::int16_t functionId,
                                              const Text* functionName, const Text* functionPrototype,
                                              std::int16_t minArgs, std::int16_t maxArgs,
                                              std::uint32_t compatibleOnFlags, ExternalFunction funcPtr, Exception* x) {
  auto& host = RecordingHost::instance();
  if (host.fails("FM_ExprEnv_RegisterExternalFunction", functionId, x)) { return 0; }
  host.functions.push_back({orlocal::fakes::idNoted(pluginId), functionId, orlocal::fakes::textNoted(functionName),
                            orlocal::fakes::textNoted(functionPrototype), "", minArgs, maxArgs, compatibleOnFlags, "",
                            funcPtr});
  return host.registrationAnswer;
}

ErrorCode FM_ExprEnv_RegisterExternalFunctionEx(const QuadChar* pluginId, std::int16_t functionId,
                                                const Text* functionName, const Text* functionPrototype,
                                                const Text* functionDescription, std::int16_t minArgs,
                                                std::int16_t maxArgs, std::uint32_t compatibleOnFlags,
                                                ExternalFunction funcPtr, Exception* x) {
  auto& host = RecordingHost::instance();
  host.note("RegisterExternalFunctionEx " + std::to_string(functionId));
  if (host.fails("FM_ExprEnv_RegisterExternalFunctionEx", functionId, x)) { return 0; }
  host.functionsEx.push_back({orlocal::fakes::idNoted(pluginId), functionId, orlocal::fakes::textNoted(functionName),
                              orlocal::fakes::textNoted(functionPrototype),
                              orlocal::fakes::textNoted(functionDescription), minArgs, maxArgs, compatibleOnFlags, "",
                              funcPtr});
  return host.registrationAnswer;
}

ErrorCode FM_ExprEnv_RegisterScriptStep(const QuadChar* pluginId, std::int16_t scriptStepId, const Text* scriptStepName,
                                        const Text* scriptStepDefinition, const Text* scriptStepDescription,
                                        std::uint32_t compatibleOnFlags, ExternalFunction funcPtr, Exception* x) {
  auto& host = RecordingHost::instance();
  host.note("RegisterScriptStep " + std::to_string(scriptStepId));
  if (host.fails("FM_ExprEnv_RegisterScriptStep", scriptStepId, x)) { return 0; }
  host.steps.push_back({orlocal::fakes::idNoted(pluginId), scriptStepId, orlocal::fakes::textNoted(scriptStepName), "",
                        orlocal::fakes::textNoted(scriptStepDescription), 0, 0, compatibleOnFlags,
                        orlocal::fakes::textNoted(scriptStepDefinition), funcPtr});
  return host.registrationAnswer;
}

ErrorCode FM_ExprEnv_UnRegisterExternalFunction(const QuadChar* pluginId, std::int16_t functionId, Exception* x) {
  auto& host = RecordingHost::instance();
  if (host.fails("FM_ExprEnv_UnRegisterExternalFunction", functionId, x)) { return 0; }
  if (orlocal::fakes::idNoted(pluginId) == "Orlo") { host.unregisteredFunctions.push_back(functionId); }
  return host.registrationAnswer;
}

ErrorCode FM_ExprEnv_UnRegisterScriptStep(const QuadChar* pluginId, std::int16_t scriptStepId, Exception* x) {
  auto& host = RecordingHost::instance();
  if (host.fails("FM_ExprEnv_UnRegisterScriptStep", scriptStepId, x)) { return 0; }
  if (orlocal::fakes::idNoted(pluginId) == "Orlo") { host.unregisteredSteps.push_back(scriptStepId); }
  return host.registrationAnswer;
}

}  // extern "C"
}  // namespace fmx
