#include "accounts/transport/http.h"

#include "base/text.h"

namespace orlocal::accounts {

std::optional<std::string> HttpResponse::header(std::string_view name) const {
  std::optional<std::string> joined;
  for (const HttpHeader& field : headers) {
    if (!equalsNoCase(field.name, name)) { continue; }
    joined = joined ? *joined + ", " + field.value : field.value;
  }
  return joined;
}

}  // namespace orlocal::accounts
