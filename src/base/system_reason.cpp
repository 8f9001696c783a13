#include "base/system_reason.h"

#include <array>
#include <cstring>

namespace orlocal {

std::string systemReason(int error) {
  // Not by way of std::generic_category(): under the undefined-behaviour sanitizer a virtual call needs a pipe, and it
  // is for want of descriptors that this is often asked.
  std::array<char, 256> room{};
  return ::strerror_r(error, room.data(), room.size());
}

}  // namespace orlocal
