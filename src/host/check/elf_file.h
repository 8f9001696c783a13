#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "base/result.h"

namespace orlocal::host::check {

/// What a shared object says of itself, read from the file without loading it.
struct ElfFile {
  bool forThisMachine = false;  ///< 64 bits, little-endian, this processor
  bool isSharedObject = false;
  std::string soname;
  std::vector<std::string> needed;    ///< libraries, in order
  std::vector<std::string> runPath;   ///< folders, `$ORIGIN` as it is written
  std::vector<std::string> exported;  ///< symbols that it defines for others
  bool hasTextRelocations = false;
  bool hasExecutableStack = false;
};

/// Fails for what is no ELF file, or one that is cut off.
Result<ElfFile> readElfFile(const std::filesystem::path& file);

}  // namespace orlocal::host::check
