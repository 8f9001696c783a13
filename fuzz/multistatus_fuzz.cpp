#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

#include "accounts/dav/dav_server.h"
#include "temporary_folder.h"

// Any bytes as a server's answer: whatever is asked, reading it never crashes or hangs, and what is found lives
// somewhere.

namespace orlocal::accounts {
namespace {

/// Gives the same answer to everything.
class OneAnswer final : public Transport {
 public:
  explicit OneAnswer(HttpResponse answer) : m_answer(std::move(answer)) {}
  Answer<HttpResponse> send(const HttpRequest& request) override {
    m_answer.url = request.url;
    return m_answer;
  }

 private:
  HttpResponse m_answer;
};

void require(bool holds) {
  if (!holds) { std::abort(); }
}

void askForEverything(DavServer& server) {
  const std::string calendar = "https://dav.example.org/cal/";
  if (const auto found = server.calendars(calendar, Marks::kAll)) {
    for (const RemoteCalendar& one : *found) { require(!one.url.empty()); }
  }
  if (const auto changes = server.changesSince(calendar, "token")) {
    for (const RemoteEntry& one : changes->changed) { require(one.url.starts_with("http")); }
  }
  static_cast<void>(server.entries(calendar));
  const std::vector<std::string> asked{calendar + "a.ics", calendar + "b.ics"};
  if (const auto texts = server.texts(calendar, asked)) {
    require(texts->found.size() + texts->missing.size() + texts->unsaid.size() == asked.size());
  }
  static_cast<void>(server.put(asked.front(), "", Precondition::isNew()));
  static_cast<void>(server.makeCalendar(calendar, {"name", true, true, store::Rgb{}}));
}

}  // namespace
}  // namespace orlocal::accounts

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  for (const int status : {207, 403}) {
    orlocal::accounts::OneAnswer transport({status, {}, std::string(orlocal::fuzz::textOf(data, size)), ""});
    orlocal::accounts::DavServer server(transport);
    orlocal::accounts::askForEverything(server);
  }
  return 0;
}
