#pragma once

#include <cstdint>
#include <string_view>

#include "backend/error_codes.h"
#include "platform/text.h"

namespace orlocal {

/// One row of an object's table of readable properties.
template <class Object>
struct Attribute {
  std::string_view word;
  OptionalText (*read)(const Object&);
};

/// Records `code` and gives the result of a getter that failed.
inline OptionalText noText(std::int64_t code) {
  failWith(code);
  return std::nullopt;
}

}  // namespace orlocal
