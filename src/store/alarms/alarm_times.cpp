#include "store/alarms/alarm_times.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <string_view>
#include <variant>

#include "store/icalendar/content_line.h"
#include "store/time/time_text.h"
#include "store/time/zone.h"

namespace orlocal::store {
namespace {

using std::chrono::seconds;

constexpr seconds kFarthest = std::chrono::days(36'525);
constexpr std::int64_t kMostRepetitions = 100;

/// Calls `visit(const ContentLine&)` for the properties among kept lines; components within come last.
template <class Visit>
void visitProperties(std::string_view kept, const Visit& visit) {
  while (!kept.empty()) {
    const std::string_view text = kept.substr(0, kept.find('\n'));
    kept.remove_prefix(std::min(kept.size(), text.size() + 1));
    const auto line = splitContentLine(text, 0);
    if (!line) { continue; }
    if (line->is("BEGIN")) { return; }
    visit(*line);
  }
}

/// What the kept lines of an alarm say about when it rings.
struct AlarmDetails {
  std::int64_t repetitions = 0;
  seconds pause{0};
  std::optional<Moment> acknowledged;
  bool atPlace = false;
};

AlarmDetails detailsOf(const Alarm& alarm) {
  AlarmDetails details;
  std::optional<seconds> pause;
  visitProperties(alarm.extra, [&](const ContentLine& line) {
    if (line.is("REPEAT")) {
      std::from_chars(line.value.data(), line.value.data() + line.value.size(), details.repetitions);
    } else if (line.is("DURATION")) {
      if (const auto length = parseDuration(line.value)) { pause = seconds(length->days * 86'400 + length->seconds); }
    } else if (line.is("ACKNOWLEDGED")) {
      if (const auto time = parseTime(line.value)) { details.acknowledged = momentOf(*time, Zone()); }
    } else if (line.is("PROXIMITY") || line.is("X-APPLE-PROXIMITY")) {
      details.atPlace = true;
    }
  });
  // One needs the other.
  const bool repeats = pause && *pause > seconds(0) && *pause <= kFarthest / kMostRepetitions;
  details.repetitions = repeats ? std::clamp<std::int64_t>(details.repetitions, 0, kMostRepetitions) : 0;
  details.pause = pause.value_or(seconds(0));
  return details;
}

/// Where it rings first; none of an alarm of the other kind, or one that has nothing to count from.
std::optional<Moment> firstOf(const Item& item, const Alarm& alarm, AlarmTriggers triggers,
                              const AlarmAnchors& anchors) {
  const auto* relative = std::get_if<AlarmOffset>(&alarm.trigger);
  if ((relative != nullptr) != (triggers == AlarmTriggers::kRelative)) { return std::nullopt; }
  if (relative == nullptr) { return std::get<Moment>(alarm.trigger); }
  if (relative->offset > kFarthest || relative->offset < -kFarthest) { return std::nullopt; }
  // A reminder may have but one of the two.
  const bool either = item.kind == ItemKind::kReminder;
  const auto& meant = relative->fromEnd ? anchors.end : anchors.start;
  const auto& other = relative->fromEnd ? anchors.start : anchors.end;
  const auto anchor = meant || !either ? meant : other;
  return anchor ? std::optional(*anchor + relative->offset) : std::nullopt;
}

}  // namespace

bool canRing(const Item& item) {
  if (item.completed) { return false; }
  bool rings = true;
  visitProperties(item.extra, [&](const ContentLine& line) {
    rings = rings &&
            !(line.is("STATUS") && (equalsNoCase(line.value, "CANCELLED") || equalsNoCase(line.value, "COMPLETED")));
  });
  return rings;
}

std::vector<AlarmMoment> alarmMoments(const Item& item, AlarmTriggers triggers, const AlarmAnchors& anchors,
                                      const AlarmRange& range) {
  std::vector<AlarmMoment> found;
  for (std::size_t place = 0; place < item.alarms.size(); ++place) {
    const Alarm& alarm = item.alarms[place];
    const auto first = firstOf(item, alarm, triggers, anchors);
    if (!first) { continue; }
    const AlarmDetails details = detailsOf(alarm);
    if (details.atPlace) { continue; }
    for (std::int64_t i = 0; i <= details.repetitions; ++i) {
      const Moment moment = *first + i * details.pause;
      if (moment >= range.to) { break; }
      if (moment < range.from || (details.acknowledged && moment <= *details.acknowledged)) { continue; }
      found.push_back({moment, place});
    }
  }
  std::sort(found.begin(), found.end());
  return found;
}

void AlarmReach::widen(const AlarmReach& other) {
  before = std::max(before, other.before);
  after = std::max(after, other.after);
}

AlarmReach reachOf(const Item& item) {
  AlarmReach reach;
  for (const Alarm& alarm : item.alarms) {
    const auto* relative = std::get_if<AlarmOffset>(&alarm.trigger);
    if (relative == nullptr || relative->offset > kFarthest || relative->offset < -kFarthest) { continue; }
    const AlarmDetails details = detailsOf(alarm);
    if (details.atPlace) { continue; }
    reach.widen({-relative->offset, relative->offset + details.repetitions * details.pause});
  }
  return reach;
}

}  // namespace orlocal::store
