#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "accounts/sync/server_text.h"
#include "accounts/sync/sync_context.h"

namespace orlocal::accounts {

/// Takes what a server has into the store: each call is one transaction, in which items and what is known of the
/// server's change together. What was changed here meanwhile is merged with it.
class TakingIn {
 public:
  /// `broken`: the server could not say what happened since the last sync. Then older states and missing items may come
  /// from a backup that was put back there: of what was written here, nothing is given up without a word.
  TakingIn(SyncContext& context, const store::Mirror& mirror, bool broken = false)
      : m_context(context), m_mirror(mirror), m_broken(broken) {}

  Answer<void> texts(std::span<const RemoteText> texts);
  /// Resources of which the server has said, each by itself, that they are not there.
  Answer<void> missing(std::span<const std::string> keys);
  /// The server does not allow what was done here to a resource: its own state comes back, and ours becomes a conflict.
  Answer<void> putBack(const std::string& key);

 private:
  /// A resource while its new text is taken in.
  struct Arrival {
    store::ItemWriter& writer;
    store::Resource resource;  ///< as it was known; then as it is written
    const RemoteText& text;
    const ServerText& theirs;
    std::optional<Standing> mine;
    bool own = false;  ///< what the server made of a text of ours: nothing that was received
  };

  Answer<void> takeIn(store::ItemWriter& writer, const RemoteText& text);
  Answer<void> findMine(Arrival& arrival);
  Answer<void> removedHere(Arrival& arrival);
  Answer<void> merge(Arrival& arrival);
  Answer<void> put(Arrival& arrival, const ServerText& content);
  Answer<void> takeAsTheirs(Arrival& arrival);
  /// What the store could not show.
  Answer<void> keepAside(Arrival& arrival, std::optional<std::string> trouble);
  /// Where the server does not say what is allowed, a refusal says it of the whole calendar.
  Answer<void> learnRights(store::ItemWriter& writer);
  Answer<void> gone(store::ItemWriter& writer, const std::string& key);
  /// The UID under which the store has it: not the server's where another resource of the calendar has the same.
  Answer<std::optional<std::string>> uidHere(Arrival& arrival, const ServerText& content);
  bool isOlder(const Arrival& arrival) const;
  Answer<void> addConflict(store::ItemWriter& writer, store::Conflict conflict);

  SyncContext& m_context;
  const store::Mirror& m_mirror;
  bool m_broken;
};

}  // namespace orlocal::accounts
