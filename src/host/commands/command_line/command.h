#pragma once

#include <functional>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/result.h"
#include "host/commands/command_line/command_guide.h"

namespace orlocal::host {

/// How a command ends, as the shell sees it.
enum class ExitStatus : int {
  kDone = 0,
  kFailed = 1,  ///< the work failed; the reason is on the error stream
  kUsage = 2,   ///< the words of the command line were off
};

/// What every command understands, before or after the command's name.
struct GlobalOptions {
  std::optional<std::string> store;        ///< `--store`; in the environment as ORLOCAL_STORE when a command runs
  std::optional<std::string> systemMinor;  ///< `--system-minor`; in the environment as ORLOCAL_SYSTEM_MINOR likewise
  int hostVersion = 62;                    ///< `--host-version`
  std::optional<std::string> plugin;       ///< `--plugin`; see `pluginFile` for the places that are searched without it
  std::optional<std::string> color;        ///< `--color`: auto, always or never
  bool json = false;                       ///< `--json`: lists are printed as JSON
};

/// The streams of a command. Commands read and write nothing else, so tests can stand in for a terminal.
struct Streams {
  std::istream& in;
  std::ostream& out;
  std::ostream& err;
  bool inIsTerminal = false;
  bool outIsTerminal = false;
  bool errIsTerminal = false;  ///< progress is shown only then
  bool colors = false;         ///< on `out`; settled when a command runs
};

/// What a running command is given. Borrowed for the run.
struct CommandContext {
  const GlobalOptions& options;
  Streams& streams;
  std::string programFile;  ///< the program itself, for finding what lies beside it and for running itself again
};

/// The body of a command. Its failure is told on the error stream and ends as `kFailed`; so is what the standard
/// library throws in it.
using CommandBody = std::function<Result<ExitStatus>(CommandContext&)>;

/// The program's command line: the global options and one CLI11 subcommand for each command.
///
/// A source of commands offers a function `registerXxxCommands(CommandLine&)`, listed in `all_commands.cpp`. It calls
/// `add` and hangs its own options on the subcommand that it gets, bound to an object that the body shares:
///
///     auto from = std::make_shared<std::string>();
///     CLI::App& agenda = line.add("agenda", "Show what is planned.", [from](CommandContext& context) { … });
///     agenda.add_option("--from", *from, "First day");
///     agenda.footer("  orlocal agenda --from monday");
///
/// Help, completions and man pages come from what stands on the subcommands (`CommandGuide`). In a footer, lines that
/// begin with two blanks are examples; every command has one.
class CommandLine {
 public:
  /// "orlocal 3.0.0.1".
  static const char* const kVersion;

  /// `options` are those that hold where the words say nothing.
  explicit CommandLine(Streams streams, GlobalOptions options = {});
  ~CommandLine();
  CommandLine(const CommandLine&) = delete;
  CommandLine& operator=(const CommandLine&) = delete;

  /// The heading under which help lists the commands that are added from now on.
  void startGroup(const std::string& name);

  /// Makes the subcommand `name`. Its options are added by the caller; its body runs when the words fit.
  CLI::App& add(const std::string& name, const std::string& description, CommandBody body);

  /// The same for a word after another command's name: "account add". Without the word, that command's body runs.
  CLI::App& addUnder(CLI::App& command, const std::string& name, const std::string& description, CommandBody body);

  /// A command that does nothing by itself and needs one of the words under it.
  CLI::App& addGroup(const std::string& name, const std::string& description);

  /// What happens when no command is named.
  void setDefault(CommandBody body);

  /// What all commands are called, take and do, as they stand now.
  CommandGuide guide() const;

  /// Reads the words (without the program's name), puts the global options in force and runs the command.
  ExitStatus run(const std::string& programFile, const std::vector<std::string>& words);

 private:
  struct State;
  std::unique_ptr<State> m_state;
};

}  // namespace orlocal::host
