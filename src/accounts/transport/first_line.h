#pragma once

#include <atomic>
#include <chrono>
#include <filesystem>
#include <string>
#include <string_view>

#include "base/result.h"

namespace orlocal::accounts {

/// Runs a command of the user's by /bin/sh and gives the first line that it prints. It has nothing to read, and its
/// standard error is ours. Whatever takes longer than `limit`, or until `stop` says so, is ended with all that it
/// started. The sentence of a failure begins with `subject` ("The password command of …") and holds nothing of the
/// output.
Result<std::string> firstLineOf(const std::string& command, std::chrono::milliseconds limit, const std::string& subject,
                                const std::atomic<bool>* stop);

/// Without the line's end and what follows it.
std::string_view firstLineIn(std::string_view text);

}  // namespace orlocal::accounts
