#include <iostream>
#include <string>
#include <vector>

#include <unistd.h>

#include "host/commands/command.h"

int main(int argc, char** argv) {
  using namespace orlocal::host;
  const bool out = ::isatty(STDOUT_FILENO) != 0;
  CommandLine line(
      Streams{std::cin, std::cout, std::cerr, ::isatty(STDIN_FILENO) != 0, out, ::isatty(STDERR_FILENO) != 0});
  registerAllCommands(line);
  return static_cast<int>(line.run(argc > 0 ? argv[0] : "orlocal", std::vector<std::string>(argv + 1, argv + argc)));
}
