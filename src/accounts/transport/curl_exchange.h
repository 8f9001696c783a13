#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "accounts/transport/curl_transport.h"
#include "accounts/transport/http.h"

namespace orlocal::accounts {

enum class SignIn : std::uint8_t { kNot, kBasic, kDigest, kBearer };

struct Credentials {
  SignIn way = SignIn::kNot;
  std::string user;
  std::string secret;
};

/// One request and its answer by libcurl: no redirects, one way to sign in. Connections are kept for the next one.
class CurlExchange {
 public:
  explicit CurlExchange(const TransportOptions& options);
  ~CurlExchange();
  CurlExchange(const CurlExchange&) = delete;
  CurlExchange& operator=(const CurlExchange&) = delete;

  Answer<HttpResponse> perform(const HttpRequest& request, const Credentials& credentials);

 private:
  struct Handle;
  std::unique_ptr<Handle> m_handle;
};

}  // namespace orlocal::accounts
