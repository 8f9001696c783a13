#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "accounts/transport/answer.h"

namespace orlocal::accounts {

struct HttpHeader {
  std::string name;  ///< compared without case
  std::string value;
};

struct HttpRequest {
  std::string method;               ///< "PROPFIND"
  std::string url;                  ///< absolute, http or https, without user and fragment
  std::vector<HttpHeader> headers;  ///< beside those that the transport makes: Host, Content-Length, Authorization, …
  std::string body;
};

/// What a server said. Any status is an answer; only when none came is there a failure.
struct HttpResponse {
  int status = 0;
  std::vector<HttpHeader> headers;
  std::string body;  ///< after gzip and deflate
  std::string url;   ///< where it came from at last, redirects followed; without user, password and fragment

  /// All fields of that name, joined by ", "; none when there is none.
  std::optional<std::string> header(std::string_view name) const;
};

/// Carries requests to servers, one at a time; connections are kept and used again.
///
/// Redirects (301, 302, 303 of GET, 307, 308) are followed with method and body, at most eight. The password goes to
/// the origin (scheme, host, port) that the request named, and to no other; a redirect from https to http is not
/// followed.
class Transport {
 public:
  virtual ~Transport() = default;
  virtual Answer<HttpResponse> send(const HttpRequest& request) = 0;
};

}  // namespace orlocal::accounts
