#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <vector>

#include "store/model/model.h"

// When the alarms of an event or reminder ring.
namespace orlocal::store {

/// What an alarm counts from: of an event the start and end of one occurrence, of a reminder its start and due.
struct AlarmAnchors {
  std::optional<Moment> start, end;
};

/// One moment at which an alarm rings.
struct AlarmMoment {
  Moment moment;
  std::size_t alarm = 0;  ///< its place in `Item::alarms`

  friend auto operator<=>(const AlarmMoment&, const AlarmMoment&) = default;
};

/// Alarms that count from a time of the item, for each occurrence anew; alarms at a moment of their own, once.
enum class AlarmTriggers { kRelative, kAbsolute };

/// [from, to).
struct AlarmRange {
  Moment from = Moment::min(), to = Moment::max();
};

/// False for what is cancelled or completed: its alarms are silent.
bool canRing(const Item& item);

/// The moments in the range, in order; with repetitions (RFC 5545, 3.8.6.2), at most a hundred of an alarm. Left out is
/// what rings at a place (RFC 9074, 8.1), what was acknowledged elsewhere (RFC 9074, 6.1), and what lies more than a
/// century off. Whether the item can ring is not asked.
std::vector<AlarmMoment> alarmMoments(const Item& item, AlarmTriggers triggers, const AlarmAnchors& anchors,
                                      const AlarmRange& range = {});

/// How far from its item the relative ones ring, at the farthest.
struct AlarmReach {
  std::chrono::seconds before{0};  ///< its start, or its end where they count from that
  std::chrono::seconds after{0};

  void widen(const AlarmReach& other);
  friend bool operator==(const AlarmReach&, const AlarmReach&) = default;
};
AlarmReach reachOf(const Item& item);

}  // namespace orlocal::store
