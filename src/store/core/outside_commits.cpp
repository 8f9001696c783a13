#include "store/core/outside_commits.h"

#include <map>
#include <utility>

#include "base/try.h"
#include "store/file/change_log.h"

namespace orlocal::store {
namespace {

/// Where the records of a subject are told; null for what is not told.
ChangedRecords* recordsOf(OutsideCommit& commit, Subject subject) {
  switch (subject) {
    case Subject::kEvent:
      return &commit.events;
    case Subject::kReminder:
      return &commit.reminders;
    case Subject::kCalendar:
      return &commit.calendars;
    case Subject::kReminderList:
      return &commit.reminderLists;
    case Subject::kZone:
    case Subject::kContact:
      break;
  }
  return nullptr;
}

/// What a commit did to one record, all in all.
struct Fate {
  Uuid uuid;
  Subject subject;
  bool inserted = false;
  bool deleted = false;
  Departed departed;

  void take(const LoggedChange& change) {
    // A changed occurrence that comes or goes changes its series.
    const Operation operation = change.series ? Operation::kUpdated : change.operation;
    if (operation == Operation::kInserted) { inserted = true; }
    if (operation == Operation::kDeleted) {
      deleted = true;
      departed = change.departed;
    }
  }

  void addTo(OutsideCommit& commit) const {
    if (inserted && deleted) {
      return;  // it came and went unseen
    }
    ChangedRecords& records = *recordsOf(commit, subject);
    auto& list = deleted ? records.deleted : inserted ? records.inserted : records.updated;
    list.push_back(uuid.text());
    if (deleted) { records.departed.push_back(departed); }
  }
};

/// Collects the rows of one commit.
class Collector {
 public:
  void take(const LoggedChange& change) {
    const auto [place, isNew] = m_places.try_emplace(change.uuid, m_fates.size());
    if (isNew) { m_fates.push_back({.uuid = change.uuid, .subject = change.subject, .departed = {}}); }
    m_fates[place->second].take(change);
    m_made = change.made;
    m_upTo = change.seq;
  }

  void finishInto(std::vector<OutsideCommit>& commits) {
    OutsideCommit commit;
    commit.made = m_made;
    commit.upTo = m_upTo;
    for (const Fate& fate : m_fates) { fate.addTo(commit); }
    if (!commit.empty()) { commits.push_back(std::move(commit)); }
    m_places.clear();
    m_fates.clear();
  }

 private:
  std::map<Uuid, std::size_t> m_places;
  std::vector<Fate> m_fates;
  std::optional<Moment> m_made;
  std::int64_t m_upTo = 0;
};

}  // namespace

Result<std::vector<OutsideCommit>> outsideCommitsAfter(ChangeLog& log, std::int64_t& position) {
  std::vector<OutsideCommit> commits;
  ORLOCAL_TRY(std::int64_t newest, log.newest());
  if (newest < position) {
    // The file was put back from a copy: what was told of it no longer counts.
    position = newest;
    return commits;
  }
  Collector collector;
  OutsideCommit untold;
  std::int64_t current = 0;
  ORLOCAL_CHECK(log.visitAfter(position, [&](const LoggedChange& change) {
    if (change.writer == log.writer() || recordsOf(untold, change.subject) == nullptr) { return; }
    if (change.commit != current) {
      collector.finishInto(commits);
      current = change.commit;
    }
    collector.take(change);
  }));
  collector.finishInto(commits);
  position = newest;
  return commits;
}

}  // namespace orlocal::store
