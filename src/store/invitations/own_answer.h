#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/result.h"
#include "store/edits/item_writer.h"
#include "store/model/model.h"

// One's own part in an invitation.
namespace orlocal::store {

/// Under which of `addresses` somebody is invited to the item; none when under none of them, and for its organiser.
std::optional<std::string> invitedUnder(const Item& item, const std::vector<std::string>& addresses);

/// Whether the invitation was not answered yet under `address`, and was not cancelled.
bool waitsForAnswer(const Item& item, const std::string& address);

/// The recurrence id of the occurrence of a series that its rule puts at `original` for `viewer`.
Result<std::optional<CalendarTime>> recurrenceIdOf(const Item& series, Moment original, const Zone& viewer);

struct OwnAnswer {
  std::string address;  ///< under which one is invited
  Attendee::Status status = Attendee::Status::kAccepted;
  std::optional<std::string> comment;
};

/// The message that carries the answer to the organiser (METHOD:REPLY; RFC 5546, 3.2.3 and 3.4.3). `item` is what is
/// answered: the event, the reminder, the series, or a changed occurrence. Fails when nobody organises it.
Result<std::string> replyText(const Item& item, const OwnAnswer& answer);

/// Sets one's own answer in the store, and nothing else: not the times, not when the item was changed. Of a series
/// `original`, when given, is the recurrence id of the one occurrence that is answered. `send` is given the message
/// before the writer commits; its failure leaves the store as it was. `kReadOnly` where the calendar allows no changes.
Status answerInvitation(ItemWriter& writer, const Item& item, const std::optional<CalendarTime>& original,
                        const OwnAnswer& answer, const std::function<Status(const std::string& message)>& send);

}  // namespace orlocal::store
