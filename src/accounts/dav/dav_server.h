#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "accounts/dav/calendar_server.h"
#include "accounts/dav/multistatus.h"
#include "accounts/transport/http.h"
#include "store/time/clock.h"

namespace orlocal::accounts {

/// A server that speaks CalDAV (RFC 4791, 6578).
class DavServer final : public CalendarServer {
 public:
  /// `now` is what dates in answers are compared with.
  explicit DavServer(Transport& transport, std::function<store::Moment()> now = store::now)
      : m_transport(transport), m_now(std::move(now)) {}

  Answer<std::vector<RemoteCalendar>> calendars(const std::string& home, Marks marks) override;
  Answer<RemoteCalendar> calendar(const std::string& url) override;
  Answer<RemoteChanges> changesSince(const std::string& calendar, const std::string& token) override;
  Answer<std::vector<RemoteEntry>> entries(const std::string& calendar) override;
  Answer<RemoteTexts> texts(const std::string& calendar, std::span<const std::string> urls) override;
  Answer<RemoteText> text(const std::string& url) override;
  Answer<Written> put(const std::string& url, const std::string& text, const Precondition& condition) override;
  Answer<void> remove(const std::string& url, const std::string& etag) override;
  Answer<RemoteCalendar> makeCalendar(const std::string& url, const NewCalendar& calendar) override;
  Answer<void> setProperty(const std::string& calendar, CalendarProperty property, const std::string& value) override;
  Answer<void> removeCalendar(const std::string& url) override;

 private:
  /// Any answer that is no refusal.
  Answer<HttpResponse> send(const char* method, const std::string& url, std::vector<HttpHeader> headers,
                            std::string body);
  /// A request with an XML body, whose answer must be a multistatus.
  Answer<Multistatus> ask(const char* method, const std::string& url, const char* depth, std::string body,
                          std::string& answeredFrom);
  /// The same of a long list: each response is given on when it has been read, with `answeredFrom` set, and counts only
  /// when all was well in the end. Gives the sync token.
  Answer<std::string> askForEach(const char* method, const std::string& url, const char* depth, std::string body,
                                 std::string& answeredFrom, const std::function<void(DavResponse)>& take);
  /// A request that changes something: an answer of many statuses must refuse nothing.
  Answer<HttpResponse> write(const char* method, const std::string& url, std::vector<HttpHeader> headers,
                             std::string body);
  /// Sets what the server left out when it made the calendar; whether there was any.
  bool setMissing(const RemoteCalendar& made, const NewCalendar& wanted);

  Transport& m_transport;
  std::function<store::Moment()> m_now;
};

}  // namespace orlocal::accounts
