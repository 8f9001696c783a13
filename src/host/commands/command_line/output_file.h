#pragma once

#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include <sys/stat.h>

#include "base/result.h"
#include "host/commands/command_line/interruption.h"
#include "store/file/draft_entry.h"

namespace orlocal::host {

/// A file that a command writes where the user said. Links are followed; what the name stands for stays what it is.
///
/// A regular file, or none, is replaced in one step by `finish`: until then whatever was there stands, and a failure, a
/// Ctrl-C or a request to end leaves it and no draft. The new file has the mode and the owner of the old one; a file
/// that was not there is the user's alone (0600). Anything else (a device, a pipe) is written in place, and so is a
/// file that no new one could stand for: with further names, with an access list, of another owner, or in a folder
/// that takes no new files.
class OutputFile {
 public:
  static Result<std::unique_ptr<OutputFile>> open(std::string path);

  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  Status write(std::string_view bytes);
  /// All of it is in its place, and on disk, when this returns without a failure. Nothing is written after it.
  Status finish();

 private:
  explicit OutputFile(std::string path) : m_path(std::move(path)) {}

  Status start();
  /// False when a new file could not stand for the old one, or, with errno, when it cannot be made.
  bool startDraft(const std::string& target);
  /// Whether the draft can stand for what is there, whose mode and owner it then has; errno as above.
  bool standsForWhatIsThere() const;
  bool takesOver(const struct stat& old, int oldFile) const;
  Status startInPlace(int flags);
  Failed failed(int error) const;

  int descriptor() const { return m_draft ? m_draft->descriptor() : m_descriptor; }

  std::string m_path;  ///< as the user wrote it
  std::string m_name;  ///< of the file that is replaced, in its folder
  std::optional<store::DraftEntry> m_draft;
  int m_descriptor = -1;                       ///< of a file that is written in place
  std::optional<Interruption> m_interruption;  ///< while there is a draft to take away
};

/// Writes all of `text` to that file, or ("-") to the standard output.
Status writeOutput(const std::string& file, std::string_view text, std::ostream& standardOutput);

}  // namespace orlocal::host
