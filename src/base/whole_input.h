#pragma once

#include <cstddef>
#include <filesystem>
#include <istream>
#include <limits>
#include <string>

#include "base/result.h"

namespace orlocal {

/// All bytes of a stream. Where they cannot be read to the end: `kIo`, in a sentence about `name`; `kTooLarge` where
/// they are more than `most`.
Result<std::string> readWhole(std::istream& in, const std::string& name,
                              std::size_t most = std::numeric_limits<std::size_t>::max());

/// The same of a file.
Result<std::string> readWholeFile(const std::filesystem::path& file);

}  // namespace orlocal
