#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

#include "store/rows/packed_item.h"
#include "store/rows/packing.h"

// The first byte chooses the column. What unpacks packs to bytes that unpack to what packs to the same bytes.

namespace {

using namespace orlocal::store;

template <class Unpack, class Pack>
void check(std::span<const std::byte> bytes, Unpack unpack, Pack pack) {
  const auto value = unpack(bytes);
  if (!value) { return; }
  PackedBytes once;
  pack(*value, once);
  const auto again = unpack(once);
  if (!again) { std::abort(); }
  PackedBytes twice;
  pack(*again, twice);
  if (once != twice) { std::abort(); }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) { return 0; }
  const auto bytes = std::as_bytes(std::span(data, size)).subspan(1);
  switch (data[0] % 5) {
    case 0:
      check(bytes, unpackRecurrence, packRecurrence);
      break;
    case 1:
      check(bytes, unpackAlarms, packAlarms);
      break;
    case 2:
      check(bytes, unpackAttendees, packAttendees);
      break;
    case 3:
      check(bytes, unpackStrings, packStrings);
      break;
    default:
      check(bytes, unpackItem, packItem);
  }
  return 0;
}
