#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "accounts/sync/guarded_writes.h"
#include "accounts/sync/server_text.h"
#include "accounts/sync/sync_context.h"

namespace orlocal::accounts {

/// Carries what changed here to the server of one account.
///
/// What goes out is written down first, so that a sync that is cut short knows its own writes again. What was written
/// is to be fetched afterwards, as servers keep something else than they were sent.
class Sending {
 public:
  /// `mirrors` are the account's.
  Sending(SyncContext& context, const std::vector<store::Mirror>& mirrors);

  /// Everything that is unsent. A failure is one of the account: what is left is tried by a later sync.
  Answer<void> run();

  /// Where something was written, also by a run that failed.
  const std::set<store::MirrorId>& written() const { return m_written; }

 private:
  /// What is to be done about one item.
  struct Task {
    enum class Kind { kNothing, kLeave, kCreate, kUpdate, kRemove };
    Kind kind = Kind::kNothing;
    store::ItemId item = 0;  ///< the main one
    std::string title;
    const store::Mirror* mirror = nullptr;  ///< whose server is to be told
    store::Resource resource;
    std::string text;       ///< to be sent
    bool cutApart = false;  ///< what it cuts off goes out by itself from now on
    bool goesOn = false;    ///< there is more to do about the item afterwards
  };

  Answer<void> one(store::ItemId item);
  /// Looks at the item and writes down what is going to be sent.
  Answer<Task> plan(store::ItemId item);
  Answer<Task> planned(store::ItemWriter& writer, store::ItemId item);
  Answer<Task> plannedUpdate(store::ItemWriter& writer, Task task, const Standing& mine);
  Answer<void> create(Task& task);
  Answer<void> update(Task& task);
  Answer<void> remove(Task& task);
  Answer<void> wasWritten(Task& task, const Written& written);
  /// The server has another state than we knew: it is taken in, and merged with ours.
  Answer<void> takeInFirst(const Task& task);
  /// What the server refuses for good: the item's own trouble, or an end of the account's sync.
  Answer<void> refused(Task& task, const ServerFailure& failure);
  const store::Mirror* mirrorOf(store::CalendarId calendar) const;
  const store::Mirror* mirrorWith(store::MirrorId id) const;

  SyncContext& m_context;
  const std::vector<store::Mirror>& m_mirrors;
  GuardedWrites m_writes;
  std::set<store::MirrorId> m_written;
};

}  // namespace orlocal::accounts
