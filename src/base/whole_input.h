#pragma once

#include <filesystem>
#include <istream>
#include <string>

#include "base/result.h"

namespace orlocal {

/// All bytes of a stream. Where they cannot be read to the end: `kIo`, in a sentence about `name`.
Result<std::string> readWhole(std::istream& in, const std::string& name);

/// The same of a file.
Result<std::string> readWholeFile(const std::filesystem::path& file);

}  // namespace orlocal
