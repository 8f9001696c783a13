#pragma once

#include <mutex>
#include <string>

#include "accounts/memory_server.h"
#include "accounts/transport/loopback_server.h"

namespace orlocal::host {

/// A calendar server on the loopback, behind which is the one in memory. Its user is alice, with the password "secret".
class CalendarServerOnLoopback {
 public:
  CalendarServerOnLoopback() : m_loopback([this](const accounts::SeenRequest& request) { return answer(request); }) {}

  std::string url(const std::string& path = "/") const { return m_loopback.url(path); }
  /// Answers with that status from now on; 0 is as usual.
  void failWith(int status) {
    const std::lock_guard lock(m_mutex);
    m_status = status;
  }
  /// Takes nothing but this word from now on ("Basic …").
  void takeOnly(const std::string& authorization) {
    const std::lock_guard lock(m_mutex);
    m_authorization = authorization;
  }
  /// While it is asked nothing.
  accounts::MemoryServer& content() { return m_memory; }
  std::size_t asked() const { return m_loopback.seen().size(); }

  /// What it says to a request, wherever that came in.
  accounts::SentReply answer(const accounts::SeenRequest& request) {
    const std::lock_guard lock(m_mutex);
    if (m_status != 0) { return accounts::LoopbackServer::reply(m_status); }
    if (request.header("authorization") != m_authorization) {
      return accounts::LoopbackServer::reply(401, "", "WWW-Authenticate: Basic realm=\"calendars\"\r\n");
    }
    accounts::HttpRequest passedOn{request.method, kOrigin + request.target, {}, request.body};
    for (const auto& [name, value] : request.headers) { passedOn.headers.push_back({name, value}); }
    const auto response = m_memory.send(passedOn);
    if (!response) { return accounts::LoopbackServer::reply(500); }
    std::string headers;
    for (const auto& header : response->headers) { headers += header.name + ": " + header.value + "\r\n"; }
    return accounts::LoopbackServer::reply(response->status, response->body, headers);
  }

 private:
  static inline const std::string kOrigin = "https://memory.example";
  std::mutex m_mutex;
  accounts::MemoryServer m_memory;
  int m_status = 0;
  std::string m_authorization = "Basic YWxpY2U6c2VjcmV0";
  accounts::LoopbackServer m_loopback;
};

}  // namespace orlocal::host
