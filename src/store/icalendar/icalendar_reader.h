#pragma once

#include <atomic>
#include <cstddef>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/result.h"
#include "store/model/model.h"
#include "store/recurrence/recurrence.h"

namespace orlocal::store {

/// Something about a place in a file that its owner should know.
struct Problem {
  int line = 0;  ///< from 1
  std::string uid;
  std::string message;
  std::string item = {};  ///< its title and day for people, as far as they are known

  friend bool operator==(const Problem&, const Problem&) = default;
};

struct ReadProblems {
  /// Past so many, warnings are counted and no longer kept: each line of a file could bring one.
  static constexpr std::size_t kMostWarnings = 10'000;

  std::vector<Problem> refused;   ///< items that are left out, each with its reason
  std::vector<Problem> warnings;  ///< what was read in another way than it was written, or is not kept
  std::size_t warningsLeftOut = 0;

  /// Both keep the beginning of a UID that is very long.
  void refuse(int line, std::string_view uid, std::string message);
  void warn(int line, std::string_view uid, std::string message);
  /// What was found after all of these.
  void append(ReadProblems later);
};

/// How people are told which item is meant: "“Review” on 2026-11-02", the half of it that there is, or nothing.
std::string itemInWords(const std::optional<std::string>& title, const std::optional<CalendarTime>& start);

/// What a VCALENDAR says about itself.
struct CalendarHead {
  std::string name;  ///< X-WR-CALNAME or NAME
  std::optional<Rgb> color;
  std::string method;
};

/// A single event, a series or a reminder with the changed occurrences that the file has for it.
struct ItemGroup {
  std::size_t calendar = 0;  ///< index of its VCALENDAR
  int line = 0;
  std::optional<Item> main;              ///< none when it was refused, or when there are changed occurrences only
  std::vector<Item> changed;             ///< in the order of the file
  std::shared_ptr<const Series> series;  ///< `main` compiled for UTC, when it repeats
  /// What changes from an occurrence on (RANGE=THISANDFUTURE) is cut off there, as a series of its own; by start.
  std::vector<ItemGroup> later;

  /// Whether nothing of it is left: all of it was refused.
  bool empty() const { return !main && changed.empty(); }
};

/// An iCalendar file (RFC 5545), read item by item. Nothing in it is ever opened, run or fetched.
///
/// Limits: 1 GiB a file, 16 MiB and 100,000 lines an item, components in components 16 deep, what the rules of a file
/// may take (`RuleBudget`) and its zones (`TzidTable`). A file without VCALENDAR around its items is taken as one
/// calendar. Zones come as `systemZoneOf` and its like say; a TZID that nothing explains makes its times floating, with
/// a warning.
class CalendarReader {
 public:
  static Result<CalendarReader> open(const std::filesystem::path& file);
  /// `name` stands in errors where a file's name would.
  static Result<CalendarReader> ofText(std::string bytes, const std::string& name);

  CalendarReader(CalendarReader&&) noexcept;
  CalendarReader& operator=(CalendarReader&&) noexcept;
  ~CalendarReader();

  /// Asked while a rule takes long; once it is set, items whose rules are still to be followed are refused, and nothing
  /// is read ahead.
  void stopWhen(const std::atomic<bool>* stop);

  const std::vector<CalendarHead>& calendars() const;
  /// How many groups there are.
  std::size_t size() const;
  /// Reads the group; problems are added to `problems`.
  ItemGroup read(std::size_t index, ReadProblems& problems);

  /// Groups that follow each other.
  struct Stretch {
    std::vector<ItemGroup> groups;  ///< without those of which nothing is left
    ReadProblems problems;
    std::size_t end = 0;  ///< the first group that was not read
  };
  /// Reads the groups from `begin` up to `end`, or to one that hangs on what was read before it: it has a TZID that
  /// `read` has not met, or wants more of the rules than each item may take. `read` then goes on from there, and both
  /// give what `read` alone would. Any number of threads, as long as none calls `read`.
  Stretch readAhead(std::size_t begin, std::size_t end) const;

  /// What the file's structure showed when it was opened.
  const ReadProblems& problems() const;
  /// Says in problems of this file which item each is about.
  void nameItems(ReadProblems& problems) const;
  /// Whether a component was open at the file's end: something that should have followed is missing.
  bool endsEarly() const;
  /// The private zones that the groups read so far use: name and VTIMEZONE text. They are registered in this process.
  const std::map<std::string, std::string>& privateZones() const;

 private:
  struct Data;
  explicit CalendarReader(std::unique_ptr<Data> data);
  std::unique_ptr<Data> m_data;
};

}  // namespace orlocal::store
