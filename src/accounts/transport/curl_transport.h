#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "accounts/transport/http.h"
#include "accounts/transport/secret.h"

namespace orlocal::accounts {

struct TransportOptions {
  std::string user;  ///< empty: nobody signs in
  /// Asked when a request first needs it, and once more with `again` when a server refused what it gave.
  std::function<Result<Secret>(bool again)> secret;
  /// "https://dav.example.org": what `user` and the secret are for; nothing else gets them. Empty while an account is
  /// being found: then it is the origin that each request names, and none that it is redirected to.
  std::string origin;
  std::optional<std::filesystem::path> caFile;  ///< in place of the system's certificates
  std::chrono::milliseconds connectTimeout{15'000};
  /// A request that brings nothing for so long has failed.
  std::chrono::seconds silence{60};
  /// What brings a little now and then ends after this.
  std::chrono::seconds longest{1800};
  std::size_t mostBytes = 256U << 20U;  ///< of an answer, after decompression
  const std::atomic<bool>* stop = nullptr;
};

/// libcurl: TLS always verified, Basic and Digest, gzip, HTTP/1.1 and 2, no other protocol than http and https.
///
/// Basic is sent at once over https and to the loopback; elsewhere only when the server asks for nothing better. A
/// server that offers Digest and then refuses the right answer to it gets Basic, over https or on the loopback alone. A
/// token goes nowhere else.
///
/// A request goes out again when a kept connection turns out to be dead. Is it a write, and refused the second time,
/// then that counts as an answer that was lost: the first may have done it.
class CurlTransport final : public Transport {
 public:
  explicit CurlTransport(TransportOptions options);
  ~CurlTransport() override;
  CurlTransport(const CurlTransport&) = delete;
  CurlTransport& operator=(const CurlTransport&) = delete;

  Answer<HttpResponse> send(const HttpRequest& request) override;

 private:
  struct State;
  std::unique_ptr<State> m_state;
};

}  // namespace orlocal::accounts
