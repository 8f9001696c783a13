#include "store/time/zone.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <mutex>

#include <cctz/time_zone.h>
#include <fmt/format.h>

#include "base/civil_date.h"
#include "base/settings.h"
#include "base/translation.h"
#include "base/try.h"
#include "store/time/zone_rules.h"

namespace orlocal::store {

namespace {

using std::chrono::seconds;

/// Names below the system's folder of zone files, and nothing that could leave it.
bool isPathSafe(std::string_view name) {
  if (name.empty() || name.size() > 64) { return false; }
  const auto allowed = [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '+' ||
           c == '-' || c == '/';
  };
  // "Fixed/…" is not a file but the library's own notation.
  return std::all_of(name.begin(), name.end(), allowed) && name.front() != '/' && name.back() != '/' &&
         name.find("//") == std::string_view::npos && !name.starts_with("Fixed/") && name.front() != '-';
}

/// Before a rule text, so that the "GMT+1" of some calendar file is not taken for one.
constexpr std::string_view kRulesPrefix = "TZ:";
constexpr std::string_view kZoneFolder = "/zoneinfo/";

std::string zoneOfSettings() {
  const auto set = Settings::ofUser().fileValue(Setting::kZone);
  return set ? set->text : ":/etc/localtime";
}

std::string nameOfPath(std::string_view path) {
  const std::size_t at = path.rfind(kZoneFolder);
  return at == std::string_view::npos ? std::string() : std::string(path.substr(at + kZoneFolder.size()));
}

/// Rules that go on for ever leave out none: they are those of summer time.
bool leavesOutADay(const cctz::time_zone& rules) {
  constexpr cctz::civil_second kAllAreKnown(2100, 1, 1);
  const auto last = rules.lookup(kAllAreKnown).pre;
  cctz::time_zone::civil_transition change;
  for (auto at = cctz::time_point<cctz::seconds>::min(); rules.next_transition(at, &change);) {
    if (change.to - change.from >= 86'400) { return true; }
    const auto next = rules.lookup(change.to).trans;
    if (next >= last || next <= at) { break; }
    at = next;
  }
  return false;
}

}  // namespace

struct Zone::Entry {
  std::string name;
  cctz::time_zone rules;
  std::string privateText;
  bool skipsDay = leavesOutADay(rules);
};

/// All zones this process has met. They stay, so that a zone is a plain pointer.
struct ZoneRegistry {
  std::mutex mutex;
  std::map<std::string, std::unique_ptr<Zone::Entry>, std::less<>> entries;
  struct Announced {
    std::string text;
    Zone::RulesReader read;
  };
  std::map<std::string, Announced, std::less<>> announced;  ///< private zones that nobody asked for yet
  std::string userText;
  const Zone::Entry* user = nullptr;

