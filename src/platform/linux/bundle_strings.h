#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/bundle_strings.h"

namespace orlocal {

/// The tables of the file that this code was loaded from: `NAME.resources/<language>.lproj/<table>.strings` beside
/// `NAME.fmx`, in the languages of the environment, and the English one that is built in. The host's reference to the
/// plug-in is not looked at. Each table is read once, when a string of it is first asked for.
std::unique_ptr<BundleStrings> makeBundleStrings();

/// The same over another folder and other languages, the most wanted first.
std::unique_ptr<BundleStrings> makeBundleStrings(std::filesystem::path folder, std::vector<std::string> languages);

}  // namespace orlocal
