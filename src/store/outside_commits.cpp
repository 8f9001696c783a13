#include "store/outside_commits.h"

#include <map>
#include <utility>

#include "store/change_log.h"
#include "store/try.h"

namespace orlocal::store {
namespace {

/// What a commit did to one event, all in all.
class EventFate {
 public:
  void take(const LoggedChange& change) {
    // A changed occurrence that comes or goes changes its series.
    const Operation operation = change.series ? Operation::kUpdated : change.operation;
    if (operation == Operation::kInserted) m_inserted = true;
    if (operation == Operation::kDeleted) m_deleted = true;
  }

  void addTo(OutsideCommit& commit, std::string identifier) const {
    if (m_inserted && m_deleted) return;  // it came and went unseen
    auto& list = m_deleted ? commit.deleted : m_inserted ? commit.inserted : commit.updated;
    list.push_back(std::move(identifier));
  }

 private:
  bool m_inserted = false;
  bool m_deleted = false;
};

/// Collects the rows of one commit.
class Collector {
 public:
  void take(const LoggedChange& change) {
    const auto [place, isNew] = m_places.try_emplace(change.uuid, m_fates.size());
    if (isNew) m_fates.emplace_back(change.uuid, EventFate());
    m_fates[place->second].second.take(change);
  }

  void finishInto(std::vector<OutsideCommit>& commits) {
    OutsideCommit commit;
    for (const auto& [uuid, fate] : m_fates) fate.addTo(commit, uuid.text());
    if (!commit.empty()) commits.push_back(std::move(commit));
    m_places.clear();
    m_fates.clear();
  }

 private:
  std::map<Uuid, std::size_t> m_places;
  std::vector<std::pair<Uuid, EventFate>> m_fates;
};

}  // namespace

Result<std::vector<OutsideCommit>> outsideCommitsAfter(ChangeLog& log, std::int64_t& position) {
  std::vector<OutsideCommit> commits;
  Collector collector;
  std::int64_t current = 0;
  std::int64_t newest = position;
  ORLOCAL_CHECK(log.visitAfter(position, [&](const LoggedChange& change) {
    newest = change.seq;
    if (change.writer == log.writer() || change.subject != Subject::kEvent) return;
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
