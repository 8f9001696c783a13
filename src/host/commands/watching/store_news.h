#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/result.h"
#include "host/commands/describing/item_json.h"
#include "host/commands/watching/since_words.h"
#include "store/calendar_store.h"

namespace orlocal::host {

/// One thing that happened to the store.
struct News {
  std::string_view change;  ///< "new", "updated", "deleted"
  std::string_view kind;    ///< "event", "reminder", "calendar", "reminder list"
  std::string identifier;
  std::optional<std::string> title;             ///< of what was deleted: its last one
  std::optional<std::string> calendar;          ///< title of the calendar or reminder list that holds it
  std::shared_ptr<const store::Item> item;      ///< event or reminder; null for one that is gone
  std::optional<store::Occurrence> occurrence;  ///< of an event, the first
  std::optional<store::Moment> made;            ///< when it was committed
  std::int64_t position = 0;                    ///< of its commit in the log: what comes after it is news again
};

/// Follows what others do to a store.
class StoreNews {
 public:
  /// The store outlives what is made.
  static Result<StoreNews> fromNowOn(store::CalendarStore& store);
  /// The same from an earlier place in the log on.
  static Result<StoreNews> since(store::CalendarStore& store, const Since& since);

  /// Whether the log still has all that was to be told.
  Result<bool> isWhole() { return m_store.reachesBackTo(m_position); }

  /// Tells what was committed since the last call, in its order; within a commit what is new comes first, then what was
  /// updated, then what was deleted. What is told is as it stands now.
  Status tell(const std::function<void(const News&)>& listener);

 private:
  using Listener = std::function<void(const News&)>;

  StoreNews(store::CalendarStore& store, store::LogPosition position) : m_store(store), m_position(position) {}

  Status tellAll(std::string_view kind, const store::ChangedRecords& records, const store::OutsideCommit& commit,
                 const Listener& listener);
  Result<News> newsOf(std::string_view change, std::string_view kind, const std::string& identifier);
  Status describeItem(News& news);

  store::CalendarStore& m_store;
  store::LogPosition m_position;
  std::uint64_t m_generation = 0;
  std::map<std::string, std::string> m_titles;  ///< of what was news, for an end that the log has no name for
};

/// A line for a person: "New event              2026-11-06 10:00–11:00  Team meeting  Work  0193…".
std::string lineOf(const News& news, const store::Zone& viewer);

/// The same with the moment before it: "2026-11-02 08:30  New event …".
std::string pastLineOf(const News& news, const store::Zone& viewer);

/// A line for a program: an object without line breaks.
std::string jsonLineOf(const News& news, const CalendarNames& names, const store::Zone& viewer);

}  // namespace orlocal::host