  static ZoneRegistry& instance() {
    static auto* registry = new ZoneRegistry;  // outlives whoever still looks at a clock while the process ends
    return *registry;
  }
  static const Zone::Entry* utc() {
    static const auto* entry = new Zone::Entry{"UTC", cctz::utc_time_zone(), ""};
    return entry;
  }
  const Zone::Entry* find(std::string_view name) const {
    const auto found = entries.find(name);
    return found == entries.end() ? nullptr : found->second.get();
  }
  const Zone::Entry* add(std::string_view name, cctz::time_zone rules, std::string_view text) {
    auto made = std::make_unique<Zone::Entry>(Zone::Entry{std::string(name), rules, std::string(text)});
    return (entries[std::string(name)] = std::move(made)).get();
  }
  const Zone::Entry* load(std::string_view name) {
    if (const auto* known = find(name)) { return known; }
    cctz::time_zone rules;
    if (isPathSafe(name) && cctz::load_time_zone(std::string(name), &rules)) { return add(name, rules, ""); }
    if (const auto known = announced.find(name); known != announced.end()) {
      const auto taken = announced.extract(known);
      const auto zone = addPrivate(taken.key(), taken.mapped().text, taken.mapped().read);
      return zone ? *zone : nullptr;
    }
    if (!name.starts_with(kRulesPrefix)) { return nullptr; }
    const auto posix = rulesOfPosixText(name.substr(kRulesPrefix.size()));
    const auto made = posix ? zoneOfRules(*posix) : std::nullopt;
    return made ? add(name, *made, "") : nullptr;
  }
  Result<const Zone::Entry*> addPrivate(const std::string& name, std::string_view text, Zone::RulesReader read) {
    const auto rules = read(text);
    if (!rules) { return failure(rules.error().code, tr("time zone \"{}\": {}", name, rules.error().message)); }
    const auto zone = zoneOfRules(*rules);
    if (!zone) { return failure(ErrorCode::kInvalid, tr("time zone \"{}\" has too many clocks", name)); }
    return add(name, *zone, text);
  }
  const Zone::Entry* ofText(std::string_view text) {
    if (text.starts_with(':')) { text.remove_prefix(1); }
    if (!text.starts_with('/')) {
      const auto* named = load(text);
      return named != nullptr ? named : load(std::string(kRulesPrefix).append(text));
    }
    if (const auto* named = load(nameOfPath(text))) { return named; }
    return ofFile(std::string(text));
  }
  const Zone::Entry* ofFile(const std::string& path) {
    std::error_code error;
    const auto target = std::filesystem::canonical(path, error);
    if (const auto* named = error ? nullptr : load(nameOfPath(target.string()))) { return named; }
    cctz::time_zone rules;
    if (path != "/etc/localtime" || !cctz::load_time_zone(path, &rules)) { return nullptr; }
    std::string name;
    std::ifstream("/etc/timezone") >> name;
    if (const auto* named = load(name)) { return named; }
    return add("localtime", rules, "");
  }
};

Zone::Zone() : m_entry(ZoneRegistry::utc()) {}

std::optional<Zone> Zone::named(std::string_view name) {
  if (name == "UTC") { return Zone(); }
  ZoneRegistry& registry = ZoneRegistry::instance();
  const std::lock_guard lock(registry.mutex);
  const Entry* entry = registry.load(name);
  return entry == nullptr ? std::nullopt : std::optional(Zone(entry));
}

Zone Zone::ofUser() {
  const char* set = std::getenv("TZ");
  const std::string text = set != nullptr ? (*set == '\0' ? "UTC" : set) : zoneOfSettings();
  if (text == "UTC") { return {}; }
  ZoneRegistry& registry = ZoneRegistry::instance();
  const std::lock_guard lock(registry.mutex);
  // The link may be turned to another zone while the process runs; reading it is cheap enough.
  if (registry.user == nullptr || registry.userText != text || set == nullptr) {
    registry.user = registry.ofText(text);
    registry.userText = text;
  }
  return registry.user == nullptr ? Zone() : Zone(registry.user);
}

Status Zone::registerPrivate(const std::string& name, std::string_view text, RulesReader read) {
  ZoneRegistry& registry = ZoneRegistry::instance();
  const std::lock_guard lock(registry.mutex);
  if (const Entry* known = name.empty() ? nullptr : registry.load(name)) {
    if (known->privateText == text) { return {}; }
    return failure(ErrorCode::kInvalid, tr("another time zone \"{}\" is known already", name));
  }
  if (name.empty() || name == "UTC") {
    return failure(ErrorCode::kInvalid, tr("a private time zone needs a name of its own"));
  }
  ORLOCAL_CHECK(registry.addPrivate(name, text, read));
  return {};
}

void Zone::announcePrivate(std::string name, std::string text, RulesReader read) {
  ZoneRegistry& registry = ZoneRegistry::instance();
  const std::lock_guard lock(registry.mutex);
  if (registry.find(name) == nullptr) {
    registry.announced.try_emplace(std::move(name), ZoneRegistry::Announced{std::move(text), read});
  }
}

std::optional<std::string> Zone::privateText() const {
  return m_entry->privateText.empty() ? std::nullopt : std::optional(m_entry->privateText);
}

const std::string& Zone::name() const { return m_entry->name; }

Moment Zone::toMoment(LocalTime local) const {
  // Of a skipped time `pre` is the reading with the offset before the gap, of a repeated one the first. Wall clocks
  // reach further than moments do.
  constexpr auto kFirst = std::chrono::ceil<seconds>(Moment::min()), kLast = std::chrono::floor<seconds>(Moment::max());
  // UTC has no rules to look up.
  const auto at = m_entry == ZoneRegistry::utc() ? std::chrono::sys_time<seconds>(seconds(local - LocalTime()))
                                                 : m_entry->rules.lookup(local).pre;
  return std::chrono::time_point_cast<std::chrono::microseconds>(
      std::clamp<std::chrono::sys_time<seconds>>(at, kFirst, kLast));
}

LocalTime Zone::toLocal(Moment moment) const {
  const auto at = std::chrono::floor<seconds>(moment);
  if (m_entry != ZoneRegistry::utc()) { return m_entry->rules.lookup(at).cs; }
  const auto day = std::chrono::floor<std::chrono::days>(at);
  const CivilDate date = civilDateOf(day.time_since_epoch().count());
  return LocalTime(date.year, date.month, date.day) + (at - day).count();
}

int Zone::offsetSeconds(Moment moment) const {
  return m_entry->rules.lookup(std::chrono::floor<seconds>(moment)).offset;
}

std::string Zone::abbreviation(Moment moment) const {
  return m_entry->rules.lookup(std::chrono::floor<seconds>(moment)).abbr;
}

bool Zone::skipsDay() const { return m_entry->skipsDay; }

std::optional<Zone::Change> Zone::changeAfter(Moment moment) const {
  cctz::time_zone::civil_transition transition;
  auto from = std::chrono::floor<seconds>(moment);
  if (!m_entry->rules.next_transition(from, &transition)) { return std::nullopt; }
  // The clock before the change runs up to `from`, which that clock reads once.
  const auto at = m_entry->rules.lookup(transition.to).trans;
  const auto kind = m_entry->rules.lookup(transition.to).kind;
  const auto exact = kind == cctz::time_zone::civil_lookup::UNIQUE ? m_entry->rules.lookup(transition.to).pre : at;
  const auto after = m_entry->rules.lookup(exact);
  const auto before = m_entry->rules.lookup(exact - seconds(1));
  return Change{std::chrono::time_point_cast<std::chrono::microseconds>(exact), before.offset, after.offset,
                after.is_dst, after.abbr};
}

Moment momentOf(const CalendarTime& time, const Zone& viewer) {
  switch (time.kind) {
    case CalendarTime::Kind::kUtc:
      return Zone().toMoment(time.local);
    case CalendarTime::Kind::kZoned:
      if (time.zone == viewer.name()) { return viewer.toMoment(time.local); }
      return Zone::named(time.zone).value_or(viewer).toMoment(time.local);
    default:
      return viewer.toMoment(time.local);
  }
}

}  // namespace orlocal::store
