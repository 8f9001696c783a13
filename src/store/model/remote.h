#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "store/model/model.h"

// What the store keeps for whoever carries its calendars to a server and back. It is kept beside the items, so that one
// transaction changes both; what the texts mean is the carrier's affair.
namespace orlocal::store {

using MirrorId = std::int64_t;
using ResourceId = std::int64_t;
using ConflictId = std::int64_t;

/// What makes a source a server's: an account, or the address of a subscription.
struct Remote {
  SourceId source = 0;
  std::string settings;  ///< what the user said; changed by commands
  std::string state;     ///< what was found out; changed by each sync

  friend bool operator==(const Remote&, const Remote&) = default;
};

/// A calendar of a server and the one of the store that stands for it.
struct Mirror {
  MirrorId id = 0;
  SourceId source = 0;
  CalendarId calendar = 0;  ///< may be gone from the store: then it is to be removed on the server
  std::string url;          ///< empty while the server does not have it yet
  std::string state;

  friend bool operator==(const Mirror&, const Mirror&) = default;
};

/// An item of a server and the one of the store that stands for it.
struct Resource {
  ResourceId id = 0;
  MirrorId mirror = 0;
  std::string url;                     ///< as the server wrote it; one resource for each in a mirror
  std::string key;                     ///< the same in the one spelling that is compared
  std::string etag;                    ///< as it came; empty when none is known
  std::optional<ItemId> item;          ///< none where the text is nothing that the store could take
  std::string uid;                     ///< the server's
  std::uint64_t digest = 0;            ///< of the item as it was when it agreed with `text`
  bool ours = false;                   ///< whether its last change was made here
  std::string text;                    ///< the server's, as it came; empty before the server had it
  std::optional<std::string> sent;     ///< what went out last and has not been answered for certain
  std::optional<std::string> trouble;  ///< why it is not in the store, or not on the server

  friend bool operator==(const Resource&, const Resource&) = default;
};

/// Two changes of one item that cannot both stand. The server's stands in the store; ours is kept here until somebody
/// decides.
struct Conflict {
  ConflictId id = 0;
  MirrorId mirror = 0;
  std::string key;             ///< of the resource
  std::optional<ItemId> item;  ///< none when the server's state is that there is none
  std::string title;
  std::string fields;                 ///< names, one a line
  std::optional<std::string> mine;    ///< iCalendar text; none when it was removed here
  std::optional<std::string> theirs;  ///< none when it was removed there
  Moment made;

  friend bool operator==(const Conflict&, const Conflict&) = default;
};

}  // namespace orlocal::store
