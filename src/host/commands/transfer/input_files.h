#pragma once

#include <functional>
#include <istream>
#include <string>

#include "base/result.h"
#include "host/commands/transfer/archive.h"
#include "host/commands/transfer/file_kind.h"

namespace orlocal::host {

/// Bytes that somebody's words brought: a file, the standard input, or what lies in a folder or an archive.
struct BroughtFile {
  std::string bytes;
  RecognisedFile what;  ///< never an archive that could be opened
  /// Nobody named it: it was found in a folder or an archive. What else lies there is none of our business unless its
  /// name says that it is.
  bool found = false;
};

/// Takes what was brought under its name ("archive.zip/member.ics"), or why it cannot be had. Returns false to stop.
using FileVisitor = std::function<bool(const std::string& name, Result<BroughtFile> file)>;

struct InputOptions {
  ArchiveLimits limits;
  /// Called with the name of a file that is so large that reading it takes a while.
  std::function<void(const std::string&)> readingLongFile = nullptr;
};

/// Visits what `word` names: "-" is `standardInput`; a folder is gone through with the folders in it, by name, without
/// what begins with a dot, without following links to folders and without pipes and devices; an archive (zip, gzip) is
/// opened, and none within another. A pipe that is named is read to its end. Gives false when the visitor stopped it. A
/// file may have 1 GiB.
bool visitInput(const std::string& word, std::istream& standardInput, const InputOptions& options,
                const FileVisitor& visit);

}  // namespace orlocal::host
