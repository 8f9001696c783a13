#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <ostream>
#include <string>
#include <system_error>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"
#include "host/commands/guide/completed_values.h"
#include "host/commands/guide/completion_scripts.h"
#include "host/commands/guide/guide_commands.h"
#include "host/commands/guide/man_page.h"
#include "host/commands/guide/store_values.h"

namespace orlocal::host {

namespace {

struct Shell {
  std::string_view name;
  std::string (*script)(const CommandGuide&);
  std::string_view file;  ///< where the shell looks for it, below the folder of what is shared
};
constexpr Shell kShells[] = {{"bash", bashCompletion, "bash-completion/completions/orlocal"},
                             {"zsh", zshCompletion, "zsh/site-functions/_orlocal"},
                             {"fish", fishCompletion, "fish/vendor_completions.d/orlocal.fish"}};

Status writeFile(const std::filesystem::path& file, const std::string& text) {
  std::error_code error;
  std::filesystem::create_directories(file.parent_path(), error);
  std::ofstream out(file, std::ios::binary | std::ios::trunc);
  out << text;
  out.close();
  if (!out) { return failure(ErrorCode::kIo, fmt::format("{} cannot be written", file.string())); }
  return {};
}

/// All that is installed, as it lies below the folder of what is shared.
Result<ExitStatus> writeGuide(const CommandGuide& program, const std::filesystem::path& folder) {
  for (const Shell& shell : kShells) { ORLOCAL_CHECK(writeFile(folder / shell.file, shell.script(program))); }
  const std::filesystem::path pages = folder / "man" / "man1";
  ORLOCAL_CHECK(writeFile(pages / manPageFile(program), manPage(program, program, CommandLine::kVersion)));
  for (const CommandGuide& command : program.words) {
    ORLOCAL_CHECK(writeFile(pages / manPageFile(command), manPage(program, command, CommandLine::kVersion)));
  }
  return ExitStatus::kDone;
}

void registerShells(CommandLine& line) {
  const auto chosen = std::make_shared<std::string>();
  CLI::App& completion = line.add("completion", "Print what makes a shell complete the words of this program.",
                                  [chosen, &line](CommandContext& context) -> Result<ExitStatus> {
                                    for (const Shell& shell : kShells) {
                                      if (shell.name == *chosen) { context.streams.out << shell.script(line.guide()); }
                                    }
                                    return ExitStatus::kDone;
                                  });
  std::vector<std::string> names;
  for (const Shell& shell : kShells) { names.emplace_back(shell.name); }
  completion.add_option("shell", *chosen, "The shell that will read it")
      ->type_name("bash|zsh|fish")
      ->check(CLI::IsMember(names))
      ->required();
  completion.footer(tr("Where the program was installed, shells find it by themselves.\n") +
                    "  orlocal completion bash > ~/.local/share/bash-completion/completions/orlocal\n  orlocal "
                    "completion fish > ~/.config/fish/completions/orlocal.fish");
}

/// Nobody types these: the scripts do, and the build.
void registerHidden(CommandLine& line) {
  const auto what = std::make_shared<std::string>();
  CLI::App& values = line.add(std::string(kAskingCommand), "Titles and names that the store has, one a line.",
                              [what](CommandContext& context) -> Result<ExitStatus> {
                                // Who presses a key waits for no writer.
                                ::setenv("ORLOCAL_WAIT", "0", 0);
                                for (const std::string& value : storeValues(*what)) {
                                  context.streams.out << value << '\n';
                                }
                                return ExitStatus::kDone;
                              });
  values.add_option("what", *what)->required();
  values.group("");

  const auto folder = std::make_shared<std::string>();
  CLI::App& files = line.add("completion-files", "Write completions and man pages as they are installed.",
                             [folder, &line](CommandContext&) { return writeGuide(line.guide(), *folder); });
  files.add_option("folder", *folder)->required();
  files.group("");
}

}  // namespace

void registerCompletionCommands(CommandLine& line) {
  registerShells(line);
  registerHidden(line);
}

}  // namespace orlocal::host
