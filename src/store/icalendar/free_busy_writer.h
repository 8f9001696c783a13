#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "store/time/time.h"

namespace orlocal::store {

/// How time is taken (RFC 5545, 3.2.9). Of two at one moment the later here counts.
enum class BusyKind : std::uint8_t { kTentative, kUnavailable, kBusy };

struct BusyTime {
  Moment start, end;  ///< `end` is exclusive
  BusyKind kind = BusyKind::kBusy;

  friend bool operator==(const BusyTime&, const BusyTime&) = default;
};

/// When somebody is busy, and nothing of why (RFC 5545, 3.6.4).
struct FreeBusy {
  std::string uid;
  Moment stamp;
  Moment from, to;                       ///< what is known; what is not named in it is free
  std::optional<std::string> organizer;  ///< whose times they are: a calendar address
  std::vector<BusyTime> busy;            ///< by start, none over another
};

/// Appends the component VFREEBUSY.
void writeFreeBusy(std::string& out, const FreeBusy& freeBusy);

}  // namespace orlocal::store
