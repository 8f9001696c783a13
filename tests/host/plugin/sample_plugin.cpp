// A plug-in that uses the host's interface as real ones do, and tells its tests what it was sent.
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>

#include "platform/host/fm_api.h"

namespace {

using namespace fmx;

/// The record as it came with the last message other than get-string, which is how the state is asked for.
ExternCall g_last;
int g_startUps = 0;
int g_shutdowns = 0;

Text* makeText(std::u16string_view units) {
  Exception x;
  Text* text = FM_Text_Constructor1(&x);
  FM_Text_AssignUnicodeWithLength(text, units.data(), static_cast<std::uint32_t>(units.size()), &x);
  return text;
}

void answer(Data* result, std::string_view bytes) {
  Exception x;
  Text* text = makeText(u"");
  FM_Text_AssignWithLength(text, bytes.data(), static_cast<std::uint32_t>(bytes.size()), kEncodingUtf8, &x);
  FM_Data_SetAsText(result, text, FM_Data_GetLocale(result, &x), kText, &x);
  FM_Text_Delete(text, &x);
}

ErrorCode echo(std::int16_t, const ExprEnv*, const DataVect* arguments, Data* result) {
  Exception x;
  const Text* text = FM_DataVect_AtAsText(arguments, 0, &x);
  return x.code == 0 ? FM_Data_SetAsText(result, text, FM_Data_GetLocale(result, &x), kText, &x) : ErrorCode{1};
}

ErrorCode complain(std::int16_t, const ExprEnv*, const DataVect*, Data*) {
  throw std::runtime_error("nothing works today");
}

/// What the last record held, as the tests read it.
ErrorCode describe(std::int16_t, const ExprEnv*, const DataVect*, Data* result) {
  const auto* version = reinterpret_cast<const char16_t*>(g_last.parm2);
  std::string text = "version " + std::to_string(g_last.extnVersion) + " unused " + std::to_string(g_last.unusedID);
  text += " kind " + std::to_string(g_last.parm1) + " host ";
  for (; version != nullptr && *version != 0; ++version) { text.push_back(static_cast<char>(*version)); }
  text += " starts " + std::to_string(g_startUps) + " shutdowns " + std::to_string(g_shutdowns);
  answer(result, text);
  return 0;
}

ErrorCode refresh(std::int16_t, const ExprEnv*, const DataVect*, Data* result) {
  Text* file = makeText(u"Agenda");
  Text* script = makeText(u"Refresh");
  const StartScript start = g_last.cStartScript;
  answer(result, std::to_string(start(file, script, 3, nullptr)));
  Exception x;
  FM_Text_Delete(file, &x);
  FM_Text_Delete(script, &x);
  return 0;
}

void registerOne(const QuadChar* id, std::int16_t functionId, std::u16string_view name, std::int16_t minArgs,
                 std::int16_t maxArgs, ExternalFunction function) {
  Exception x;
  Text* text = makeText(name);
  FM_ExprEnv_RegisterExternalFunctionEx(id, functionId, text, text, text, minArgs, maxArgs, 0xFF01, function, &x);
  FM_Text_Delete(text, &x);
}

void startUp(ExternCall* call) {
  if (call->extnVersion < 50) {
    call->result = static_cast<std::uintptr_t>(-1);
    return;
  }
  Exception x;
  QuadChar* id = FM_QuadChar_Constructor2('T', 'e', 's', 't', &x);
  registerOne(id, 1, u"Test_Echo", 1, 1, echo);
  registerOne(id, 2, u"Test_Complain", 0, -1, complain);
  registerOne(id, 3, u"Test_Describe", 0, 0, describe);
  registerOne(id, 4, u"Test_Refresh", 0, 0, refresh);
  Text* name = makeText(u"Test Echo");
  FM_ExprEnv_RegisterScriptStep(id, 1, name, name, name, 0xFF01, echo, &x);
  FM_Text_Delete(name, &x);
  FM_QuadChar_Delete(id, &x);
  ++g_startUps;
  call->result = 57;
}

/// Forgets one function and leaves the others, as a careless plug-in does.
void shutDown() {
  Exception x;
  QuadChar* id = FM_QuadChar_Constructor2('T', 'e', 's', 't', &x);
  FM_ExprEnv_UnRegisterExternalFunction(id, 1, &x);
  FM_QuadChar_Delete(id, &x);
  ++g_shutdowns;
}

void getString(const ExternCall* call) {
  std::u16string_view text;
  if (call->parm1 == 128) { text = u"Sample"; }
  if (call->parm1 == 131) { text = u"Test1nnYYnn"; }
  if (text.empty() || text.size() + 1 > call->parm3) { return; }
  auto* buffer = reinterpret_cast<char16_t*>(call->result);
  std::memcpy(buffer, text.data(), text.size() * sizeof(char16_t));
  buffer[text.size()] = 0;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) void FMExternCallProc(fmx::ExternCall* call) {
  if (call->whichCall == kCallGetString) { return getString(call); }
  g_last = *call;
  if (call->whichCall == kCallStartUp) { startUp(call); }
  if (call->whichCall == kCallShutdown) { shutDown(); }
}
