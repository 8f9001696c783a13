#include "store/time/zone_names.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <unicode/timezone.h>
#include <unicode/unistr.h>

#include "base/text.h"
#include "store/time/time_text.h"
#include "store/time/zone.h"

namespace orlocal::store {

namespace {

constexpr std::size_t kLongestName = 200;
/// Display names list fewer; each is looked for in all parts of the world.
constexpr std::size_t kMostCities = 12;

/// Parts of display names that are no city of the zone files.
constexpr std::array<std::pair<std::string_view, std::string_view>, 34> kDisplayNames{{
    {"Coordinated Universal Time", "UTC"},
    {"Universal Coordinated Time", "UTC"},
    {"Greenwich Mean Time", "Europe/London"},
    {"Eastern Time (US & Canada)", "America/New_York"},
    {"Eastern Time", "America/New_York"},
    {"Central Time (US & Canada)", "America/Chicago"},
    {"Central Time", "America/Chicago"},
    {"Mountain Time (US & Canada)", "America/Denver"},
    {"Mountain Time", "America/Denver"},
    {"Pacific Time (US & Canada)", "America/Los_Angeles"},
    {"Pacific Time", "America/Los_Angeles"},
    {"Atlantic Time (Canada)", "America/Halifax"},
    {"Arizona", "America/Phoenix"},
    {"Alaska", "America/Anchorage"},
    {"Hawaii", "Pacific/Honolulu"},
    {"Indiana (East)", "America/Indiana/Indianapolis"},
    {"Saskatchewan", "America/Regina"},
    {"Newfoundland", "America/St_Johns"},
    {"Greenland", "America/Nuuk"},
    {"Brasilia", "America/Sao_Paulo"},
    {"Buenos Aires", "America/Argentina/Buenos_Aires"},
    {"Azores", "Atlantic/Azores"},
    {"Cape Verde Is.", "Atlantic/Cape_Verde"},
    {"Bern", "Europe/Zurich"},
    {"Edinburgh", "Europe/London"},
    {"West Central Africa", "Africa/Lagos"},
    {"Harare", "Africa/Harare"},
    {"Abu Dhabi", "Asia/Dubai"},
    {"Islamabad", "Asia/Karachi"},
    {"Mumbai", "Asia/Kolkata"},
    {"New Delhi", "Asia/Kolkata"},
    {"Beijing", "Asia/Shanghai"},
    {"Osaka", "Asia/Tokyo"},
    {"Wellington", "Pacific/Auckland"},
}};

/// The zones that rules are compared with: one for each clock there is, the best known first.
constexpr std::array kWellKnownZones{"Europe/Berlin",
                                     "Europe/London",
                                     "America/New_York",
                                     "America/Chicago",
                                     "America/Denver",
                                     "America/Los_Angeles",
                                     "Asia/Shanghai",
                                     "Asia/Kolkata",
                                     "Asia/Tokyo",
                                     "Australia/Sydney",
                                     "Europe/Athens",
                                     "Europe/Moscow",
                                     "Europe/Istanbul",
                                     "America/Sao_Paulo",
                                     "America/Phoenix",
                                     "America/Anchorage",
                                     "Pacific/Honolulu",
                                     "America/Halifax",
                                     "America/St_Johns",
                                     "America/Mexico_City",
                                     "America/Bogota",
                                     "America/Caracas",
                                     "America/Santiago",
                                     "America/Asuncion",
                                     "America/Argentina/Buenos_Aires",
                                     "America/Havana",
                                     "America/Nuuk",
                                     "America/Regina",
                                     "America/Panama",
                                     "Atlantic/Azores",
                                     "Atlantic/Reykjavik",
                                     "Africa/Lagos",
                                     "Africa/Johannesburg",
                                     "Africa/Cairo",
                                     "Africa/Nairobi",
                                     "Africa/Casablanca",
                                     "Asia/Jerusalem",
                                     "Asia/Beirut",
                                     "Asia/Amman",
                                     "Asia/Damascus",
                                     "Asia/Baghdad",
                                     "Asia/Tehran",
                                     "Asia/Dubai",
                                     "Asia/Baku",
                                     "Asia/Kabul",
                                     "Asia/Karachi",
                                     "Asia/Colombo",
                                     "Asia/Kathmandu",
                                     "Asia/Dhaka",
                                     "Asia/Yangon",
                                     "Asia/Bangkok",
                                     "Asia/Singapore",
                                     "Asia/Seoul",
                                     "Australia/Perth",
                                     "Australia/Adelaide",
                                     "Australia/Darwin",
                                     "Australia/Brisbane",
                                     "Australia/Lord_Howe",
                                     "Pacific/Auckland",
                                     "Pacific/Chatham",
                                     "Pacific/Fiji",
                                     "Pacific/Apia",
                                     "Pacific/Tongatapu",
                                     "Pacific/Kiritimati",
                                     "Pacific/Pago_Pago",
                                     "Asia/Tashkent",
                                     "Asia/Almaty",
                                     "Asia/Yekaterinburg",
                                     "Asia/Novosibirsk",
                                     "Asia/Vladivostok",
                                     "Europe/Chisinau",
                                     "Europe/Minsk",
                                     "Europe/Lisbon",
                                     "America/Lima",
                                     "America/Montevideo"};

std::optional<std::string> zoneFile(std::string name) {
  std::replace(name.begin(), name.end(), ' ', '_');
  const auto zone = Zone::named(name);
  return zone && !zone->privateText() ? std::optional(std::move(name)) : std::nullopt;
}

std::optional<std::string> behindPrefix(std::string_view tzid) {
  if (!tzid.starts_with('/')) { return std::nullopt; }
  // Names of the zone files have three parts at most. The longest is the one that is meant.
  std::vector<std::string_view> names;
  for (std::size_t slash = tzid.rfind('/'); names.size() < 3; slash = tzid.rfind('/', slash - 1)) {
    names.push_back(tzid.substr(slash + 1));
    if (slash == 0) { break; }
  }
  for (auto name = names.rbegin(); name != names.rend(); ++name) {
    if (auto zone = zoneFile(std::string(*name))) { return zone; }
  }
  return std::nullopt;
}

/// Names that ICU still uses and the zone files keep as links only.
constexpr std::array<std::pair<std::string_view, std::string_view>, 7> kRenamed{{
    {"Asia/Calcutta", "Asia/Kolkata"},
    {"Asia/Katmandu", "Asia/Kathmandu"},
    {"Asia/Rangoon", "Asia/Yangon"},
    {"America/Buenos_Aires", "America/Argentina/Buenos_Aires"},
    {"America/Indianapolis", "America/Indiana/Indianapolis"},
    {"America/Godthab", "America/Nuuk"},
    {"Europe/Kiev", "Europe/Kyiv"},
}};

std::optional<std::string> ofWindowsName(std::string_view tzid) {
  icu::UnicodeString found;
  UErrorCode status = U_ZERO_ERROR;
  icu::TimeZone::getIDForWindowsID(icu::UnicodeString::fromUTF8({tzid.data(), static_cast<int>(tzid.size())}), nullptr,
                                   found, status);
  if (U_FAILURE(status) != 0 || found.isEmpty()) { return std::nullopt; }
  std::string name;
  found.toUTF8String(name);
  const auto* renamed =
      std::find_if(kRenamed.begin(), kRenamed.end(), [&](const auto& known) { return known.first == name; });
  if (renamed != kRenamed.end()) {
    if (auto zone = zoneFile(std::string(renamed->second))) { return zone; }
  }
  return zoneFile(name);
}

std::optional<std::string> ofCity(std::string_view city) {
  const auto* named = std::find_if(kDisplayNames.begin(), kDisplayNames.end(),
                                   [&](const auto& known) { return equalsNoCase(known.first, city); });
  if (named != kDisplayNames.end()) { return std::string(named->second); }
  for (const char* area : {"Europe/", "America/", "Asia/", "Africa/", "Australia/", "Pacific/", "Atlantic/"}) {
    if (auto zone = zoneFile(area + std::string(city))) { return zone; }
  }
  return std::nullopt;
}

/// "(UTC+01:00) Amsterdam, Berlin, Bern" and its like: the first city of the zone files with that winter offset.
std::optional<std::string> ofDisplayName(std::string_view tzid) {
  std::optional<int> offset;
  if (tzid.starts_with("(UTC") || tzid.starts_with("(GMT")) {
    const std::size_t end = tzid.find(')');
    if (end == std::string_view::npos) { return std::nullopt; }
    std::string text(tzid.substr(4, end - 4));
    std::replace(text.begin(), text.end(), '.', ':');
    offset = text.empty() ? std::optional(0) : parseOffset(text);
    tzid = withoutQuotes(tzid.substr(end + 1));
  }
  std::size_t left = kMostCities;
  for (std::string_view city : splitUnescaped(tzid, ',')) {
    for (std::string_view part : offset ? splitUnescaped(city, '/') : std::vector{city}) {
      if (left-- == 0) { return std::nullopt; }
      auto name = ofCity(withoutQuotes(part));
      const auto zone = name ? Zone::named(*name) : std::nullopt;
      if (!zone) { continue; }
      const int january = zone->offsetSeconds(Zone().toMoment(LocalTime(2026, 1, 15)));
      const int july = zone->offsetSeconds(Zone().toMoment(LocalTime(2026, 7, 15)));
      if (!offset || *offset == std::min(january, july)) { return name; }
    }
  }
  return std::nullopt;
}

/// What a clock shows from 2010 to 2037: its first offset and each other one.
using Offsets = std::vector<std::pair<std::int64_t, int>>;
constexpr std::int64_t kComparedFrom = 1262304000, kComparedTo = 2145916800;

Offsets offsetsOf(const ZoneRules& rules) {
  Offsets offsets{{kComparedFrom, rules.initial.offset}};
  for (const auto& change : rules.changes) {
    if (change.at >= kComparedTo) { break; }
    if (change.at <= kComparedFrom) {
      offsets.front().second = change.clock.offset;
    } else if (change.clock.offset != offsets.back().second) {
      offsets.emplace_back(change.at, change.clock.offset);
    }
  }
  return offsets;
}

Offsets offsetsOf(const Zone& zone) {
  Moment at{std::chrono::seconds(kComparedFrom)};
  Offsets offsets{{kComparedFrom, zone.offsetSeconds(at)}};
  while (const auto change = zone.changeAfter(at)) {
    at = change->at;
    const std::int64_t when = std::chrono::floor<std::chrono::seconds>(at).time_since_epoch().count();
    if (when >= kComparedTo) { break; }
    if (change->offsetAfter != change->offsetBefore) { offsets.emplace_back(when, change->offsetAfter); }
  }
  return offsets;
}

/// Read once: a file may define many zones.
const std::vector<std::pair<const char*, Offsets>>& wellKnownOffsets() {
  static const auto known = [] {
    std::vector<std::pair<const char*, Offsets>> made;
    for (const char* name : kWellKnownZones) {
      if (const auto zone = Zone::named(name)) { made.emplace_back(name, offsetsOf(*zone)); }
    }
    return made;
  }();
  return known;
}

}  // namespace

std::optional<std::string> systemZoneOf(std::string_view tzid) {
  tzid = withoutQuotes(tzid);
  if (tzid.empty() || tzid.size() > kLongestName) { return std::nullopt; }
  if (equalsNoCase(tzid, "UTC") || equalsNoCase(tzid, "Z")) { return "UTC"; }
  if (auto zone = zoneFile(std::string(tzid))) { return zone; }
  if (auto zone = behindPrefix(tzid)) { return zone; }
  if (auto zone = ofWindowsName(tzid)) { return zone; }
  return ofDisplayName(tzid);
}

std::optional<std::string> systemZoneByRules(const ZoneRules& rules) {
  const Offsets wanted = offsetsOf(rules);
  for (const auto& [name, offsets] : wellKnownOffsets()) {
    if (offsets == wanted) { return name; }
  }
  return std::nullopt;
}

}  // namespace orlocal::store
