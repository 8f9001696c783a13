#include <algorithm>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "base/translation.h"
#include "base/try.h"
#include "host/commands/alarms/alarm_watch.h"
#include "host/commands/command_line/change_wait.h"
#include "host/commands/command_line/child_process.h"
#include "host/commands/command_line/command.h"
#include "host/commands/command_line/interruption.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/command_line/terminal_text.h"
#include "host/commands/command_line/trouble.h"
#include "host/commands/scripting/plugin_host.h"
#include "host/commands/watching/store_news.h"
#include "host/commands/watching/watching_commands.h"
#include "host/fmwrapper/unicode.h"
#include "host/plugin/update_script.h"

namespace orlocal::host {
namespace {

struct WatchWords {
  std::string file, script, since;
  bool ends = false;
  bool alarms = false, once = false;
  std::vector<std::string> command;
};

/// The word of a command that stands for the script's parameter.
constexpr std::string_view kParameter = "{}";

/// Says when changes can only be noticed by looking for them: once, and once more after it was better meanwhile.
class SlowNotice {
 public:
  void tell(const store::ChangeSignal& signal, std::ostream& err) {
    const auto& trouble = signal.trouble();
    if (trouble && !m_told) { tellTrouble(err, trouble->message); }
    m_told = trouble.has_value();
  }

 private:
  bool m_told = false;
};

std::string objectionToSince(const std::string& words) {
  if (sinceFromWords(words, store::now(), store::Zone::ofUser())) { return {}; }
  return tr("\"{}\" says no time; write 2h, 3d, yesterday, \"2026-11-02 08:00\", or a position that --json gave",
            words);
}

Result<StoreNews> newsFrom(store::CalendarStore& store, const std::string& words, const store::Zone& viewer,
                           std::ostream& err) {
  const auto since = sinceFromWords(words, store::now(), viewer);
  if (!since) { return StoreNews::fromNowOn(store); }
  ORLOCAL_TRY(StoreNews news, StoreNews::since(store, *since));
  ORLOCAL_TRY(const bool whole, news.isWhole());
  if (!whole) { err << tr("orlocal: the log of changes does not reach back so far; what it still knows is shown\n"); }
  return news;
}

/// Prints what others do to the store, until interrupted; with `--since` first what they did.
Result<ExitStatus> watchStore(const WatchWords& words, CommandContext& context) {
  const Interruption interruption;
  ORLOCAL_TRY(const auto store, openOrMakeUserStore());
  const store::Zone viewer = store::Zone::ofUser();
  // First the ear, then the place in the log: what is committed in between is heard.
  ORLOCAL_TRY(const auto signal, store->listen());
  ORLOCAL_TRY(StoreNews news, newsFrom(*store, words.since, viewer, context.streams.err));
  std::ostream& out = context.streams.out;
  const auto tell = [&](bool past) -> Status {
    std::optional<CalendarNames> names;
    return news.tell([&](const News& each) {
      if (!context.options.json) {
        out << (past ? pastLineOf(each, viewer) : lineOf(each, viewer)) << std::endl;
        return;
      }
      if (!names) { names = CalendarNames::of(*store).value_or(CalendarNames()); }
      out << jsonLineOf(each, *names, viewer) << std::endl;
    });
  };
  if (!words.since.empty()) { ORLOCAL_CHECK(tell(true)); }
  if (words.ends) { return ExitStatus::kDone; }
  context.streams.err << tr("orlocal: watching the calendars; Ctrl-C ends it\n") << std::flush;
  SlowNotice slow;
  for (auto woken = Woken::kByChange; woken != Woken::kByInterruption;) {
    slow.tell(*signal, context.streams.err);
    ORLOCAL_CHECK(tell(false));
    ORLOCAL_TRY(woken, waitForChange(*signal));
  }
  return ExitStatus::kDone;
}

/// A host with one script: what the plug-in starts is run.
class ScriptWatch {
 public:
  ScriptWatch(const WatchWords& words, CommandContext& context) : m_words(words), m_context(context) {}
  ~ScriptWatch() { Registry::instance().setScriptHook(nullptr); }
  ScriptWatch(const ScriptWatch&) = delete;
  ScriptWatch& operator=(const ScriptWatch&) = delete;

  Result<ExitStatus> run() {
    const Interruption interruption;
    ORLOCAL_TRY(const auto store, openOrMakeUserStore());
    ORLOCAL_TRY(const auto signal, store->listen());
    ORLOCAL_TRY(const auto workbench, Workbench::open(m_context, Workbench::Need::kPlugin));
    Plugin& plugin = *workbench->plugin();
    Registry::instance().setScriptHook([this](const ScriptStart& start) { return runScript(start); });
    ORLOCAL_CHECK(registerUpdateScript(plugin, m_words.file, m_words.script));
    m_context.streams.err << tr("orlocal: watching the calendars for {}; Ctrl-C ends it\n", printable(m_words.script))
                          << std::flush;
    return serve(plugin, *signal);
  }

