#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "fakes/no_descriptor_left.h"
#include "host/fmwrapper/unicode.h"
#include "host/plugin/plugin.h"
#include "host/plugin/update_script.h"
#include "store/calendar_store.h"

// The built plug-in in a host, over a store that cannot be opened. Every function has to answer what it answers when
// the platform has nothing to give, and no exception may reach the host.

namespace orlocal::host {
namespace {

using ::testing::HasSubstr;

constexpr long kStoreRefused = 9998;
constexpr const char* kFailed = "!!ERROR!!";

/// A call with its arguments, the code that it leaves and its result.
struct Step {
  const char* function;
  std::vector<const char*> arguments;
  long code;
  const char* result;
};

Step worked(const char* function, std::vector<const char*> arguments, const char* result = "0") {
  return {function, std::move(arguments), 0, result};
}
Step failed(long code, const char* function, std::vector<const char*> arguments) {
  return {function, std::move(arguments), code, kFailed};
}

std::vector<Step> stepsOfTheCurrentBackEnd() {
  return {
      worked("Orlo_Version", {}, "3.0.0.1"),
      worked("Orlo_GetItemCountForType", {"calendar"}),
      worked("Orlo_GetItemCountForType", {"reminderlist"}),
      failed(9054, "Orlo_GetItemCountForType", {"event"}),
      failed(9055, "Orlo_GetItemCountForType", {"reminder"}),
      failed(9056, "Orlo_GetItemCountForType", {"attendee"}),
      failed(9057, "Orlo_GetItemCountForType", {"alarm"}),
      failed(9002, "Orlo_OpenItemAt", {"calendar", "1"}),
      failed(9002, "Orlo_OpenItemAt", {"reminderlist", "1"}),
      failed(9077, "Orlo_OpenItemAt", {"event", "1"}),
      failed(9002, "Orlo_OpenItemAt", {"task", "1"}),
      failed(9002, "Orlo_OpenItemAt", {"reminder", "1"}),
      failed(9000, "Orlo_OpenItemAt", {"attendee", "1"}),
      failed(9000, "Orlo_OpenItemAt", {"alarm", "1"}),
      failed(9013, "Orlo_OpenItemWithUID", {"calendar", "x"}),
      failed(9013, "Orlo_OpenItemWithUID", {"reminderlist", "x"}),
      failed(9001, "Orlo_OpenItemWithUID", {"event", "x"}),
      failed(9001, "Orlo_OpenItemWithUID", {"event", "x", "2026-11-02 09:00:00"}),
      failed(9059, "Orlo_OpenItemWithUID", {"task", "x"}),
      failed(9059, "Orlo_OpenItemWithUID", {"reminder", "x"}),
      failed(9058, "Orlo_CalOpenCalendarWithTitle", {"Calendar"}),
      failed(9004, "Orlo_EventsFetch", {"", "", "", ""}),
      failed(9013, "Orlo_EventsFetch", {"", "", "Calendar", ""}),
      failed(9054, "Orlo_GetItemCountForType", {"event"}),
      failed(9004, "Orlo_RemindersFetch", {"", "", ""}),
      failed(9004, "Orlo_RemindersFetch", {"", "incomplete", ""}),
      failed(9013, "Orlo_RemindersFetch", {"Reminders", "", ""}),
      failed(9055, "Orlo_GetItemCountForType", {"reminder"}),
      failed(9036, "Orlo_RemoveItem", {"calendar", "x", "", ""}),
      failed(9036, "Orlo_RemoveItem", {"reminderlist", "x", "", ""}),
      failed(9035, "Orlo_RemoveItem", {"reminder", "x", "", ""}),
      failed(9034, "Orlo_RemoveItem", {"event", "x", "", "this"}),
      worked("Orlo_NewItem", {"calendar"}),
      worked("Orlo_SetProperty", {"calendar", "title", "Work"}),
      worked("Orlo_GetProperty", {"calendar", "title"}, "Work"),
      worked("Orlo_GetProperty", {"calendar", "uid"}, ""),
      failed(9017, "Orlo_SaveItem", {"calendar"}),
      worked("Orlo_NewItem", {"reminderlist"}),
      failed(9017, "Orlo_SaveItem", {"reminderlist"}),
      worked("Orlo_NewItem", {"event"}),
      worked("Orlo_SetProperty", {"event", "title", "Review"}),
      worked("Orlo_SetProperty", {"event", "startdate", "2026-11-02 09:00:00"}),
      worked("Orlo_SetProperty", {"event", "enddate", "2026-11-02 10:00:00"}),
      failed(9013, "Orlo_SetProperty", {"event", "calendartitle", "Calendar"}),
      failed(9013, "Orlo_SetProperty", {"event", "calendaruid", "x"}),
      worked("Orlo_GetProperty", {"event", "title"}, "Review"),
      worked("Orlo_GetProperty", {"event", "calendartitle"}, ""),
      worked("Orlo_AddRecurrence", {"weekly", "1", "", "", "", "", ""}),
      worked("Orlo_GetProperty", {"recurrencerule", "recurrencetype"}, "weekly"),
      worked("Orlo_RemoveRecurrence", {}),
      worked("Orlo_AddAlarm", {"event", "", "display", "", "-900", ""}),
      worked("Orlo_OpenItemAt", {"alarm", "1"}),
      failed(9002, "Orlo_OpenItemAt", {"attendee", "1"}),
      worked("Orlo_RemoveAllAlarmsFrom", {"event"}),
      failed(9018, "Orlo_SaveItem", {"event", "this"}),
      worked("Orlo_NewItem", {"reminder"}),
      worked("Orlo_SetProperty", {"reminder", "title", "Water the plants"}),
      worked("Orlo_AddAlarm", {"reminder", "", "display", "", "-900", ""}),
      worked("Orlo_RemoveAlarm", {"reminder", "1"}),
      failed(9019, "Orlo_SaveItem", {"reminder"}),
  };
}

std::vector<Step> stepsOfTheOlderBackEnd() {
  return {
      worked("Orlo_Version", {}, "3.0.0.1"),
      worked("Orlo_GetItemCountForType", {"calendar"}),
      failed(9000, "Orlo_GetItemCountForType", {"event"}),
      failed(9000, "Orlo_GetItemCountForType", {"task"}),
      failed(9000, "Orlo_GetItemCountForType", {"attendee"}),
      failed(9016, "Orlo_GetItemCountForType", {"alarm"}),
      failed(9002, "Orlo_OpenItemAt", {"calendar", "1"}),
      worked("Orlo_OpenItemAt", {"reminderlist", "1"}),
      failed(9000, "Orlo_OpenItemAt", {"event", "1"}),
      failed(9002, "Orlo_OpenItemAt", {"task", "1"}),
      failed(9000, "Orlo_OpenItemAt", {"attendee", "1"}),
      failed(9016, "Orlo_OpenItemAt", {"alarm", "1"}),
      failed(9001, "Orlo_OpenItemWithUID", {"calendar", "x"}),
      failed(9001, "Orlo_OpenItemWithUID", {"event", "x"}),
      failed(9001, "Orlo_OpenItemWithUID", {"event", "x", "2026-11-02 09:00:00"}),
      failed(9001, "Orlo_OpenItemWithUID", {"task", "x"}),
      failed(9001, "Orlo_CalOpenCalendarWithTitle", {"Calendar"}),
      failed(9004, "Orlo_EventsFetch", {"", "", "", ""}),
      failed(9004, "Orlo_EventsFetch", {"", "", "all", "x"}),
      failed(9013, "Orlo_EventsFetch", {"", "", "Calendar", ""}),
      failed(9004, "Orlo_RemindersFetch", {"", "", ""}),
      failed(9013, "Orlo_RemindersFetch", {"Reminders", "incomplete", ""}),
      failed(9001, "Orlo_RemoveItem", {"calendar", "x", "", ""}),
      failed(9001, "Orlo_RemoveItem", {"task", "x", "", ""}),
      failed(9001, "Orlo_RemoveItem", {"event", "x", "", "all"}),
      worked("Orlo_NewItem", {"event"}),
      worked("Orlo_SetProperty", {"event", "title", "Review"}),
      failed(9013, "Orlo_SetProperty", {"event", "calendartitle", "Calendar"}),
      failed(9013, "Orlo_SetProperty", {"event", "calendaruid", "x"}),
      worked("Orlo_GetProperty", {"event", "title"}, "Review"),
      worked("Orlo_AddRecurrence", {"weekly", "1", "", "", "", "", ""}),
      worked("Orlo_RemoveRecurrence", {}),
      failed(9016, "Orlo_AddAlarm", {"event", "", "display", "", "-900", ""}),
      failed(9016, "Orlo_RemoveAlarm", {"event", "1"}),
      failed(9016, "Orlo_RemoveAllAlarmsFrom", {"event"}),
      failed(kStoreRefused, "Orlo_SaveItem", {"event", "this"}),
      worked("Orlo_NewItem", {"task"}),
      worked("Orlo_SetProperty", {"task", "title", "Water the plants"}),
      worked("Orlo_NewItem", {"calendar"}),
      worked("Orlo_SetProperty", {"calendar", "title", "Work"}),
      failed(kStoreRefused, "Orlo_SaveItem", {"calendar"}),
  };
}

/// Calls the plug-in as a host does, and notes on `out` what was not as it has to be.
class Caller {
 public:
  Caller(Plugin& plugin, std::ostream& out) : m_plugin(plugin), m_out(out) {}

