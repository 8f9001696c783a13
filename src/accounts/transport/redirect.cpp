#include "accounts/transport/redirect.h"

#include <algorithm>
#include <array>

#include <fmt/format.h>

#include "accounts/transport/url.h"
#include "base/translation.h"

namespace orlocal::accounts {
namespace {

/// RFC 9110, 15.4; 303 asks for a GET, which only one who asked for that can be content with.
bool isRedirect(int status, std::string_view method) {
  constexpr std::array kKeepMethod{301, 302, 307, 308};
  constexpr int kSeeOther = 303;
  return std::find(kKeepMethod.begin(), kKeepMethod.end(), status) != kKeepMethod.end() ||
         (status == kSeeOther && method == "GET");
}

}  // namespace

Answer<std::optional<std::string>> redirectOf(const std::string& url, std::string_view method,
                                              const HttpResponse& response) {
  const std::optional<std::string> location = response.header("Location");
  if (!isRedirect(response.status, method) || !location) { return std::nullopt; }
  std::string target = resolved(url, location->substr(0, location->find('#')));
  const std::optional<std::string> from = originOf(url);
  const std::optional<std::string> to = originOf(target);
  if (!to || (from && from->starts_with("https://") && !to->starts_with("https://"))) {
    return refusal(Trouble::kUntrusted, tr("{} leads to {}, where we do not go.", shownUrl(url), shownUrl(target)),
                   response.status);
  }
  return target;
}

}  // namespace orlocal::accounts
