#include <cstdio>
#include <deque>
#include <memory>

#include "backend/eventkit/ical_ek_functions.h"
#include "backend/legacy/ical_functions.h"
#include "backend/value_texts.h"
#include "bridge/function_table.h"
#include "bridge/plugin_error.h"
#include "bridge/state.h"
#include "choices.h"
#include "function_words.h"
#include "platform/exception.h"
#include "platform/host/data.h"
#include "platform/platform.h"
#include "platform/run_loop.h"
#include "same_again.h"
#include "seeded_store.h"

// A row of calls of the plug-in's functions, on either back end, on a store in which others write and which they take
// away meanwhile. Every call has to be answered, and the store to be sound afterwards.

namespace {

using namespace orlocal;
using namespace orlocal::fuzz;

constexpr std::size_t kMostCalls = 60;

/// Calls functions with arguments that the input chooses.
class Caller {
 public:
  explicit Caller(Choices& choices) : m_choices(choices) {
    setPlatform(makeSystemPlatform());
    g_bUseEK = m_choices.below(2) == 0;
    g_sharedEKFunctions = g_bUseEK ? iCalEKFunctions::sharedICalFunctions() : nullptr;
    g_sharedFunctions = g_bUseEK ? nullptr : iCalFunctions::sharedICalFunctions();
    // The one instance of before lets go of the store of before.
    if (g_bUseEK) { g_sharedEKFunctions->init(); }
    if (!g_bUseEK) { g_sharedFunctions->init(); }
    error = &m_error;
  }
  ~Caller() {
    if (g_bUseEK) { g_sharedEKFunctions->releaseItems(); }
    if (!g_bUseEK) { g_sharedFunctions->releaseItems(); }
    platform().closeStores();
    error = nullptr;
  }
  Caller(const Caller&) = delete;
  Caller& operator=(const Caller&) = delete;

  void callOne() {
    const FunctionEntry& function = m_choices.oneOf(kFunctions);
    const auto counts = static_cast<std::size_t>(function.maxArgs - function.minArgs) + 1;
    const std::size_t count = static_cast<std::size_t>(function.minArgs) + m_choices.below(counts);
    const char* meant = "";
    for (const Meant& row : kMeant) { meant = row.id == function.id ? row.arguments : meant; }
    Vector arguments;
    for (std::size_t i = 0; i < count; ++i) {
      HostData value;
      // Now and then something else than what is meant.
      constexpr const char* kKinds = "tpwasfclvnduDx";
      const std::size_t other = m_choices.below(64);
      assign(value.get(), other < 14 ? kKinds[other] : meant[i]);
      hostCall<fmx::FM_DataVect_PushBack>(arguments.get(), value.get());
    }
    HostData result;
    perform(function, arguments.get(), result.get());
  }

 private:
  class Vector : public HostOwned<fmx::DataVect, &fmx::FM_DataVect_Delete> {
   public:
    Vector() : HostOwned(hostCall<fmx::FM_DataVect_Constructor1>()) {}
  };

  void perform(const FunctionEntry& function, const fmx::DataVect* arguments, fmx::Data* result) {
    try {
      if (function.function(function.id, nullptr, arguments, result) != 0) { std::abort(); }
      if (function.id != kGetProperty) { return; }
      if (auto text = textOf(hostCall<fmx::FM_Data_GetAsText>(result))) { remember(*std::move(text)); }
    } catch (const Exception& exception) {
      if (isMeant(exception, function, HostArguments(arguments))) { return; }
      std::fprintf(stderr, "function %d: %s: %s\n", function.id, exception.name().c_str(), exception.what());
      std::abort();
    }
  }

  /// The exception that callers rely on: every alarm is removed, and then the one before the first.
  static bool isMeant(const Exception& exception, const FunctionEntry& function, const HostArguments& arguments) {
    return g_bUseEK && function.id == kRemoveAlarm && exception.name() == "NSRangeException" &&
           numberOf(arguments.numberAt(1)) == -1;
  }

  void remember(std::string text) {
    if (text == kErrorText) { return; }
    constexpr std::size_t kKept = 16;
    m_answers.push_front(std::move(text));
    if (m_answers.size() > kKept) { m_answers.pop_back(); }
  }

