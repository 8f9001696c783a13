#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "accounts/transport/answer.h"
#include "store/model/model.h"

namespace orlocal::accounts {

/// A calendar as its server describes it (RFC 4791, 5.2; RFC 6578, 4). Addresses are absolute URLs as the server wrote
/// them.
struct RemoteCalendar {
  std::string url;
  std::string displayName;  ///< empty when it has none
  std::optional<store::Rgb> color;
  std::optional<std::int64_t> order;
  std::optional<std::string> description;
  bool events = true, reminders = false;  ///< the component set; a server that names none takes events and tasks
  std::optional<bool> writable;           ///< what the privileges say; none when the server does not tell
  std::string ctag;                       ///< empty when the server has none
  std::string syncToken;                  ///< likewise; "-1" and an empty element are none
  bool reportsChanges = false;            ///< has sync-collection
  std::optional<std::int64_t> mostBytes;  ///< max-resource-size
};

/// A calendar object resource: its address as the server wrote it, and its ETag as it came, quotes and all; empty when
/// the server gave none.
struct RemoteEntry {
  std::string url;
  std::string etag;
};
struct RemoteText {
  std::string url;
  std::string etag;
  std::string text;
};

/// What happened in a calendar since a token (RFC 6578, 3.2).
struct RemoteChanges {
  std::vector<RemoteEntry> changed;  ///< made or changed; may name what did not change
  std::vector<std::string> removed;  ///< as far as the server says so
  std::string token;                 ///< what to ask with next; empty when the server gave none
  bool more = false;                 ///< cut short by the server: ask again with `token`
};

struct RemoteTexts {
  std::vector<RemoteText> found;
  std::vector<std::string> missing;  ///< the server says of each that it is not there
  std::vector<std::string> unsaid;   ///< the server said nothing of these; ask for each
};

/// When a write shall happen.
struct Precondition {
  enum class Kind : std::uint8_t { kIsNew, kIsAsKnown };
  Kind kind = Kind::kIsNew;
  std::string etag;  ///< of `kIsAsKnown`

  static Precondition isNew() { return {Kind::kIsNew, ""}; }
  static Precondition isAsKnown(std::string etag) { return {Kind::kIsAsKnown, std::move(etag)}; }
};

/// What a server made of a write. What it stored may differ from what was sent all the same.
struct Written {
  std::string url;   ///< where it is; another than asked for when the server chose so
  std::string etag;  ///< empty when it gave none
};

/// What can be set of a calendar, one thing a request: servers that refuse one of several refuse all.
enum class CalendarProperty : std::uint8_t { kDisplayName, kColor, kOrder, kDescription };

struct NewCalendar {
  std::string displayName;
  bool events = true, reminders = false;
  std::optional<store::Rgb> color;
};

/// By what calendars of a list are known to be unchanged. Some servers read through a whole calendar for each mark.
enum class Marks : std::uint8_t {
  kAll,     ///< ctag and sync token
  kTokens,  ///< sync tokens alone
};

/// A calendar server, one function a request. Every address goes back to the server as it gave it.
class CalendarServer {
 public:
  virtual ~CalendarServer() = default;

  /// The calendars in a home, with all that is known of each; the home itself when it is one. `kNotFound` when there is
  /// no such home.
  virtual Answer<std::vector<RemoteCalendar>> calendars(const std::string& home, Marks marks) = 0;
  virtual Answer<RemoteCalendar> calendar(const std::string& url) = 0;

  /// `kInvalidToken` when the server says, or may mean, that the token is none; some say nothing and list everything.
  /// An empty token asks for everything.
  virtual Answer<RemoteChanges> changesSince(const std::string& calendar, const std::string& token) = 0;
  /// Everything that is in the calendar.
  virtual Answer<std::vector<RemoteEntry>> entries(const std::string& calendar) = 0;
  /// The texts of these, together (RFC 4791, 7.9). At most a few hundred. Each comes back by the address that was asked
  /// for; line ends are those of XML.
  virtual Answer<RemoteTexts> texts(const std::string& calendar, std::span<const std::string> urls) = 0;
  virtual Answer<RemoteText> text(const std::string& url) = 0;

  /// `kPrecondition` when it is not so, `kClash` when another item has its UID.
  virtual Answer<Written> put(const std::string& url, const std::string& text, const Precondition& condition) = 0;
  /// `etag` as known; empty when it may be whatever it is. `kNotFound` when it is gone already, for which some servers
  /// say `kPrecondition`.
  virtual Answer<void> remove(const std::string& url, const std::string& etag) = 0;

  /// Gives the calendar as it then is, since servers take some of what they are told and say nothing of the rest.
  virtual Answer<RemoteCalendar> makeCalendar(const std::string& url, const NewCalendar& calendar) = 0;
  /// `value` as text: "#RRGGBBAA" of a colour. `kUnsupported` when the server does not keep such a property; some say
  /// that all went well.
  virtual Answer<void> setProperty(const std::string& calendar, CalendarProperty property,
                                   const std::string& value) = 0;
  virtual Answer<void> removeCalendar(const std::string& url) = 0;
};

}  // namespace orlocal::accounts
