#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/result.h"
#include "store/calendar_store.h"

namespace orlocal::host {

/// What somebody typed to name an event, series or reminder, and what narrows it.
struct ItemWords {
  /// An identifier (the item's, or its UID in calendar files), at least four characters that one begins or ends with,
  /// or a title. What fits best counts: whole identifiers, the title to the letter, the title without case, a part of
  /// an identifier, what the title begins with, words in it.
  std::string what;
  std::vector<std::string> calendars = {};            ///< as `calendarsTitled` takes them; all of them when empty
  std::optional<store::LocalDay> day = std::nullopt;  ///< an event that goes on then, a reminder that is due then
  std::optional<std::string> time = std::nullopt;     ///< "09:00", when an occurrence of that day starts
  std::optional<store::ItemKind> kind = std::nullopt;
};

/// The one item that was meant.
struct ChosenItem {
  std::shared_ptr<const store::Item> item;  ///< an event, a series or a reminder; never a changed occurrence
  store::Calendar calendar;
  /// The one that a day or the identifier of a changed occurrence names; none where neither did.
  std::optional<store::Occurrence> occurrence;
};

/// Finds it. `kNotFound` when nothing fits, `kRefused` when several things fit equally well: the sentence lists them
/// and says how to choose.
Result<ChosenItem> chooseItem(store::CalendarStore& store, const store::Zone& viewer, const ItemWords& words);

/// Enough of the item's identifier to type: its last eight characters, as the first ones only tell when it was made.
std::string shortIdentifier(const store::Item& item);

/// How well `what` names the item: smaller is better, none when it does not. Texts are compared as `caseFolded`.
std::optional<int> fitOf(std::string_view what, const store::Item& item);

}  // namespace orlocal::host
