#pragma once

#include <string_view>

#include "fakes/fake_platform.h"

namespace orlocal::fakes {

/// A zone with one offset today and from a moment on, and another one before it.
class TwoOffsetZone : public FakeTimeZone {
 public:
  TwoOffsetZone(int offsetBefore, Date change, int offsetNow)
      : FakeTimeZone(offsetNow), m_before(offsetBefore), m_change(change) {}

  int secondsFromGMTForDate(Date date) const override { return date < m_change ? m_before : secondsFromGMT(); }
  DateComponents components(Date date) const override {
    return FakeTimeZone(secondsFromGMTForDate(date)).components(date);
  }

 private:
  int m_before;
  Date m_change;
};

/// The moment that `text` names, such as "2026-07-01 09:00:00 +0200". The test fails to run when it names none.
inline Date dateOfText(std::string_view text) { return dateWithString(text).value(); }

}  // namespace orlocal::fakes
