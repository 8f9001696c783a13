#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/commands/describing/item_json.h"
#include "store/calendar_store.h"
#include "store/model/remote.h"

namespace orlocal::host {

/// All that is known of an event, a series, an occurrence or a reminder.
struct ItemFacts {
  store::Item item;  ///< of a changed occurrence, this
  std::optional<store::Occurrence>
      occurrence;                       ///< the one that is shown; of an event the next one where none was named
  std::vector<store::Occurrence> next;  ///< of a series, those to come
  std::vector<store::Item> changed;     ///< its changed occurrences
  bool unsent = false;                  ///< changed here, and not carried to its server yet
  std::vector<store::ConflictId> conflicts;
};

/// Gathers them: `item` or, in it, the occurrence; `next` to come at most.
Result<ItemFacts> factsOf(store::CalendarStore& store, const store::Item& item,
                          const std::optional<store::Occurrence>& occurrence, std::size_t next);

/// A line of the card that `show` prints; a text with line breaks has several.
struct CardLine {
  std::string label;
  std::string text;

  friend bool operator==(const CardLine&, const CardLine&) = default;
};

/// The lines of a card, without the title; what is not known has none.
std::vector<CardLine> cardOf(const ItemFacts& facts, const CalendarNames& names, const store::Zone& viewer);

/// The same in lines of at most `width` cells: each text folded behind its label, which is filled up to its column in
/// the first of its lines and blank in the others.
std::vector<CardLine> foldedCard(const std::vector<CardLine>& card, std::size_t width);

}  // namespace orlocal::host