  void perform(const std::vector<Step>& steps) {
    for (const Step& step : steps) {
      const std::string result = call(step.function, step.arguments);
      const std::string code = call("Orlo_GetLastError", {"number"});
      if (result != step.result || code != std::to_string(step.code)) { note(step, result, code); }
      if (const auto idle = m_plugin.idle(); !idle) { m_out << "idle: " << idle.error().message << '\n'; }
    }
  }

  std::string call(const char* name, const std::vector<const char*>& words) {
    const auto function = Registry::instance().function(toUtf16(name));
    if (!function) { return "there is no such function"; }
    std::vector<Value> arguments;
    for (const char* word : words) { arguments.push_back(Value::ofUtf8(word)); }
    const Result<Value> result = callFunction(*function, arguments);
    return result ? result->utf8() : result.error().message;
  }

 private:
  void note(const Step& step, const std::string& result, const std::string& code) {
    m_out << step.function << " (";
    for (const char* argument : step.arguments) { m_out << ' ' << '"' << argument << '"'; }
    m_out << " ): " << result << " and " << code << ", not " << step.result << " and " << step.code << '\n';
  }

  Plugin& m_plugin;
  std::ostream& m_out;
};

/// What keeps the store in `folder` from being opened, and who is the user then. None when that cannot be brought about
/// here.
struct Situation {
  const char* name;
  bool asAnotherUser;
  std::function<void(const std::filesystem::path& folder)> bringAbout;
  const char* reason;  ///< in the log
};

void name(const std::filesystem::path& store) { ::setenv("ORLOCAL_STORE", store.c_str(), 1); }

void makeStore(const std::filesystem::path& file) {
  store::StoreOptions options;
  options.file = file;
  ASSERT_TRUE(store::CalendarStore::open(std::move(options)));
}

const std::vector<Situation>& situations() {
  static const std::vector<Situation> all = {
      {"NoHomeAndNoSetting", false,
       [](const auto&) {
         for (const char* setting : {"ORLOCAL_STORE", "XDG_DATA_HOME", "HOME"}) { ::unsetenv(setting); }
       },
       "nothing says where the calendar store is"},
      {"FolderThatCannotBeMade", false,
       [](const auto& folder) {
         std::ofstream(folder / "text") << "no folder";
         name(folder / "text" / "below" / "calendar.db");
       },
       "cannot be made: Not a directory"},
      {"FolderOfAnotherUser", true,
       [](const auto& folder) {
         std::filesystem::create_directory(folder / "theirs");
         ::chmod((folder / "theirs").c_str(), 0700);
         name(folder / "theirs" / "below" / "calendar.db");
       },
       "cannot be made: Permission denied"},
      {"FileOfAnotherUser", true,
       [](const auto& folder) {
         makeStore(folder / "calendar.db");
         ::chmod((folder / "calendar.db").c_str(), 0600);
         name(folder / "calendar.db");
       },
       "cannot be opened"},
      {"FileInAFolderOfAnotherUser", true,
       [](const auto& folder) {
         std::filesystem::create_directory(folder / "theirs");
         makeStore(folder / "theirs" / "calendar.db");
         ::chmod((folder / "theirs").c_str(), 0700);
         name(folder / "theirs" / "calendar.db");
       },
       "cannot be made or reached: Permission denied"},
      {"Garbage", false,
       [](const auto& folder) {
         std::ofstream(folder / "calendar.db") << std::string(10'000, 'x');
         name(folder / "calendar.db");
       },
       "is no calendar store"},
      {"NewerStore", false,
       [](const auto& folder) {
         makeStore(folder / "calendar.db");
         // The user's version of the file's header (https://sqlite.org/fileformat.html, 1.3).
         std::fstream file(folder / "calendar.db", std::ios::in | std::ios::out | std::ios::binary);
         file.seekp(60).write("\0\0\x7f\xff", 4);
         name(folder / "calendar.db");
       },
       "a newer program"},
      {"FolderInItsPlace", false,
       [](const auto& folder) {
         std::filesystem::create_directory(folder / "calendar.db");
         name(folder / "calendar.db");
       },
       "is a folder"},
  };
  return all;
}

enum class BackEnd { kCurrent, kOlder };

class UnusableStore : public testing::TestWithParam<std::tuple<std::size_t, BackEnd>> {
 protected:
  UnusableStore() {
    std::string pattern = (std::filesystem::temp_directory_path() / "orlocal-unusable-XXXXXX").string();
    folder = ::mkdtemp(pattern.data());
    ::chmod(folder.c_str(), 0755);
  }
  ~UnusableStore() override {
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
  }

  const Situation& situation() const { return situations()[std::get<0>(GetParam())]; }
  BackEnd backEnd() const { return std::get<1>(GetParam()); }

  struct Outcome {
    std::string notes;
    std::string log;
  };

  /// `work` in a process that has the plug-in to itself: it chooses its back end once, and forgets its store only when
  /// it ends.
  Outcome inAProcess(const std::function<void(std::ostream& notes)>& work) {
    const pid_t child = ::fork();
    if (child == 0) {
      std::ofstream notes(folder / "notes");
      const int log = ::open((folder / "log").c_str(), O_CREAT | O_WRONLY | O_APPEND | O_CLOEXEC, 0666);
      ::dup2(log, STDERR_FILENO);
      work(notes);
      notes << "ended" << std::flush;
      ::_exit(0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "the process died";
    return {contentOf("notes"), contentOf("log")};
  }

  std::string contentOf(const char* file) const {
    std::ifstream stream(folder / file);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
  }

  std::filesystem::path folder;
};

TEST_P(UnusableStore, IsAnsweredWithTheCodesOfAPlatformThatHasNothing) {
  if (situation().asAnotherUser && ::geteuid() != 0) { GTEST_SKIP() << "only root can become another user"; }
  const Outcome outcome = inAProcess([this](std::ostream& notes) {
    const bool current = backEnd() == BackEnd::kCurrent;
    ::setenv("ORLOCAL_SYSTEM_MINOR", current ? "15" : "7", 1);
    situation().bringAbout(folder);
    auto plugin = Plugin::load(ORLOCAL_PLUGIN);
    if (!plugin) {
      notes << plugin.error().message;
      return;
    }
    constexpr uid_t kNobody = 65534;
    if (situation().asAnotherUser && ::setuid(kNobody) != 0) { notes << "cannot become another user\n"; }
    Caller caller(**plugin, notes);
    caller.perform(current ? stepsOfTheCurrentBackEnd() : stepsOfTheOlderBackEnd());
    if (!current) {
      caller.call("Orlo_NewItem", {"calendar"});
      caller.call("Orlo_SetProperty", {"calendar", "title", "Work"});
      caller.call("Orlo_SaveItem", {"calendar"});
      const std::string words = caller.call("Orlo_GetLastError", {});
      if (words.find(situation().reason) == std::string::npos) { notes << "the last error is: " << words << '\n'; }
    }
    const auto registered = registerUpdateScript(**plugin, "Solution", "Calendar changed");
    if (registered) { notes << "there is nothing to follow, and nobody says so\n"; }
    if (!registered && registered.error().message.find("System Error CalendarStoreException") == std::string::npos) {
      notes << registered.error().message << '\n';
    }
    if (const auto idle = (*plugin)->idle(); !idle) { notes << idle.error().message << '\n'; }
    if (const auto end = (*plugin)->shutdown(); !end) { notes << end.error().message << '\n'; }
  });
  EXPECT_EQ(outcome.notes, "ended");
  EXPECT_THAT(outcome.log, HasSubstr(situation().reason));
  EXPECT_EQ(std::count(outcome.log.begin(), outcome.log.end(), '\n'), 1) << "once per cause:\n" << outcome.log;
}

INSTANTIATE_TEST_SUITE_P(Situations, UnusableStore,
                         testing::Combine(testing::Range(std::size_t{0}, situations().size()),
                                          testing::Values(BackEnd::kCurrent, BackEnd::kOlder)),
                         [](const auto& asked) {
                           return std::string(situations()[std::get<0>(asked.param)].name) +
                                  (std::get<1>(asked.param) == BackEnd::kCurrent ? "Current" : "Older");
                         });

/// A process that may open no other file.
class NoDescriptor : public UnusableStore {};

TEST_P(NoDescriptor, LeavesNoExceptionAndNoScript) {
  if (fakes::kSanitizersNeedDescriptors) { GTEST_SKIP() << "the sanitizers need descriptors of their own"; }
  const Outcome outcome = inAProcess([this](std::ostream& notes) {
    name(folder / "calendar.db");
    auto plugin = Plugin::load(ORLOCAL_PLUGIN);
    if (!plugin) {
      notes << plugin.error().message;
      return;
    }
    const fakes::NoDescriptorLeft none;
    if (const auto idle = (*plugin)->idle(); !idle) { notes << "idle: " << idle.error().message << '\n'; }
    const auto registered = registerUpdateScript(**plugin, "Solution", "Calendar changed");
    if (registered || registered.error().message.find("System Error RunLoopException") == std::string::npos) {
      notes << "registering: " << (registered ? "worked" : registered.error().message) << '\n';
    }
    Caller(**plugin, notes).perform(stepsOfTheCurrentBackEnd());
  });
  EXPECT_EQ(outcome.notes, "ended");
}

INSTANTIATE_TEST_SUITE_P(OfTheCurrentBackEnd, NoDescriptor,
                         testing::Values(std::tuple(std::size_t{0}, BackEnd::kCurrent)));

}  // namespace
}  // namespace orlocal::host
