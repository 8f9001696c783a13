#include "platform/linux/zone.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "base/civil_date.h"

namespace orlocal {
namespace {

class LinuxTimeZone final : public TimeZone {
 public:
  explicit LinuxTimeZone(store::Zone zone) : m_zone(zone) {}

  std::string name() const override { return m_zone.name(); }
  int secondsFromGMT() const override { return m_zone.offsetSeconds(store::now()); }
  int secondsFromGMTForDate(Date date) const override {
    std::call_once(m_listed, [this] { listSpans(); });
    if (date < m_spans.front().from || date >= m_spans.back().until) { return m_zone.offsetSeconds(date); }
    // Who asks for one date after the other mostly stays within half a year.
    std::size_t at = m_lastSpan.load(std::memory_order_relaxed);
    if (date < m_spans[at].from || date >= m_spans[at].until) {
      const auto next = std::upper_bound(m_spans.begin(), m_spans.end(), date,
                                         [](Date moment, const Span& span) { return moment < span.from; });
      at = static_cast<std::size_t>(next - m_spans.begin()) - 1;
      m_lastSpan.store(at, std::memory_order_relaxed);
    }
    return m_spans[at].offset;
  }
  std::string abbreviation() const override { return m_zone.abbreviation(store::now()); }

  DateComponents components(Date date) const override {
    using namespace std::chrono;
    const CivilDateTime local =
        civilDateTimeOf(floor<seconds>(date).time_since_epoch().count() + secondsFromGMTForDate(date));
    DateComponents parts;
    parts.year = static_cast<int>(local.date.year);
    parts.month = local.date.month;
    parts.day = local.date.day;
    parts.hour = local.hour;
    parts.minute = local.minute;
    parts.second = local.second;
    return parts;
  }

  std::optional<Date> dateFromComponents(const DateComponents& parts) const override {
    if (!parts.year) { return std::nullopt; }
    const store::LocalTime local(*parts.year, parts.month.value_or(1), parts.day.value_or(1), parts.hour.value_or(0),
                                 parts.minute.value_or(0), parts.second.value_or(0));
    if (parts.timeZone) {
      if (const auto own = store::Zone::named(*parts.timeZone)) { return own->toMoment(local); }
    }
    return m_zone.toMoment(local);
  }

 private:
  /// How long an offset is in force.
  struct Span {
    Date from;
    Date until;  ///< exclusive
    int offset;
  };

  /// Each date that is read or shown asks for its offset, so those of our days are kept at hand.
  void listSpans() const {
    using namespace std::chrono;
    constexpr Date kFrom = sys_days(year(1970) / 1 / 1);
    constexpr Date kUntil = sys_days(year(2100) / 1 / 1);
    m_spans.push_back({kFrom, kUntil, m_zone.offsetSeconds(kFrom)});
    for (auto change = m_zone.changeAfter(kFrom); change && change->at < kUntil;
         change = m_zone.changeAfter(change->at)) {
      m_spans.back().until = change->at;
      m_spans.push_back({change->at, kUntil, change->offsetAfter});
    }
  }

  store::Zone m_zone;
  mutable std::once_flag m_listed;
  mutable std::vector<Span> m_spans;  ///< one after the other
  mutable std::atomic<std::size_t> m_lastSpan = 0;
};

}  // namespace

std::shared_ptr<const TimeZone> makeTimeZone(store::Zone zone) { return std::make_shared<LinuxTimeZone>(zone); }

std::shared_ptr<const TimeZone> timeZoneNamed(std::string_view name) {
  static std::mutex guard;
  static std::map<std::string, std::shared_ptr<const TimeZone>, std::less<>> known;
  const std::lock_guard lock(guard);
  const auto found = known.find(name);
  if (found != known.end()) { return found->second; }
  // An unknown name is asked for again: a private zone may become known meanwhile.
  auto zone = store::Zone::named(name);
  if (!zone) { return nullptr; }
  return known.emplace(std::string(name), makeTimeZone(*zone)).first->second;
}

}  // namespace orlocal
