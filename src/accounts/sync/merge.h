#pragma once

#include <string>
#include <vector>

#include "store/model/model.h"

namespace orlocal::accounts {

/// One state of an item: a server's text as it came, and what the store made of it. Of the store's own state there is
/// no text but the one that is made of the item.
struct ItemState {
  std::string text;  ///< empty for the store's own
  store::WholeItem item;
};

/// What two changes of one item come to.
struct MergedItem {
  /// The server's text with our changes in it; all that was not changed here is as the server wrote it.
  std::string text;
  /// Whether our changes left a trace in it: then it is to be sent.
  bool differs = false;
  /// What both changed in different ways: there the text is the server's. Names as `kItemFields` has them, each once;
  /// those of a changed occurrence have its original start behind them.
  std::vector<std::string> conflicts;
};

/// Merges by field. `base` is the state that both changes started from; null when there is none, and then every
/// field that differs is a conflict.
///
/// `sent` is what was sent without an answer: a field in which the server has what was sent was not changed there.
///
/// Start and end, repetition and exceptions hang together: when one side moved the series or changed its rule, the
/// other's exceptions and changed occurrences speak of times that are no more. A series that one side has only ended
/// sooner still has those before its new end.
MergedItem merged(const ItemState* base, const ItemState& theirs, const store::WholeItem& mine,
                  const store::WholeItem* sent = nullptr);

/// The text of `current` with these fields of `other` in it, and nothing else of it; names as in
/// `MergedItem::conflicts`. All in which they differ when a name stands for the whole item (`kWholeItem`).
std::string withFields(const ItemState& current, const store::WholeItem& other, const std::vector<std::string>& fields);

}  // namespace orlocal::accounts