 private:
  Result<ExitStatus> serve(Plugin& plugin, store::ChangeSignal& signal) {
    SlowNotice slow;
    // The bell rings after the commit, and the plug-in looks for commits whenever it gets idle time.
    for (auto woken = Woken::kByChange; woken != Woken::kByInterruption;) {
      slow.tell(signal, m_context.streams.err);
      if (const auto idle = plugin.idle(); !idle) { tellTrouble(m_context.streams.err, idle.error().message); }
      ORLOCAL_TRY(woken, waitForChange(signal));
    }
    return ExitStatus::kDone;
  }

  fmx::ErrorCode runScript(const ScriptStart& start) {
    if (Interruption::flag()) { return Registry::kRefused; }
    const std::string parameter = start.parameter ? start.parameter->utf8() : std::string();
    if (m_words.command.empty()) {
      print(start, parameter);
      return 0;
    }
    std::vector<std::string> words = m_words.command;
    std::replace(words.begin(), words.end(), std::string(kParameter), parameter);
    const Result<ChildResult> result = runVisibly(words);
    if (result && result->succeeded()) { return 0; }
    tellTrouble(m_context.streams.err, fmt::format("{} {} ({})", words.front(), endingOf(result), parameter));
    return Registry::kRefused;
  }

  void print(const ScriptStart& start, const std::string& parameter) {
    const std::string file = toUtf8(start.file);
    const std::string script = toUtf8(start.script);
    if (m_context.options.json) {
      const nlohmann::json line = {{"file", file}, {"script", script}, {"parameter", parameter}};
      m_context.streams.out << line.dump() << std::endl;
    } else {
      m_context.streams.out << fmt::format("{} / {}: {}", printable(file), printable(script), printable(parameter))
                            << std::endl;
    }
  }

  const WatchWords& m_words;
  CommandContext& m_context;
};

Result<ExitStatus> runWatch(const WatchWords& words, CommandContext& context) {
  if (words.alarms) { return watchAlarms({words.command, words.once}, context); }
  if (!words.script.empty()) { return ScriptWatch(words, context).run(); }
  if (words.command.empty()) { return watchStore(words, context); }
  tellTrouble(context.streams.err,
              tr("A command is run for each start of a script, or for each alarm; write --alarms, or "
                 "--file and --script, before it."));
  return ExitStatus::kUsage;
}

}  // namespace

void registerWatchCommand(CommandLine& line) {
  const auto words = std::make_shared<WatchWords>();
  CLI::App& watch =
      line.add("watch",
               "Show what other programs change in the calendars, as it happens; with a script, do what a host\n"
               "does for a solution that has registered it; with --alarms, tell each alarm at its moment.",
               [words](CommandContext& context) { return runWatch(*words, context); });
  watch.footer(
      "  orlocal watch\n  orlocal watch --file Solution --script 'Calendar changed' -- notify-send {}\n"
      "  orlocal watch --alarms -- sh -c 'notify-send \"$ORLOCAL_ALARM_TITLE\"'");
  CLI::Option* file = watch.add_option("--file", words->file, "The file that holds the script, as the plug-in is told");
  CLI::Option* script = watch.add_option("--script", words->script, "The script to start for each change");
  file->type_name("FILE")->needs(script);
  script->type_name("SCRIPT")->needs(file);
  CLI::Option* since =
      watch.add_option("--since", words->since,
                       "First what was changed since then: 2h, 3d, yesterday, \"2026-11-02 08:00\", or a\n"
                       "position that --json gave");
  since->type_name("WHEN")->check(objectionToSince)->excludes(script);
  watch.add_flag("--until-now", words->ends, "Do not wait for more: with --since, the past alone")->needs(since);
  CLI::Option* alarms =
      watch.add_flag("--alarms", words->alarms, "Tell each alarm when it rings, whoever else watches")
          ->excludes(script)
          ->excludes(since);
  watch.add_flag("--once", words->once, "Tell the alarms that are due since the last time, and end")->needs(alarms);
  watch
      .add_option("command", words->command,
                  "After --: a command to run for each start or alarm; no shell reads it. A word {} stands for the\n"
                  "script's parameter (\"New …\", \"Updated …\" or \"Deleted …\" with an event's identifier), or for\n"
                  "the identifier of what the alarm is about, of which its input and ORLOCAL_ALARM_… say more")
      ->type_name("COMMAND");
}

}  // namespace orlocal::host
