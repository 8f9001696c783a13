#include "host/commands/command_line/command.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <ostream>
#include <utility>

#include <CLI/CLI.hpp>

#include "base/settings.h"
#include "base/translation.h"
#include "host/commands/command_line/clock_setting.h"
#include "host/commands/command_line/help_text.h"
#include "host/commands/command_line/terminal_text.h"
#include "host/commands/command_line/trouble.h"
#include "host/commands/command_line/usage_error.h"

namespace orlocal::host {

const char* const CommandLine::kVersion = "orlocal " ORLOCAL_VERSION;

struct CommandLine::State {
  Streams streams;
  GlobalOptions options;
  CLI::App app{
      translatable("Calendars on the command line, and through the plug-in as a database host reads and changes them."),
      "orlocal"};
  std::vector<std::pair<CLI::App*, CommandBody>> commands;
  CommandBody standard;
  std::string group = "Commands";

  const CommandBody* chosen() const {
    // With a word after a command, both were parsed; the word was added later.
    const auto found =
        std::find_if(commands.rbegin(), commands.rend(), [](const auto& command) { return command.first->parsed(); });
    if (found != commands.rend()) { return &found->second; }
    return standard ? &standard : nullptr;
  }

  /// Of the command that the words named.
  void showHelp(std::ostream& out) const {
    const CommandGuide program = guideOf(app);
    const CommandGuide* named = findCommand(program, pathNamed(app));
    out << helpText(program, named != nullptr ? *named : program, terminalWidth(streams.outIsTerminal));
  }

  /// Colours where somebody asked for them, else on a terminal that can show them (https://no-color.org).
  bool wantsColors(const Settings& settings) const {
    const auto isSet = [](const char* variable) {
      const char* value = std::getenv(variable);
      return value != nullptr && *value != '\0';
    };
    const char* terminal = std::getenv("TERM");
    const bool able =
        streams.outIsTerminal && !isSet("NO_COLOR") && (terminal == nullptr || std::string_view(terminal) != "dumb");
    const auto set = settings.value(Setting::kColor);
    // The variable is for now, the file for always.
    const std::string when = options.color ? *options.color : (set && !isSet("NO_COLOR") ? set->text : "auto");
    return when == "always" || (when == "auto" && able);
  }

  /// The plug-in reads its settings from the environment, as it does in any host.
  void putOptionsInForce() {
    if (options.store) { ::setenv("ORLOCAL_STORE", options.store->c_str(), 1); }
    if (options.systemMinor) { ::setenv("ORLOCAL_SYSTEM_MINOR", options.systemMinor->c_str(), 1); }
    const Settings settings = Settings::ofUser();
    for (const auto& complaint : settings.complaints()) { tellTrouble(streams.err, complaint); }
    ::setenv(Settings::kToldVariable, "yes", 1);
    // What asks the system for the time, in this process and in those it starts, asks this variable.
    if (const auto zone = settings.value(Setting::kZone)) { ::setenv("TZ", zone->text.c_str(), 0); }
    // Scripts are those of a database host; this one starts what its own commands name.
    ::setenv("ORLOCAL_UPDATE_SCRIPT", "no", 0);
    streams.colors = wantsColors(settings);
  }
};

CommandLine::CommandLine(Streams streams, GlobalOptions given)
    : m_state(new State{.streams = streams, .options = std::move(given), .commands = {}, .standard = {}}) {
  CLI::App& app = m_state->app;
  GlobalOptions& options = m_state->options;
  app.fallthrough();
  app.require_subcommand(0, 1);
  app.set_help_flag("-h,--help", "Show this help");
  app.set_version_flag("--version", kVersion, "Show the version");
  app.add_option("--store", options.store, "The calendar store's file")->type_name("FILE");
  app.add_option("--system-minor", options.systemMinor,
                 "The system's minor version that the plug-in sees (7 and below: the legacy back end)")
      ->type_name("N");
  app.add_option("--host-version", options.hostVersion, "The extension version to announce")
      ->type_name("N")
      ->check(CLI::Range(INT16_MIN, INT16_MAX))
      ->capture_default_str();
  app.add_option("--plugin", options.plugin, "The plug-in to load; none loads none")->type_name("FILE");
  app.add_option("--color", options.color, "When to use colours (default: on a terminal, unless NO_COLOR is set)")
      ->type_name("WHEN")
      ->check(CLI::IsMember({"auto", "always", "never"}));
  app.add_flag("--json", options.json, "Print lists as JSON");
}

CommandLine::~CommandLine() = default;

CLI::App& CommandLine::add(const std::string& name, const std::string& description, CommandBody body) {
  return addUnder(m_state->app, name, description, std::move(body));
}

CLI::App& CommandLine::addUnder(CLI::App& command, const std::string& name, const std::string& description,
                                CommandBody body) {
  CLI::App* added = command.add_subcommand(name, description);
  added->fallthrough();
  added->group(m_state->group);
  m_state->commands.emplace_back(added, std::move(body));
  return *added;
}

CLI::App& CommandLine::addGroup(const std::string& name, const std::string& description) {
  CLI::App* group = m_state->app.add_subcommand(name, description);
  group->fallthrough();
  group->group(m_state->group);
  group->require_subcommand(1);
  return *group;
}

void CommandLine::startGroup(const std::string& name) { m_state->group = name; }

CommandGuide CommandLine::guide() const { return guideOf(m_state->app); }

void CommandLine::setDefault(CommandBody body) { m_state->standard = std::move(body); }

namespace {

/// What could not be written was not done, whatever it was.
ExitStatus unlessLost(Streams& streams, ExitStatus status) {
  streams.out.flush();
  if (streams.out) { return status; }
  streams.err << tr("orlocal: Not all could be written to the standard output; it is full or closed.\n");
  return ExitStatus::kFailed;
}

}  // namespace

ExitStatus CommandLine::run(const std::string& programFile, const std::vector<std::string>& words) {
  Streams& streams = m_state->streams;
  try {
    // CLI11 takes the words from the last to the first.
    m_state->app.parse(std::vector<std::string>(words.rbegin(), words.rend()));
  } catch (const CLI::CallForHelp&) {
    m_state->showHelp(streams.out);
    return unlessLost(streams, ExitStatus::kDone);
  } catch (const CLI::CallForVersion&) {
    streams.out << kVersion << '\n';
    return unlessLost(streams, ExitStatus::kDone);
  } catch (const CLI::ParseError& error) {
    tellTrouble(streams.err, usageSentence(m_state->app, error));
    return ExitStatus::kUsage;
  }
  const CommandBody* body = m_state->chosen();
  if (body == nullptr) {
    m_state->showHelp(streams.err);
    return ExitStatus::kUsage;
  }
  m_state->putOptionsInForce();
  putClockInForce(streams.err);
  const Result<ExitStatus> status = withoutThrowing([&] {
    CommandContext context{m_state->options, streams, programFile};
    return (*body)(context);
  });
  if (!status) {
    tellTrouble(streams.err, status.error().message);
    return ExitStatus::kFailed;
  }
  return unlessLost(streams, *status);
}

}  // namespace orlocal::host
