#include "host/commands/availability/time_spans.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include <fmt/format.h>

#include "base/translation.h"
#include "host/commands/words/day_words.h"

namespace orlocal::host {
namespace {

using store::BusyKind;
using store::BusyTime;
using store::LocalDay;
using store::LocalTime;
using store::Moment;

constexpr std::size_t kKinds = 3;

/// Where a stretch of the clock begins or ends.
Moment boundary(LocalTime local, const store::Zone& zone) {
  const Moment moment = zone.toMoment(local);
  if (zone.toLocal(moment) == local) { return moment; }
  // The clock skips it: the change lies less than a day before what it is read as.
  const auto change = zone.changeAfter(moment - std::chrono::days(1));
  return change ? change->at : moment;
}

/// The day's own part of the wanted hours; those past midnight belong to the day on which they begin.
TimeSpan wantedOn(LocalDay day, const TimeRange& hours, const store::Zone& zone) {
  const bool overnight = hours.end <= hours.start;
  const auto at = [&](TimeOfDay time, LocalDay on) {
    return boundary(LocalTime(on) + std::chrono::seconds(time).count(), zone);
  };
  return {at(hours.start, day), at(hours.end, overnight ? day + 1 : day)};
}

}  // namespace

std::vector<TimeSpan> wantedSpans(LocalDay first, LocalDay last, const WantedHours& wanted, const store::Zone& zone) {
  std::vector<TimeSpan> spans;
  for (LocalDay day = first; day <= last; ++day) {
    if (!wanted.weekDays.test(placeInWeek(day))) { continue; }
    const TimeSpan span = wantedOn(day, wanted.hours, zone);
    if (span.end <= span.start) { continue; }
    if (!spans.empty() && span.start <= spans.back().end) {
      spans.back().end = std::max(spans.back().end, span.end);
    } else {
      spans.push_back(span);
    }
  }
  return spans;
}

std::vector<BusyTime> merged(const std::vector<BusyTime>& times) {
  struct Edge {
    Moment at;
    std::size_t kind;
    int change;
  };
  std::vector<Edge> edges;
  for (const BusyTime& time : times) {
    if (time.end <= time.start) { continue; }
    edges.push_back({time.start, static_cast<std::size_t>(time.kind), 1});
    edges.push_back({time.end, static_cast<std::size_t>(time.kind), -1});
  }
  std::sort(edges.begin(), edges.end(), [](const Edge& a, const Edge& b) { return a.at < b.at; });
  std::vector<BusyTime> found;
  std::array<int, kKinds> open{};
  for (std::size_t i = 0; i < edges.size();) {
    const Moment at = edges[i].at;
    for (; i < edges.size() && edges[i].at == at; ++i) { open[edges[i].kind] += edges[i].change; }
    const auto most = std::find_if(open.rbegin(), open.rend(), [](int count) { return count > 0; });
    if (most == open.rend()) { continue; }
    const auto kind = static_cast<BusyKind>(open.rend() - most - 1);
    const Moment next = edges[i].at;
    if (!found.empty() && found.back().end == at && found.back().kind == kind) {
      found.back().end = next;
    } else {
      found.push_back({at, next, kind});
    }
  }
  return found;
}

std::vector<BusyTime> partsWithin(const std::vector<BusyTime>& times, const std::vector<TimeSpan>& spans) {
  std::vector<BusyTime> parts;
  auto span = spans.begin();
  for (const BusyTime& time : times) {
    while (span != spans.end() && span->end <= time.start) { ++span; }
    for (auto each = span; each != spans.end() && each->start < time.end; ++each) {
      parts.push_back({std::max(time.start, each->start), std::min(time.end, each->end), time.kind});
    }
  }
  return parts;
}

std::vector<TimeSpan> gapsBetween(const std::vector<BusyTime>& times, const std::vector<TimeSpan>& spans,
                                  std::chrono::minutes least) {
  std::vector<TimeSpan> gaps;
  const auto add = [&](Moment start, Moment end) {
    if (end > start && end - start >= least) { gaps.push_back({start, end}); }
  };
  auto time = times.begin();
  for (const TimeSpan& span : spans) {
    Moment free = span.start;
    while (time != times.end() && time->end <= span.start) { ++time; }
    for (auto each = time; each != times.end() && each->start < span.end; ++each) {
      add(free, each->start);
      free = std::max(free, each->end);
    }
    add(free, span.end);
  }
  return gaps;
}

std::string spanInWords(const TimeSpan& span, LocalDay day, const store::Zone& zone) {
  const Moment begin = boundary(LocalTime(day), zone);
  const Moment end = boundary(LocalTime(day + 1), zone);
  if (span.end <= begin || span.start >= end) { return {}; }
  const bool fromBefore = span.start < begin;
  const bool goesOn = span.end > end;
  if (span.start <= begin && span.end >= end) { return tr("all day"); }
  const std::string from = fromBefore ? "…" : clockTime(zone.toLocal(span.start));
  const std::string to = goesOn ? "…" : span.end == end ? "24:00" : clockTime(zone.toLocal(span.end));
  return from + "–" + to;
}

std::string shortLength(std::chrono::microseconds length) {
  constexpr std::int64_t kMinutesInHour = 60, kMinutesInDay = 24 * kMinutesInHour;
  const std::int64_t minutes = std::chrono::floor<std::chrono::minutes>(length).count();
  const std::int64_t days = minutes / kMinutesInDay;
  const std::int64_t hours = minutes % kMinutesInDay / kMinutesInHour;
  std::string text;
  const auto add = [&](const std::string& part) { text += (text.empty() ? "" : " ") + part; };
  if (days > 0) { add(trn("{} day", "{} days", static_cast<std::size_t>(days), days)); }
  if (hours > 0) { add(tr("{}h", hours)); }
  if (minutes % kMinutesInHour > 0 || text.empty()) { add(tr("{}m", minutes % kMinutesInHour)); }
  return text;
}

}  // namespace orlocal::host
