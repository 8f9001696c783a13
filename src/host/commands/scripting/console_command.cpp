#include <algorithm>
#include <atomic>
#include <csignal>
#include <memory>
#include <ostream>

#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"
#include "host/calc/rendering.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/scripting/commands_in_place.h"
#include "host/commands/scripting/plugin_host.h"
#include "host/commands/scripting/scripting_commands.h"
#include "host/console/console.h"
#include "host/console/edited_lines.h"
#include "host/console/plugin_words.h"
#include "host/fmwrapper/registry.h"
#include "host/fmwrapper/unicode.h"

namespace orlocal::host {

namespace {

/// The session whose calculation Ctrl-C ends.
std::atomic<calc::Session*> g_interruptible = nullptr;

void interruptSession(int) {
  if (calc::Session* session = g_interruptible.load(); session != nullptr) { session->interrupt(); }
}

/// Turns Ctrl-C from the program's end into the running calculation's, for as long as it lives.
class InterruptGuard {
 public:
  explicit InterruptGuard(calc::Session& session) {
    g_interruptible = &session;
    struct sigaction action {};
    action.sa_handler = interruptSession;
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGINT, &action, &m_before);
  }
  ~InterruptGuard() {
    ::sigaction(SIGINT, &m_before, nullptr);
    g_interruptible = nullptr;
  }
  InterruptGuard(const InterruptGuard&) = delete;
  InterruptGuard& operator=(const InterruptGuard&) = delete;

 private:
  struct sigaction m_before {};
};

/// Scripts that the plug-in asked for: the console has none to run, so it tells of them.
void tellScripts(std::ostream& out) {
  for (const ScriptStart& start : Registry::instance().takeScriptStarts()) {
    const std::string parameter = start.parameter ? tr(", parameter {}", start.parameter->utf8()) : "";
    out << calc::harmless(
               fmt::format("script {} of {} asked for{}", toUtf8(start.script), toUtf8(start.file), parameter))
        << '\n';
  }
}

void greet(CommandContext& context, Workbench& workbench) {
  if (Plugin* plugin = workbench.plugin()) {
    if (const auto name = plugin->getString(Plugin::kNameString)) {
      context.streams.out << fmt::format("{} with {} functions. ", calc::harmless(toUtf8(*name)),
                                         Registry::instance().functions().size());
    }
  }
  context.streams.out << tr("Type help for help.\n");
}

/// Titles of calendars and lists, as a calculation has them between quotes.
std::vector<Candidate> titlesInQuotes() {
  std::vector<Candidate> titles;
  const auto store = openUserStore();
  if (!store) { return titles; }
  const auto calendars = allCalendars(**store);
  if (!calendars) { return titles; }
  for (const auto& calendar : *calendars) {
    std::string quoted;
    for (const char c : calendar.title) {
      if (c == '"' || c == '\\') { quoted += '\\'; }
      quoted += c;
    }
    titles.push_back({quoted, calendar.title, false});
  }
  return titles;
}

std::vector<Candidate> textsFor(const TextPlace& place) {
  std::vector<Candidate> texts = keywordsFor(place);
  const auto kinds = kindsFor(place.function, place.argument);
  if (std::find(kinds.begin(), kinds.end(), WordKind::kTitle) != kinds.end()) {
    const auto titles = titlesInQuotes();
    texts.insert(texts.end(), titles.begin(), titles.end());
  }
  return texts;
}

/// What the tab key does: behind a dot there are commands, elsewhere calculations.
Completion completeEntry(std::string_view beforeCursor, Workbench& workbench, const CommandsInPlace& commands) {
  if (!beforeCursor.starts_with('.')) {
    return complete(beforeCursor, candidatesFor(workbench.library(), workbench.session().variableNames()), textsFor);
  }
  std::vector<Candidate> candidates;
  if (beforeCursor.find(' ') == std::string_view::npos) {
    for (const std::string& name : commands.names()) { candidates.push_back({name, "." + name, false}); }
  }
  return complete(beforeCursor.substr(1), candidates);
}

Result<ExitStatus> runConsole(CommandContext& context, Registration registerAll) {
  ORLOCAL_TRY(const auto opened, Workbench::open(context, Workbench::Need::kIfThere));
  Workbench& workbench = *opened;
  CommandsInPlace commands(context, registerAll);
  const bool typed = context.streams.inIsTerminal && context.streams.outIsTerminal;
  std::unique_ptr<LineSource> lines;
  if (typed) {
    greet(context, workbench);
    ORLOCAL_TRY(lines, EditedLines::open(historyFile(), [&](std::string_view beforeCursor) {
                  return completeEntry(beforeCursor, workbench, commands);
                }));
  } else {
    lines = std::make_unique<StreamLines>(context.streams.in);
  }
  // All the while: Ctrl-C may come between two lines, too, and then ends nothing.
  const std::unique_ptr<InterruptGuard> guard = typed ? std::make_unique<InterruptGuard>(workbench.session()) : nullptr;
  const auto evaluate = [&](std::string_view calculation) {
    auto outcome = workbench.evaluate(calculation);
    tellScripts(context.streams.out);
    return outcome;
  };
  Console console(
      {.lines = *lines,
       .out = context.streams.out,
       .colors = context.streams.colors,
       .library = workbench.library(),
       .evaluate = evaluate,
       .variables = [&workbench] { return workbench.session().variableNames(); },
       .lastError = PluginFunctions::lastError,
       .command = [&commands](std::string_view words) { return commands.run(words) == ExitStatus::kDone; }});
  const bool done = console.run();
  // A person has seen what went wrong; a pipe is told by the status.
  return done || typed ? ExitStatus::kDone : ExitStatus::kFailed;
}

}  // namespace

void registerConsole(CommandLine& line, Registration registerAll) {
  line.setDefault([registerAll](CommandContext& context) { return runConsole(context, registerAll); });
}

}  // namespace orlocal::host
