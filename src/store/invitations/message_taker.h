#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/result.h"
#include "store/edits/item_writer.h"
#include "store/icalendar/icalendar_reader.h"
#include "store/invitations/meaning.h"

namespace orlocal::store {

/// What became of an item of a message.
struct TakenMessage {
  enum class What : std::uint8_t {
    kImport,   ///< nothing of the sort is stored, or it is no message: it is to be imported as any other
    kDone,     ///< `outcome` says what it did
    kTold,     ///< nothing is to be done but to tell `words`
    kRefused,  ///< `words` say why
  };
  What what = What::kImport;
  PutOutcome outcome = PutOutcome::kUnchanged;
  std::string words;                  ///< for people; empty when there is nothing to tell
  std::optional<std::string> title;   ///< of the item that it is about
  std::optional<CalendarTime> start;  ///< of it, or of the occurrence that the message names
  CalendarId calendar = 0;            ///< where that is stored
  ItemId id = 0;                      ///< its row
};

/// Gives messages about invitations (RFC 5546) their meaning, within a writer's turn. The items that they are about are
/// looked for in `calendars`, in their order.
class MessageTaker {
 public:
  MessageTaker(ItemWriter& writer, std::vector<Calendar> calendars)
      : m_writer(writer), m_calendars(std::move(calendars)) {}

  /// An event, a reminder or a series of a message, with the changed occurrences that a REQUEST has for it.
  Result<TakenMessage> take(Method method, Item& given, std::vector<Item>& changed);

 private:
  /// Where the item stands that a message is about.
  struct Place {
    CalendarId calendar = 0;
    WholeItem whole;
  };
  Result<std::optional<Place>> find(const Item& given);

  Result<TakenMessage> replace(Place& place, Item& given, std::vector<Item>& changed, bool answersStay);
  Result<TakenMessage> answer(Place& place, const Item& given);
  Result<TakenMessage> cancel(Place& place, const Item& given);
  Result<TakenMessage> addOccurrences(Place& place, const Item& given);
  Result<TakenMessage> put(Place& place, std::string words = {});

  ItemWriter& m_writer;
  std::vector<Calendar> m_calendars;
};

}  // namespace orlocal::store
