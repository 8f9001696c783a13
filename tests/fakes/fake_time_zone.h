#pragma once

#include <string>
#include <vector>

#include "fakes/fake_clock.h"
#include "platform/zone.h"

namespace orlocal::fakes {

/// A zone by its offsets: one from the beginning, and one from each of some moments on. Of other zones it knows UTC.
class FakeTimeZone : public TimeZone {
 public:
  struct Offset {
    Date from;  ///< of the first one not used
    int seconds;
    std::string abbreviation;
  };

  /// `offsets` in order of time, at least one. `now` is what the zone takes for now.
  FakeTimeZone(std::string name, std::vector<Offset> offsets, Date now = fakeNow());

  /// One offset all year.
  explicit FakeTimeZone(int offsetSeconds) : FakeTimeZone("Fake/Fixed", {{Date{}, offsetSeconds, "FIX"}}) {}

  /// Central European Time, with the summer time of the year 2026.
  static FakeTimeZone berlin(Date now = fakeNow());

  std::string name() const override { return m_name; }
  int secondsFromGMT() const override { return at(m_now).seconds; }
  int secondsFromGMTForDate(Date date) const override { return at(date).seconds; }
  std::string abbreviation() const override { return at(m_now).abbreviation; }
  DateComponents components(Date date) const override;
  std::optional<Date> dateFromComponents(const DateComponents& parts) const override;

 private:
  const Offset& at(Date date) const;

  std::string m_name;
  std::vector<Offset> m_offsets;
  Date m_now;
};

}  // namespace orlocal::fakes
