#include "accounts/transport/loopback_server.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <utility>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include "base/text.h"

namespace orlocal::accounts {
namespace {

bool receive(int socket, std::string& bytes) {
  std::array<char, 1 << 16> piece{};
  const ssize_t count = ::recv(socket, piece.data(), piece.size(), 0);
  if (count > 0) { bytes.append(piece.data(), static_cast<std::size_t>(count)); }
  return count > 0;
}

void sendAll(int socket, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (count <= 0) { return; }
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
}

SeenRequest headOf(std::string_view head) {
  SeenRequest request;
  const auto line = [&] {
    const std::string_view found = head.substr(0, head.find("\r\n"));
    head.remove_prefix(std::min(head.size(), found.size() + 2));
    return found;
  };
  const std::string_view first = line();
  const std::size_t blank = first.find(' ');
  request.method = first.substr(0, blank);
  request.target = first.substr(blank + 1, first.rfind(' ') - blank - 1);
  while (!head.empty()) {
    const std::string_view field = line();
    std::string name(field.substr(0, field.find(':')));
    std::transform(name.begin(), name.end(), name.begin(), asciiLower<char>);
    request.headers[name] = trimmed(field.substr(field.find(':') + 1));
  }
  return request;
}

}  // namespace

LoopbackServer::LoopbackServer(Handler handler) : m_handler(std::move(handler)) {
  m_listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = ::htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  if (::bind(m_listener, reinterpret_cast<sockaddr*>(&address), length) != 0 || ::listen(m_listener, 16) != 0 ||
      ::getsockname(m_listener, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
    throw std::runtime_error("there is no port on the loopback");
  }
  m_port = ::ntohs(address.sin_port);
  m_acceptor = std::thread([this] { accept(); });
}

LoopbackServer::~LoopbackServer() {
  m_ends = true;
  ::shutdown(m_listener, SHUT_RDWR);
  m_acceptor.join();
  {
    const std::lock_guard lock(m_mutex);
    for (const int socket : m_sockets) { ::shutdown(socket, SHUT_RDWR); }
  }
  for (std::thread& connection : m_connections) { connection.join(); }
  for (const int socket : m_sockets) { ::close(socket); }
  ::close(m_listener);
}

std::vector<SeenRequest> LoopbackServer::seen() const {
  const std::lock_guard lock(m_mutex);
  return m_seen;
}

SentReply LoopbackServer::reply(int status, const std::string& body, const std::string& headers) {
  return {"HTTP/1.1 " + std::to_string(status) + " Words\r\nContent-Length: " + std::to_string(body.size()) + "\r\n" +
              headers + "\r\n" + body,
          false, false};
}

void LoopbackServer::accept() {
  while (!m_ends) {
    const int socket = ::accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
    if (socket < 0) { continue; }
    const std::lock_guard lock(m_mutex);
    m_sockets.push_back(socket);
    m_connections.emplace_back([this, socket, number = static_cast<int>(m_sockets.size())] { serve(socket, number); });
  }
}

void LoopbackServer::serve(int socket, int number) {
  std::string bytes;
  while (true) {
    std::size_t end = 0;
    while ((end = bytes.find("\r\n\r\n")) == bytes.npos) {
      if (!receive(socket, bytes)) { return; }
    }
    SeenRequest request = headOf(std::string_view(bytes).substr(0, end));
    request.connection = number;
    bytes.erase(0, end + 4);
    const std::string length = request.header("content-length");
    const std::size_t size = length == "(none)" ? 0 : std::stoul(length);
    while (bytes.size() < size) {
      if (!receive(socket, bytes)) { return; }
    }
    request.body = bytes.substr(0, size);
    bytes.erase(0, size);
    {
      const std::lock_guard lock(m_mutex);
      m_seen.push_back(request);
    }
    const SentReply reply = m_handler(request);
    sendAll(socket, reply.bytes);
    if (reply.waits) {
      while (receive(socket, bytes)) {}
      return;
    }
    if (reply.closes) {
      ::shutdown(socket, SHUT_RDWR);
      return;
    }
  }
}

}  // namespace orlocal::accounts
