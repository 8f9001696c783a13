#pragma once

#include <chrono>

#include "platform/date.h"

namespace orlocal::fakes {

/// The current time of the fakes: the moment that tests are pinned to, 2026-11-02 08:00:00 UTC.
inline Date fakeNow() {
  using namespace std::chrono;
  return sys_days{year{2026} / 11 / 2} + hours{8};
}

}  // namespace orlocal::fakes
