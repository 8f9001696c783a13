#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "accounts/dav/xml.h"
#include "accounts/transport/http.h"

namespace orlocal::accounts {

/// What servers in the world do otherwise than they should. All off, the server is strict (RFC 4791, 6578).
struct Quirks {
  // Texts and ETags.
  bool rewritesTexts = false;  ///< stores another text of the same meaning: unfolded, with its own PRODID and a CLASS
  bool recyclesEtags = false;  ///< "v1" for each new item, so that one made again has an old ETag
  bool givesNoEtagInPut = false;

  // Preconditions.
  bool overwritesNew = false;       ///< `If-None-Match: *` is not looked at
  bool createsMissing = false;      ///< nor is `If-Match` where nothing is
  bool removesWhatChanged = false;  ///< nor is that of DELETE
  bool missesPrecondition = false;  ///< DELETE of what is not there is 412 when it has an `If-Match`, not 404

  // Change reports.
  bool hasNoSync = false;  ///< no sync-collection, no token
  bool hasNoCtag = false;
  bool hidesWhatCameAndWent = false;   ///< what was made and removed since a token is in no report
  bool countsTokensInSeconds = false;  ///< "-1" while empty; gives what happened in the token's own second again
  enum class BadToken : std::uint8_t { kSays403, kSays409, kFails500, kSaysBare403, kListsAll };
  BadToken badToken = BadToken::kSays403;
  std::size_t syncPage = 0;  ///< so many changes at once, the rest behind a 507; 0 is all
  bool unescapedSyncHrefs = false;
  bool relativeHrefs = false;

  // Multiget.
  enum class MissingItem : std::uint8_t { kIsSaid, kIsLeftOut, kFailsAll };
  MissingItem missingItem = MissingItem::kIsSaid;

  // Calendars and items.
  bool choosesHrefs = false;       ///< a new item is named after its UID, whatever was asked for
  bool takesSameUid = false;       ///< two items may have one UID
  bool ignoresComponents = false;  ///< each calendar takes events and tasks, whatever was asked for
  bool ignoresColorOfNew = false;
  bool tellsNoPrivileges = false;
};

/// A calendar server in memory, as a judge of those who talk to one: what it was asked, what it holds, and what went
/// wrong on the way is in the test's hands. It lives at https://memory.example and knows one user.
class MemoryServer final : public Transport {
 public:
  struct Item {
    std::string text;
    std::string etag;
    std::string uid;
  };
  struct Change {
    std::uint64_t revision = 0;
    std::int64_t second = 0;
    std::string name;
  };
  struct Calendar {
    std::uint64_t number = 0;  ///< one made again at the same place is another
    std::string displayName = {}, color = {}, order = {}, description = {};
    bool events = true, reminders = true, readOnly = false;
    std::map<std::string, Item> items = {};  ///< by decoded name
    std::vector<Change> changes = {};        ///< in their order
  };
  /// All that a backup holds.
  struct State {
    std::map<std::string, Calendar> calendars;  ///< by decoded name
    std::uint64_t revision = 0;
  };

  struct LoggedRequest {
    std::string method, url, body;
    int status = 0;  ///< 0 when the answer was lost
  };

  /// Something that goes wrong with a request to come.
  struct Fault {
    enum class When : std::uint8_t {
      kBefore,  ///< nothing is done; lost is no connection
      kWithin,  ///< nothing is done; lost is a connection that broke as the request went out
      kAfter,   ///< it is done, and the answer does not come through
    };
    When when = When::kBefore;
    int status = 0;           ///< what is answered instead; 0: the answer is lost
    std::string method = {};  ///< counts only such requests; empty is all
    std::size_t nth = 1;      ///< of those to come
    std::size_t times = 1;    ///< so many in a row
  };

  Quirks quirks;
  std::int64_t second = 1'800'000'000;   ///< the server's clock
  std::optional<std::size_t> mostBytes;  ///< max-resource-size
  /// Called before each request is looked at: the moment in which another client does something.
  std::function<void(const HttpRequest&)> beforeEach;

  Answer<HttpResponse> send(const HttpRequest& request) override;

  static std::string address(std::string_view path) { return "https://memory.example" + std::string(path); }
  static std::string principal() { return address("/principals/ann/"); }
  static std::string home() { return address("/calendars/ann/"); }

  // Another client's hand, or the owner's: what it does is refused by nobody. Addresses are whole.
  std::string addCalendar(const std::string& name) { return addCalendar(name, {.displayName = name}); }
  std::string addCalendar(const std::string& name, const Calendar& calendar);
  void dropCalendar(const std::string& url);
  /// The calendar, to be changed as one likes but for its items; throws for one that there is not.
  Calendar& calendarAt(const std::string& url);
  void renameCalendar(const std::string& url, const std::string& title) { calendarAt(url).displayName = title; }
  /// Gives the item's ETag.
  std::string putAs(const std::string& url, const std::string& text);
  void removeAs(const std::string& url);
  const Item* itemAt(const std::string& url) const;
  std::size_t itemCount(const std::string& calendar) { return calendarAt(calendar).items.size(); }

  State snapshot() const { return m_state; }
  void restore(State state) { m_state = std::move(state); }

  void failNext(Fault fault) { m_faults.push_back(std::move(fault)); }

  const std::vector<LoggedRequest>& log() const { return m_log; }
  std::size_t count(std::string_view method) const;
  void forgetLog() { m_log.clear(); }

 private:
  /// Where a request goes: "/calendars/ann/NAME/ITEM", decoded.
  struct Place {
    enum class Kind : std::uint8_t { kRoot, kPrincipal, kHome, kCalendar, kItem, kNowhere };
    Kind kind = Kind::kNowhere;
    std::string calendar;
    std::string item;
  };
  static Place placeOf(const std::string& url);
  Calendar* findCalendar(const Place& place);
  const Item* findItem(const Place& place) const;

  HttpResponse handle(const HttpRequest& request);
  HttpResponse handleGet(const Place& place);
  HttpResponse handlePut(const HttpRequest& request, const Place& place);
  HttpResponse handleDelete(const HttpRequest& request, const Place& place);
  HttpResponse handleMkCalendar(const HttpRequest& request, const Place& place);
  HttpResponse handlePropPatch(const HttpRequest& request, const Place& place);
  HttpResponse handlePropFind(const HttpRequest& request, const Place& place);
  HttpResponse handleReport(const HttpRequest& request, const Place& place);
  HttpResponse reportChanges(const XmlElement& report, const Place& place);
  HttpResponse reportTexts(const XmlElement& report);

  std::string store(Calendar& calendar, const std::string& name, const std::string& text);
  void note(Calendar& calendar, const std::string& name);
  std::string tokenOf(const Calendar& calendar, std::uint64_t revision) const;
  /// The revision that a token stands for; none for a bad one.
  std::optional<std::uint64_t> revisionOf(const Calendar& calendar, std::string_view token) const;
  std::string hrefOf(const Place& place, bool inSync = false) const;
  /// Writes one resource of a multistatus with the properties asked for.
  void writeResource(XmlWriter& writer, const Place& place, const XmlElement& asked, bool inSync = false);
  /// Writes a property; whether the resource has it.
  bool writeProperty(XmlWriter& writer, const Place& place, const XmlElement& asked);
  bool writeCalendarProperty(XmlWriter& writer, const Calendar& calendar, const XmlElement& asked);

  State m_state;
  std::vector<Fault> m_faults;
  std::vector<LoggedRequest> m_log;
};

}  // namespace orlocal::accounts
