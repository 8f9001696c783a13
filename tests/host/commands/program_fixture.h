#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host/commands/all_commands.h"

namespace orlocal::host {

/// The whole command line, with streams in memory and a folder of its own.
class ProgramTest : public ::testing::Test {
 protected:
  ProgramTest() {
    std::string name = ::testing::TempDir() + "orlocal-commands-XXXXXX";
    folder = ::mkdtemp(name.data());
    // Commands that are told no store use the one in this folder, and never the user's.
    ::setenv("XDG_DATA_HOME", (folder / "data").c_str(), 1);
  }
  ~ProgramTest() override {
    ::unsetenv("XDG_DATA_HOME");
    ::unsetenv("ORLOCAL_STORE");
    ::unsetenv("ORLOCAL_SYSTEM_MINOR");
    std::error_code error;
    std::filesystem::remove_all(folder, error);
  }

  std::string write(const std::string& name, std::string_view text) const {
    const std::filesystem::path file = folder / name;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << text;
    return file;
  }

  /// Runs the words without a plug-in.
  ExitStatus run(std::vector<std::string> words) {
    words.insert(words.begin(), {"--plugin", "none"});
    return runAsTyped(words);
  }

  ExitStatus runAsTyped(const std::vector<std::string>& words) {
    in = std::istringstream(input);
    out.str("");
    err.str("");
    CommandLine line(Streams{in, out, err});
    registerAllCommands(line);
    return line.run(program, words);
  }

  std::filesystem::path folder;
  std::string program = ORLOCAL_PROGRAM;
  std::string input;
  std::istringstream in;
  std::ostringstream out, err;
};

}  // namespace orlocal::host
