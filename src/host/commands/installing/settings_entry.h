#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "base/result.h"

namespace orlocal::host {

/// The store that the text of a settings file names, as the last line that names one says.
std::optional<std::string> storeNamedIn(std::string_view settings);

/// The text with an entry of ours behind it that names that store. Nothing of what stands there is changed.
std::string withStoreEntry(std::string_view settings, const std::filesystem::path& store);

/// The text without that entry; none where it is not there as we wrote it.
std::optional<std::string> withoutStoreEntry(std::string_view settings);

/// Writes a settings file in one step: a new one as everybody may read it (0644), in a folder that is made (0755); one
/// that was there keeps owner and mode. An empty text takes the file away.
Status writeSettings(const std::filesystem::path& file, const std::string& text);

}  // namespace orlocal::host
