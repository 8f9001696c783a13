#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace orlocal::accounts {

/// What came in, as it was written.
struct SeenRequest {
  std::string method, target;
  std::map<std::string, std::string> headers;  ///< names in small letters
  std::string body;
  int connection = 0;  ///< from 1

  std::string header(const std::string& name) const {
    const auto found = headers.find(name);
    return found == headers.end() ? "(none)" : found->second;
  }
};

struct SentReply {
  std::string bytes;
  bool closes = false;  ///< else the connection stays
  bool waits = false;   ///< sends no more until the client has gone
};

/// A server on the loopback that says what a test tells it to, byte for byte.
class LoopbackServer {
 public:
  using Handler = std::function<SentReply(const SeenRequest&)>;
  explicit LoopbackServer(Handler handler);
  LoopbackServer(const LoopbackServer&) = delete;
  LoopbackServer& operator=(const LoopbackServer&) = delete;
  ~LoopbackServer();

  int port() const { return m_port; }
  std::string url(const std::string& path) const { return "http://127.0.0.1:" + std::to_string(m_port) + path; }
  std::vector<SeenRequest> seen() const;

  /// "HTTP/1.1 STATUS …" with a length.
  static SentReply reply(int status, const std::string& body = "", const std::string& headers = "");

 private:
  void accept();
  void serve(int socket, int number);

  Handler m_handler;
  int m_listener = -1;
  int m_port = 0;
  std::atomic<bool> m_ends{false};
  mutable std::mutex m_mutex;
  std::vector<SeenRequest> m_seen;
  std::vector<int> m_sockets;
  std::vector<std::thread> m_connections;
  std::thread m_acceptor;
};

}  // namespace orlocal::accounts
