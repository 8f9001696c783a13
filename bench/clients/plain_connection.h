#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "accounts/transport/http.h"

namespace orlocal::bench {

/// Both ways, headers included, as they go over the wire.
struct Bytes {
  std::uint64_t sent = 0, received = 0;
};

/// The floor: libcurl alone, one connection that is kept where the server keeps it, and bodies that are thrown away.
/// What a request takes here is what the server itself needs.
class PlainConnection {
 public:
  PlainConnection();
  ~PlainConnection();
  PlainConnection(const PlainConnection&) = delete;
  PlainConnection& operator=(const PlainConnection&) = delete;

  /// Throws when no success is answered. `body` is where what comes is kept, if anywhere.
  void send(const accounts::HttpRequest& request, const std::string& user, const std::string& password,
            std::string* body = nullptr);

  const Bytes& bytes() const { return m_bytes; }

 private:
  struct CleanUp {
    void operator()(void* handle) const;
  };
  std::unique_ptr<void, CleanUp> m_handle;
  Bytes m_bytes;
};

/// The same request, so that it does the same when it is sent again: without a condition, which would not hold any
/// more, and with another title in what it writes (see `Client::changeHere`).
accounts::HttpRequest again(accounts::HttpRequest request, int number);

/// A calendar text whose first title is another one.
std::string withTitle(std::string text, const std::string& title);

}  // namespace orlocal::bench
