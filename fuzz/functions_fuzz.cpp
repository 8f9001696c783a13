#include <cstdio>
#include <deque>
#include <limits>
#include <memory>
#include <system_error>
#include <thread>

#include "backend/eventkit/ical_ek_functions.h"
#include "backend/legacy/ical_functions.h"
#include "backend/value_texts.h"
#include "bridge/function_table.h"
#include "bridge/plugin_error.h"
#include "bridge/state.h"
#include "choices.h"
#include "platform/exception.h"
#include "platform/host/data.h"
#include "platform/platform.h"
#include "platform/run_loop.h"
#include "same_again.h"
#include "temporary_folder.h"

// A row of calls of the plug-in's functions, on either back end, on a store in which others write and which they take
// away meanwhile. Every call has to be answered, and the store to be sound afterwards.

namespace {

using namespace orlocal;

constexpr std::size_t kMostCalls = 60;

constexpr const char* kTypes[] = {"event",    "reminder", "calendar", "reminderlist",   "task",
                                  "attendee", "alarm",    "Event",    "recurrencerule", "nonsense"};
constexpr const char* kProperties[] = {"uid",
                                       "title",
                                       "notes",
                                       "location",
                                       "url",
                                       "startdate",
                                       "enddate",
                                       "isallday",
                                       "calendartitle",
                                       "calendaruid",
                                       "duedate",
                                       "completeddate",
                                       "iscompleted",
                                       "priority",
                                       "color",
                                       "absolutetrigger",
                                       "relativetrigger",
                                       "action",
                                       "emailaddress",
                                       "sound",
                                       "occurrence",
                                       "externaluid",
                                       "isdetached",
                                       "isrecurring",
                                       "modifieddate",
                                       "timezone",
                                       "attendeecount",
                                       "hasattendees",
                                       "hasalarms",
                                       "nextalarmdate",
                                       "datestamp",
                                       "email",
                                       "address",
                                       "commonname",
                                       "status",
                                       "role",
                                       "type",
                                       "recurrencetype",
                                       "recurrenceinterval",
                                       "firstdayoftheweek",
                                       "daysoftheweek",
                                       "daysofthemonth",
                                       "monthsoftheyear",
                                       "weeksoftheyear",
                                       "nthweekdaysofthemonth",
                                       "recurrenceend",
                                       "occurrencecount",
                                       "usesenddate",
                                       "hasend",
                                       "iseditable",
                                       "issubscribed",
                                       "allowsmodification",
                                       "Title",
                                       "nonsense"};
constexpr const char* kSpans[] = {"this", "future", "all", "", "Future", "nonsense"};
constexpr const char* kActions[] = {"display", "sound", "email", "procedure", "", "nonsense"};
constexpr const char* kStates[] = {"", "incomplete", "completed", "incompleted", "all", "nonsense"};
constexpr const char* kFrequencies[] = {"daily", "weekly", "monthly", "yearly", "hourly", ""};
constexpr const char* kTitles[] = {"",    "Choir",   "Calendar", "Reminders", "Choir\rCalendar",
                                   "all", "Nowhere", "Choir\n"};
constexpr const char* kLists[] = {"",           "1", "2\r4\r6", "31",   "-1",
                                  "1\r31\r-31", "0", "13",      "x\r2", "99999999999999999999"};
constexpr const char* kValues[] = {"True",
                                   "False",
                                   "none",
                                   "high",
                                   "255 128 0",
                                   "1 2",
                                   "-900",
                                   "display",
                                   "",
                                   "mailto:ann@example.org",
                                   "one line\rand another",
                                   "\x1b[31m",
                                   "\u202eback\u2069"};
constexpr const char* kDateTexts[] = {
    "2026-11-02 09:00:00",       "2026-11-02", "2026-10-25 02:30:00", "2027-03-28 02:30:00",   "2026-02-30", "9:15",
    "2026-11-02 09:00:00 +0100", "0001-01-01", "4000-12-31 23:59:59", "1999-12-31 24:00:00.5", "tomorrow",   "?"};
constexpr std::int16_t kYears[] = {2026, 2027, 2025, 2030, 1999, 1970, 1, 4000, 0, -1, 2100};
constexpr double kFractions[] = {0.5, -0.5, 1e300, -1e300, 2147483647.5, 1e-300};
constexpr std::int64_t kNumbers[] = {
    1, 2, 0, -1, 3, 5, -900, 60, 31, 1000, 2147483647, -2147483648LL, std::numeric_limits<std::int64_t>::max()};

constexpr const char* kSeed =
    "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Orlocal//Seed//EN\r\nX-WR-CALNAME:Choir\r\n"
    "BEGIN:VEVENT\r\nUID:series@example.org\r\nDTSTAMP:20261001T080000Z\r\nDTSTART;TZID=Europe/"
    "Berlin:20261102T190000\r\n"
    "DTEND;TZID=Europe/Berlin:20261102T210000\r\nRRULE:FREQ=WEEKLY;COUNT=30\r\nEXDATE;TZID=Europe/"
    "Berlin:20261109T190000\r\n"
    "SUMMARY:Rehearsal\r\nBEGIN:VALARM\r\nACTION:DISPLAY\r\nTRIGGER:-PT15M\r\nDESCRIPTION:Soon\r\nEND:VALARM\r\nEND:"
    "VEVENT\r\n"
    "BEGIN:VEVENT\r\nUID:series@example.org\r\nDTSTAMP:20261001T080000Z\r\nRECURRENCE-ID;TZID=Europe/"
    "Berlin:20261116T190000\r\n"
    "DTSTART;TZID=Europe/Berlin:20261117T200000\r\nDTEND;TZID=Europe/"
    "Berlin:20261117T210000\r\nSUMMARY:Moved\r\nEND:VEVENT\r\n"
    "BEGIN:VEVENT\r\nUID:day@example.org\r\nDTSTAMP:20261001T080000Z\r\nDTSTART;VALUE=DATE:20261105\r\nRRULE:FREQ="
    "MONTHLY\r\n"
    "SUMMARY:Whole day\r\nEND:VEVENT\r\n"
    "BEGIN:VEVENT\r\nUID:meeting@example.org\r\nDTSTAMP:20261001T080000Z\r\nDTSTART:20261103T090000Z\r\nDURATION:"
    "PT1H\r\n"
    "SUMMARY:Meeting\r\nORGANIZER:mailto:ann@example.org\r\nATTENDEE;CN=Cem:mailto:cem@example.org\r\nEND:VEVENT\r\n"
    "BEGIN:VTODO\r\nUID:plants@example.org\r\nDTSTAMP:20261001T080000Z\r\nDTSTART;TZID=Europe/"
    "Berlin:20261101T180000\r\n"
    "DUE;TZID=Europe/Berlin:20261101T180000\r\nRRULE:FREQ=DAILY;INTERVAL=2;COUNT=9\r\nSUMMARY:Water the "
    "plants\r\nEND:VTODO\r\n"
    "BEGIN:VTODO\r\nUID:stamps@example.org\r\nDTSTAMP:20261001T080000Z\r\nSUMMARY:Buy stamps\r\nEND:VTODO\r\n"
    "END:VCALENDAR\r\n";

/// What others write: an event that is new, and changes of those that the seed has.
constexpr const char* kOutside[] = {
    "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Orlocal//Seed//EN\r\nX-WR-CALNAME:Choir\r\nBEGIN:VEVENT\r\n"
    "UID:new@example.org\r\nDTSTAMP:20261001T080000Z\r\nDTSTART:20261104T090000Z\r\nRRULE:FREQ=DAILY;COUNT=3\r\n"
    "SUMMARY:New\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n",
    "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Orlocal//Seed//EN\r\nX-WR-CALNAME:Choir\r\nBEGIN:VEVENT\r\n"
    "UID:series@example.org\r\nDTSTAMP:20261002T080000Z\r\nSEQUENCE:3\r\nDTSTART;TZID=Europe/Berlin:20261103T180000\r\n"
    "RRULE:FREQ=DAILY;COUNT=4\r\nSUMMARY:Other rule\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n",
    "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Orlocal//Seed//EN\r\nX-WR-CALNAME:Other\r\nBEGIN:VTODO\r\n"
    "UID:stamps@example.org\r\nDTSTAMP:20261002T080000Z\r\nSUMMARY:Stamps\r\nSTATUS:COMPLETED\r\n"
    "COMPLETED:20261101T080000Z\r\nEND:VTODO\r\nEND:VCALENDAR\r\n"};

/// How the arguments of a function are meant, a letter each; what the letters stand for is in `Caller::push`.
struct Meant {
  std::int16_t id;
  const char* arguments;
};
constexpr Meant kMeant[] = {{151, "t"},      {152, "t"},  {153, "tn"},  {154, "tud"}, {155, "tpp"},  {156, "ddcu"},
                            {157, "csd"},    {158, "c"},  {159, "tpv"}, {160, "t"},   {161, "tw"},   {162, "fnlllDn"},
                            {163, "tdavnv"}, {164, "tn"}, {165, ""},    {166, "t"},   {167, "tudw"}, {168, "t"}};

/// The store of one input, and what others do to it.
class SeededStore {
 public:
  SeededStore() {
    std::error_code ignored;
    std::filesystem::copy_file(seed(), file(), ignored);
    if (ignored) std::abort();
    ::setenv("ORLOCAL_STORE", file().c_str(), 1);
    ::setenv("ORLOCAL_WAIT", "0", 1);
  }

