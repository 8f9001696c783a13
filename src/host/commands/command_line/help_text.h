#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/commands/command_line/command_guide.h"

namespace orlocal::host {

/// What `orlocal --help` and `orlocal COMMAND --help` print: lines of at most `width` cells, as far as words allow.
std::string helpText(const CommandGuide& program, const CommandGuide& command, std::size_t width);

/// The commands under their headings, each with `prefix` before its name.
std::string commandList(const CommandGuide& program, std::string_view prefix, std::size_t width);

/// What an option or a word means, with its choices and with what holds without it.
std::string meaningOf(const WordGuide& word);

/// Each with what it means.
const std::vector<std::pair<std::string, std::string>>& exitStatuses();

/// "orlocal agenda [OPTIONS] [DAY]".
std::string usageOf(const CommandGuide& command);

}  // namespace orlocal::host
