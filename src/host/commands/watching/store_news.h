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
#include "store/calendar_store.h"

namespace orlocal::host {

/// One thing that happened to the store.
struct News {
  std::string_view change;  ///< "new", "updated", "deleted"
  std::string_view kind;    ///< "event", "reminder", "calendar", "reminder list"
  std::string identifier;
  std::optional<std::string> title;             ///< of what was deleted it is known only when it was news before
  std::optional<std::string> calendar;          ///< title of the calendar or reminder list that holds it
  std::shared_ptr<const store::Item> item;      ///< event or reminder; null for one that is gone
  std::optional<store::Occurrence> occurrence;  ///< of an event, the first
};

/// Follows what others do to a store.
class StoreNews {
 public:
  /// The store outlives what is made.
  static Result<StoreNews> fromNowOn(store::CalendarStore& store);

  /// Tells what was committed since the last call, in its order; within a commit what is new comes first, then what was
  /// updated, then what was deleted. What is told is as it stands now.
  Status tell(const std::function<void(const News&)>& listener);

 private:
  StoreNews(store::CalendarStore& store, store::LogPosition position) : m_store(store), m_position(position) {}

  Status tellAll(std::string_view kind, const store::ChangedRecords& records,
                 const std::function<void(const News&)>& listener);
  Result<News> newsOf(std::string_view change, std::string_view kind, const std::string& identifier);
  Result<std::optional<std::string>> titleOfCalendar(store::CalendarId id);

  store::CalendarStore& m_store;
  store::LogPosition m_position;
  std::uint64_t m_generation = 0;
  std::map<std::string, std::string> m_titles;  ///< of what was news, so that its end has a name
};

/// A line for a person: "New event              2026-11-06 10:00–11:00  Team meeting  Work  0193…".
std::string lineOf(const News& news, const store::Zone& viewer);

/// A line for a program: an object without line breaks.
std::string jsonLineOf(const News& news, const store::Zone& viewer);

}  // namespace orlocal::host
