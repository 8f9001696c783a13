#pragma once

#include <cstdint>
#include <string_view>

#include "store/model/model.h"

// What a message about an invitation means (RFC 5546): a table.
namespace orlocal::store {

/// METHOD of a calendar file. One that nobody knows is none: such a file holds items as any other.
enum class Method : std::uint8_t {
  kNone,
  kPublish,
  kRequest,
  kReply,
  kAdd,
  kCancel,
  kRefresh,
  kCounter,
  kDeclineCounter,
};
Method methodOf(std::string_view text);
/// Whether items of such a file are imported as those of any other.
constexpr bool isNoMessage(Method method) { return method == Method::kNone || method == Method::kPublish; }

/// How an item of a message stands beside the stored one.
enum class Beside : std::uint8_t { kNotStored, kOlder, kSame, kNewer };

/// SEQUENCE tells which of the two is newer, then when they were last revised; without that they are the same.
Beside besideStored(const Item& given, const Item& stored);

/// When the item was revised, as far as it tells.
std::optional<Moment> revisedAt(const Item& item);

enum class Meaning : std::uint8_t {
  kImport,      ///< as an item of any file
  kReplace,     ///< the organiser's newer version takes the place of the stored one
  kKnown,       ///< the same version again: answers that are known stay
  kAnswer,      ///< sets one attendee's answer
  kAdd,         ///< adds occurrences
  kCancel,      ///< cancels the item, or occurrences of it
  kTellWish,    ///< somebody asks for the newest version
  kTellChange,  ///< somebody proposes a change
  kTellNo,      ///< the organiser declines a proposal
  kStale,       ///< something newer is known
  kNotHere,     ///< it is about an item that is not in the store
};
Meaning meaningOf(Method method, Beside beside);

/// Whether only the organiser may send it.
bool isOrganizers(Method method);

}  // namespace orlocal::store
