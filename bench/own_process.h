#pragma once

#include <string>

#include "setting.h"

namespace orlocal::bench {

/// Runs this program anew with the same plug-in and folder, and other words; returns what it prints. `under` is a
/// command that it shall run under. Throws when it fails.
std::string ownProcess(const Setting& setting, const std::string& words, const std::string& under = "");

}  // namespace orlocal::bench
