#pragma once

#include <string>
#include <string_view>

namespace orlocal::host {

/// What somebody gave us to import, by what is in it; its name says nothing.
enum class FileKind { kCalendar, kCards, kZip, kGzip, kOther };

struct RecognisedFile {
  FileKind kind = FileKind::kOther;
  std::string looksLike;  ///< "a PDF document"; of every kind
};

RecognisedFile recognised(std::string_view bytes);

/// Whether a name says that this should be a calendar or cards (".ics", ".vcf" and their like, ".gz" behind it or not):
/// one in a folder that is not is worth a failure.
bool saysItIsACalendar(std::string_view name);

}  // namespace orlocal::host
