// A small plug-in with two functions and two script steps, as another author would write it. Built once as it should
// be, and once for each of the faults that plug-ins have.
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include "platform/host/fm_api.h"

namespace {

using namespace fmx;

enum class Fault {
  kNone,
  kOverruns,  ///< writes strings whatever the room
  kStays,     ///< takes nothing back at shutdown, and registers more each time
  kBreaks,    ///< reads an argument that is not there, and trusts texts
  kHangs,     ///< waits for ever at a message that it does not know
  kKeeps,     ///< gives back neither descriptors nor memory, and prints
  kMisnames,  ///< says something else than it registers, to hosts that cannot take it
};
constexpr Fault kFault = Fault::ORLOCAL_FAULT;

/// A text of the host's, gone at the end.
class HostText {
 public:
  explicit HostText(std::u16string_view units) : m_text(FM_Text_Constructor1(&m_x)) {
    if (m_text == nullptr) { return; }
    FM_Text_AssignUnicodeWithLength(m_text, units.data(), static_cast<std::uint32_t>(units.size()), &m_x);
  }
  ~HostText() { FM_Text_Delete(m_text, &m_x); }
  HostText(const HostText&) = delete;
  HostText& operator=(const HostText&) = delete;
  const Text* get() const { return m_text; }

 private:
  Exception m_x;
  Text* m_text;
};

std::u16string textAt(const DataVect* arguments, std::uint32_t position) {
  Exception x;
  const Text* text = FM_DataVect_AtAsText(arguments, position, &x);
  if (x.code != 0 || text == nullptr) { return u""; }
  const std::uint32_t size = FM_Text_GetSize(text, &x);
  std::u16string units(x.code == 0 ? size : 0, u'\0');
  FM_Text_GetUnicode(text, units.data(), 0, static_cast<std::uint32_t>(units.size()), &x);
  return x.code == 0 ? units : u"";
}

void answer(Data* result, std::u16string_view units) {
  Exception x;
  const HostText text(units);
  const Locale* locale = FM_Data_GetLocale(result, &x);
  if (text.get() != nullptr && x.code == 0) { FM_Data_SetAsText(result, text.get(), locale, kText, &x); }
}

std::u16string digits(std::size_t number) {
  std::u16string text;
  for (const char c : std::to_string(number)) { text += static_cast<char16_t>(c); }
  return text;
}

std::vector<char*> kept;

/// How many values a list has.
ErrorCode count(std::int16_t, const ExprEnv*, const DataVect* arguments, Data* result) {
  const std::u16string list = textAt(arguments, 0);
  std::size_t values = list.empty() ? 0 : 1;
  for (const char16_t unit : list) { values += unit == u'\r' ? 1 : 0; }
  if constexpr (kFault == Fault::kKeeps) {
    ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    kept.push_back(new char[50'000]);
    std::memset(kept.back(), 1, 50'000);
    std::printf("count\n");
    std::fflush(stdout);
  }
  if constexpr (kFault == Fault::kBreaks) {
    // As if there were always a first letter, and never half of one.
    if (!list.empty() && list[0] >= 0xD800 && list[0] < 0xDC00 && list.size() < 2) { throw list; }
  }
  answer(result, digits(values));
  return 0;
}

/// The text so many times, once without a number.
ErrorCode repeat(std::int16_t, const ExprEnv*, const DataVect* arguments, Data* result) {
  Exception x;
  std::size_t times = 1;
  if (kFault == Fault::kBreaks || FM_DataVect_Size(arguments, &x) > 1) {
    const FixPt* number = FM_DataVect_AtAsNumber(arguments, 1, &x);
    if constexpr (kFault == Fault::kBreaks) {
      // What the host gives for an argument that is not there is no number.
      if (number == nullptr) { *static_cast<volatile int*>(nullptr) = 0; }
    }
    const std::int64_t wanted = number == nullptr ? 0 : FM_FixPt_AsLong64(number, &x);
    times = wanted > 0 && wanted <= 100 ? static_cast<std::size_t>(wanted) : 0;
  }
  std::u16string text;
  const std::u16string once = textAt(arguments, 0);
  if (once.size() * times <= 50'000'000) {
    for (std::size_t i = 0; i < times; ++i) { text += once; }
  }
  answer(result, text);
  return 0;
}

struct Entry {
  std::int16_t id, minArgs, maxArgs;
  ExternalFunction function;
  std::u16string_view name, prototype, description, step;
};
constexpr Entry kEntries[] = {
    {1, 1, 1, count, u"Tally_Count", u"Tally_Count( list )", u"tally count values list | How many values a list has.",
     u"<PluginStep><Parameter type=\"calc\" id=\"0\" label=\"List\" showInline=\"true\"/>"
     u"<Parameter type=\"target\" label=\"Result\" showInline=\"true\"/></PluginStep>"},
    {2, 1, 2, repeat, u"Tally_Repeat", u"Tally_Repeat( text {; times} )",
     u"tally repeat text | The text, so many times.",
     u"<PluginStep><Parameter type=\"calc\" id=\"0\" label=\"Text\" showInline=\"true\"/>"
     u"<Parameter type=\"calc\" id=\"1\" label=\"Times\" showInline=\"true\"/>"
     u"<Parameter type=\"target\" label=\"Result\" showInline=\"true\"/></PluginStep>"}};

int startUps = 0;

bool enter(const QuadChar* plugin, const Entry& entry, std::int16_t hostVersion) {
  Exception x;
  const HostText name(entry.name), prototype(kFault == Fault::kMisnames ? u"Tally( list" : entry.prototype),
      description(entry.description), step(kFault == Fault::kMisnames ? u"<PluginStep><Parameter>" : entry.step);
  const auto id = static_cast<std::int16_t>(entry.id + (kFault == Fault::kStays ? 10 * startUps : 0));
  ErrorCode error = 0;
  if (hostVersion >= 56 || kFault == Fault::kMisnames) {
    error = FM_ExprEnv_RegisterExternalFunctionEx(plugin, id, name.get(), prototype.get(), description.get(),
                                                  entry.minArgs, entry.maxArgs, 0xFF00, entry.function, &x);
  } else {
    error = FM_ExprEnv_RegisterExternalFunction(plugin, id, name.get(), prototype.get(), entry.minArgs, entry.maxArgs,
                                                0xFF00, entry.function, &x);
  }
  if (x.code == 0 && error == 0 && hostVersion >= 57) {
    FM_ExprEnv_RegisterScriptStep(plugin, id, name.get(), step.get(), description.get(), 0xFF00, entry.function, &x);
  }
  return x.code == 0 && error == 0;
}

void leave(const QuadChar* plugin, std::int16_t hostVersion) {
  for (const Entry& entry : kEntries) {
    Exception x;
    FM_ExprEnv_UnRegisterExternalFunction(plugin, entry.id, &x);
    if (hostVersion >= 57) { FM_ExprEnv_UnRegisterScriptStep(plugin, entry.id, &x); }
  }
}

std::intptr_t startUp(std::int16_t hostVersion) {
  constexpr std::int16_t kOldest = 50, kNewest = 255;
  if (hostVersion < kOldest || hostVersion > kNewest) { return -1; }
  Exception x;
  QuadChar* plugin = FM_QuadChar_Constructor2('T', 'l', 'l', kFault == Fault::kMisnames ? 'x' : 'y', &x);
  bool entered = plugin != nullptr;
  for (const Entry& entry : kEntries) { entered = entered && enter(plugin, entry, hostVersion); }
  if (!entered && plugin != nullptr) { leave(plugin, hostVersion); }
  FM_QuadChar_Delete(plugin, &x);
  ++startUps;
  return entered ? hostVersion : -1;
}

void shutDown(std::int16_t hostVersion) {
  if constexpr (kFault == Fault::kStays) { return; }
  Exception x;
  QuadChar* plugin = FM_QuadChar_Constructor2('T', 'l', 'l', 'y', &x);
  if (plugin != nullptr) { leave(plugin, hostVersion); }
  FM_QuadChar_Delete(plugin, &x);
}

void getString(const ExternCall* call) {
  std::u16string_view text;
  if (call->parm1 == 128) { text = u"Tally"; }
  if (call->parm1 == 129) { text = u"Tally counts and repeats. It has no settings."; }
  if (call->parm1 == 131) { text = u"Tlly1nnYnnn"; }
  if (call->parm1 == 132) { text = u"https://tally.example/help"; }
  const bool fits = !text.empty() && text.size() < call->parm3;
  if (call->result == 0 || (!fits && kFault != Fault::kOverruns)) { return; }
  auto* buffer = reinterpret_cast<unsigned char*>(call->result);
  std::memcpy(buffer, text.data(), text.size() * sizeof(char16_t));
  std::memset(buffer + text.size() * sizeof(char16_t), 0, sizeof(char16_t));
}

}  // namespace

extern "C" __attribute__((visibility("default"))) void FMExternCallProc(fmx::ExternCall* call) {
  switch (call->whichCall) {
    case kCallStartUp:
      call->result = static_cast<std::uintptr_t>(startUp(call->extnVersion));
      break;
    case kCallShutdown:
      shutDown(call->extnVersion);
      break;
    case kCallGetString:
      getString(call);
      break;
    case 3:
      while (kFault == Fault::kHangs) { ::usleep(10'000); }
      break;
    default:
      break;
  }
}