  std::filesystem::path file() const { return m_folder.file("calendar.db"); }
  std::filesystem::path other() const { return m_folder.file("other.db"); }

  void takeAway() const {
    std::error_code ignored;
    for (const char* end : {"", "-wal", "-shm"}) std::filesystem::remove(file().string() + end, ignored);
    // So that who has it open looks whether it is still there.
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  void write(const char* text) const {
    store::StoreOptions options;
    options.file = file();
    options.busyTimeout = {};
    if (const auto store = store::CalendarStore::open(std::move(options))) {
      (void)store::importCalendarText(**store, text, "outside.ics");
    }
  }

 private:
  static const std::filesystem::path& seed() {
    static const fuzz::TemporaryFolder folder;
    static const std::filesystem::path made = [] {
      const auto store = fuzz::opened(folder.file("seed.db"));
      if (!store::importCalendarText(*store, kSeed, "seed.ics")) std::abort();
      store->close();
      return folder.file("seed.db");
    }();
    return made;
  }

  fuzz::TemporaryFolder m_folder;
};

/// Calls functions with arguments that the input chooses.
class Caller {
 public:
  explicit Caller(fuzz::Choices& choices) : m_choices(choices) {
    setPlatform(makeSystemPlatform());
    g_bUseEK = m_choices.below(2) == 0;
    g_sharedEKFunctions = g_bUseEK ? iCalEKFunctions::sharedICalFunctions() : nullptr;
    g_sharedFunctions = g_bUseEK ? nullptr : iCalFunctions::sharedICalFunctions();
    // The one instance of before lets go of the store of before.
    if (g_bUseEK) g_sharedEKFunctions->init();
    if (!g_bUseEK) g_sharedFunctions->init();
    error = &m_error;
  }
  ~Caller() {
    if (g_bUseEK) g_sharedEKFunctions->releaseItems();
    if (!g_bUseEK) g_sharedFunctions->releaseItems();
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
    for (const Meant& row : kMeant) meant = row.id == function.id ? row.arguments : meant;
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
      if (function.function(function.id, nullptr, arguments, result) != 0) std::abort();
      if (function.id != kGetProperty) return;
      if (auto text = textOf(hostCall<fmx::FM_Data_GetAsText>(result))) remember(*std::move(text));
    } catch (const Exception& exception) {
      if (isMeant(exception, function, HostArguments(arguments))) return;
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
    if (text == kErrorText) return;
    constexpr std::size_t kKept = 16;
    m_answers.push_front(std::move(text));
    if (m_answers.size() > kKept) m_answers.pop_back();
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
    if (shape == 0) return assignText(value, "");
    if (shape == 1) return assignText(value, m_choices.oneOf(kDateTexts));
    if (shape == 2) return assignNumber(value);
    HostDateTime moment;
    const auto part = [this](std::size_t count) { return static_cast<std::int16_t>(m_choices.below(count)); };
    const std::int16_t year = shape == 3 ? m_choices.oneOf(kYears) : kYears[m_choices.below(2)];
    const std::int16_t month = part(14);
    moment.setDate(year, month, part(33));
    const std::int16_t hour = part(26);
    moment.setTime(hour, part(62), 0);
    if (shape == 4) return setDate(value, moment);
    setTimeStamp(value, moment);
  }

  static constexpr char kValueKinds[] = {'d', 'n', 'u', 'x', 'y'};
  static constexpr std::int16_t kGetProperty = 155, kRemoveAlarm = 164;

  fuzz::Choices& m_choices;
  orlo_PluginError m_error;
  std::deque<std::string> m_answers;  ///< the newest first
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > 4'096) return 0;
  const SeededStore seeded;
  fuzz::Choices choices(data, size);
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
  fuzz::expectTheSameItemsAgain(*fuzz::opened(seeded.file()), seeded.other());
  return 0;
}
