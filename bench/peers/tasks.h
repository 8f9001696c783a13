#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace peers {

/// One occurrence of an event. Seconds since 1970 in UTC; whole days go from midnight to midnight in Berlin.
struct Entry {
  std::int64_t start = 0, end = 0;
  std::string title;
};

/// A library that keeps calendars, given the tasks that are measured. Failures are thrown.
class Library {
 public:
  virtual ~Library() = default;

  /// Takes in the events of an iCalendar file, so that a later process finds them.
  virtual void import(const std::filesystem::path& file) = 0;
  /// Makes ready to answer what was imported; called once, in place of `import`.
  virtual void open() = 0;
  /// All that overlaps the half-open range, with titles.
  virtual std::vector<Entry> between(std::int64_t from, std::int64_t to) = 0;
  /// Adds an event of an hour. It is kept in the way that this library keeps things when this returns.
  virtual void add(const std::string& uid, std::int64_t start) = 0;
  /// Peak of resident memory in KiB of processes that work for this one.
  virtual double peakOfServants() { return 0; }
};

/// Of the library that this program is linked with. It keeps its files in `folder`.
std::unique_ptr<Library> makeLibrary(const std::filesystem::path& folder);

/// The peak of resident memory of a process in KiB (VmHWM); 0 when it is gone.
double peakOf(const std::string& process);

/// The text of an iCalendar file; throws when it cannot be read.
std::string textOf(const std::filesystem::path& file);
/// Puts a file with this text in place of another one, on disk when this returns.
void replaceDurably(const std::filesystem::path& file, const std::string& text);

}  // namespace peers
