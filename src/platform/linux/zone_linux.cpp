#include "platform/linux/zone_linux.h"

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <utility>

namespace orlocal {
namespace {

class LinuxTimeZone final : public TimeZone {
 public:
  explicit LinuxTimeZone(store::Zone zone) : m_zone(std::move(zone)) {}

  std::string name() const override { return m_zone.name(); }
  int secondsFromGMT() const override { return m_zone.offsetSeconds(store::now()); }
  int secondsFromGMTForDate(Date date) const override { return m_zone.offsetSeconds(date); }
  std::string abbreviation() const override { return m_zone.abbreviation(store::now()); }

  DateComponents components(Date date) const override {
    const store::LocalTime local = m_zone.toLocal(date);
    DateComponents parts;
    parts.year = static_cast<int>(local.year());
    parts.month = local.month();
    parts.day = local.day();
    parts.hour = local.hour();
    parts.minute = local.minute();
    parts.second = local.second();
    return parts;
  }

  std::optional<Date> dateFromComponents(const DateComponents& parts) const override {
    if (!parts.year) return std::nullopt;
    const store::LocalTime local(*parts.year, parts.month.value_or(1), parts.day.value_or(1), parts.hour.value_or(0),
                                 parts.minute.value_or(0), parts.second.value_or(0));
    if (parts.timeZone) {
      if (const auto own = store::Zone::named(*parts.timeZone)) return own->toMoment(local);
    }
    return m_zone.toMoment(local);
  }

 private:
  store::Zone m_zone;
};

}  // namespace

std::shared_ptr<const TimeZone> makeTimeZone(store::Zone zone) {
  return std::make_shared<LinuxTimeZone>(std::move(zone));
}

std::shared_ptr<const TimeZone> timeZoneNamed(std::string_view name) {
  static std::mutex guard;
  static std::map<std::string, std::shared_ptr<const TimeZone>, std::less<>> known;
  const std::lock_guard lock(guard);
  const auto found = known.find(name);
  if (found != known.end()) return found->second;
  // An unknown name is asked for again: a private zone may become known meanwhile.
  auto zone = store::Zone::named(name);
  if (!zone) return nullptr;
  return known.emplace(std::string(name), makeTimeZone(*std::move(zone))).first->second;
}

}  // namespace orlocal