  void assign(fmx::Data* value, char kind) {
    switch (kind) {
      case 't':
        return assignText(value, m_choices.oneOf(kTypes));
      case 'p':
        return assignText(value, m_choices.oneOf(kProperties));
      case 'w':
        return assignText(value, m_choices.oneOf(kSpans));
      case 'a':
        return assignText(value, m_choices.oneOf(kActions));
      case 's':
        return assignText(value, m_choices.oneOf(kStates));
      case 'f':
        return assignText(value, m_choices.oneOf(kFrequencies));
      case 'c':
        return assignText(value, m_choices.oneOf(kTitles));
      case 'l':
        return assignText(value, m_choices.oneOf(kLists));
      case 'v':
        return assign(value, m_choices.oneOf(kValueKinds));
      case 'y':
        return assignText(value, m_choices.oneOf(kValues));
      case 'n':
        return assignNumber(value);
      case 'd':
        return assignMoment(value);
      case 'D':
        // An end that lies in the past, or far away, makes rules that the store refuses; most have none.
        return m_choices.below(4) == 0 ? assignMoment(value) : assignText(value, "");
      case 'u':
        return assignText(value, m_answers.empty() ? "" : m_answers[m_choices.below(m_answers.size())]);
      default:
        return assignText(value, m_choices.text());
    }
  }

  static void assignText(fmx::Data* value, std::string_view text) {
    HostText hostText;
    hostCall<fmx::FM_Text_AssignWithLength>(hostText.get(), text.data(), static_cast<std::uint32_t>(text.size()),
                                            fmx::kEncodingUtf8);
    setText(value, hostText);
  }

  void assignNumber(fmx::Data* value) {
    HostNumber number;
    switch (m_choices.below(8)) {
      case 0:
        hostCall<fmx::FM_FixPt_AssignDouble>(number.get(), m_choices.oneOf(kFractions));
        break;
      case 1:
        hostCall<fmx::FM_FixPt_AssignInt64>(number.get(), m_choices.wholeNumber());
        break;
      case 2:
        return assignText(value, m_choices.text());
      default:
        hostCall<fmx::FM_FixPt_AssignInt64>(number.get(), m_choices.oneOf(kNumbers));
    }
    setNumber(value, number);
  }

  void assignMoment(fmx::Data* value) {
    const std::size_t shape = m_choices.below(8);
    if (shape == 0) { return assignText(value, ""); }
    if (shape == 1) { return assignText(value, m_choices.oneOf(kDateTexts)); }
    if (shape == 2) { return assignNumber(value); }
    HostDateTime moment;
    const auto part = [this](std::size_t count) { return static_cast<std::int16_t>(m_choices.below(count)); };
    const std::int16_t year = shape == 3 ? m_choices.oneOf(kYears) : kYears[m_choices.below(2)];
    const std::int16_t month = part(14);
    moment.setDate(year, month, part(33));
    const std::int16_t hour = part(26);
    moment.setTime(hour, part(62), 0);
    if (shape == 4) { return setDate(value, moment); }
    setTimeStamp(value, moment);
  }

  static constexpr char kValueKinds[] = {'d', 'n', 'u', 'x', 'y'};
  static constexpr std::int16_t kGetProperty = 155, kRemoveAlarm = 164;

  Choices& m_choices;
  orlo_PluginError m_error;
  std::deque<std::string> m_answers;  ///< the newest first
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > 4'096) { return 0; }
  const SeededStore seeded;
  Choices choices(data, size);
  {
    Caller caller(choices);
    for (std::size_t i = 0; i < kMostCalls && choices.more(); ++i) {
      switch (const std::size_t what = choices.below(64)) {
        case 1:
        case 2:
        case 3:
          seeded.write(kOutside[what - 1]);
          break;
        case 4:
          seeded.takeAway();
          break;
        case 5:
          platform().currentRunLoop().turn();
          break;
        default:
          caller.callOne();
      }
    }
  }
  expectTheSameItemsAgain(*opened(seeded.file()), seeded.other());
  return 0;
}
