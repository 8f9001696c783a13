#include "host/commands/scripting/commands_in_place.h"

#include <array>
#include <cstdlib>
#include <optional>

#include "host/commands/command_line/trouble.h"
#include "host/commands/scripting/quoted_words.h"

namespace orlocal::host {

namespace {

/// What a command's options change in the environment, as it was, in the end.
class KeptEnvironment {
 public:
  KeptEnvironment() {
    for (std::size_t i = 0; i < kVariables.size(); ++i) {
      if (const char* value = std::getenv(kVariables[i]); value != nullptr) { m_before[i] = value; }
    }
  }
  ~KeptEnvironment() {
    for (std::size_t i = 0; i < kVariables.size(); ++i) {
      if (m_before[i]) {
        ::setenv(kVariables[i], m_before[i]->c_str(), 1);
      } else {
        ::unsetenv(kVariables[i]);
      }
    }
  }
  KeptEnvironment(const KeptEnvironment&) = delete;
  KeptEnvironment& operator=(const KeptEnvironment&) = delete;

 private:
  static constexpr std::array kVariables{"ORLOCAL_STORE", "ORLOCAL_SYSTEM_MINOR"};
  std::array<std::optional<std::string>, kVariables.size()> m_before;
};

}  // namespace

ExitStatus CommandsInPlace::run(std::string_view words) {
  const auto read = quotedWords(words);
  if (!read) {
    tellTrouble(m_context.streams.err, read.error().message);
    return ExitStatus::kUsage;
  }
  return run(*read);
}

ExitStatus CommandsInPlace::run(const std::vector<std::string>& words) {
  const KeptEnvironment kept;
  CommandLine line(m_context.streams, m_context.options);
  m_registerAll(line);
  return line.run(m_context.programFile, words);
}

std::vector<std::string> CommandsInPlace::names() const {
  CommandLine line(m_context.streams);
  m_registerAll(line);
  std::vector<std::string> names;
  for (const CommandGuide& command : line.guide().words) { names.push_back(command.name()); }
  return names;
}

}  // namespace orlocal::host
