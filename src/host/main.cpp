#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include <unistd.h>

#include "host/commands/all_commands.h"
#include "host/commands/command_line/command.h"
#include "host/language/message_catalogue.h"

namespace {

/// The program's own file, wherever it was found on the path.
std::string programFile(const char* calledAs) {
  std::error_code error;
  const std::filesystem::path file = std::filesystem::read_symlink("/proc/self/exe", error);
  return error ? calledAs : file.string();
}

}  // namespace

int main(int argc, char** argv) {
  using namespace orlocal::host;
  const std::string program = programFile(argc > 0 ? argv[0] : "orlocal");
  speakLanguageOfUser(program);
  const bool out = ::isatty(STDOUT_FILENO) != 0;
  CommandLine line(
      Streams{std::cin, std::cout, std::cerr, ::isatty(STDIN_FILENO) != 0, out, ::isatty(STDERR_FILENO) != 0});
  registerAllCommands(line);
  const std::vector<std::string> words(argv + (argc > 0 ? 1 : 0), argv + argc);
  return static_cast<int>(line.run(program, words));
}
