#include "store/icalendar/tzid_table.h"

#include <algorithm>

#include <fmt/format.h>

#include "base/translation.h"
#include "store/icalendar/private_zone.h"
#include "store/icalendar/vtimezone.h"
#include "store/time/zone.h"
#include "store/time/zone_names.h"
#include "store/time/zone_rules.h"

namespace orlocal::store {

namespace {

constexpr std::size_t kLongestBlock = std::size_t{1} << 16;
constexpr std::size_t kMostNames = 1'000;
/// What a definition costs beside the changes of its clock, and what one costs that comes to nothing.
constexpr std::int64_t kWorkOfOne = 1'000, kWorkInVain = 10'000;

}  // namespace

TzidTable::TzidTable(std::string_view bytes, const std::vector<ZoneSpan>& zones) : m_bytes(bytes) {
  for (const ZoneSpan& zone : zones) { m_blocks[zone.tzid].push_back(&zone); }
}

const std::optional<std::string>& TzidTable::zoneOf(std::string_view tzid, std::size_t calendar, int line,
                                                    ReadProblems& problems) {
  if (const auto* zone = known(tzid, calendar)) { return *zone; }
  if (m_known.size() <= calendar) { m_known.resize(calendar + 1); }
  return m_known[calendar].emplace(std::string(tzid), find(tzid, calendar, line, problems)).first->second;
}

const std::optional<std::string>* TzidTable::known(std::string_view tzid, std::size_t calendar) const {
  if (m_known.size() <= calendar) { return nullptr; }
  const auto found = m_known[calendar].find(tzid);
  return found == m_known[calendar].end() ? nullptr : &found->second;
}

const std::optional<std::string>& KnownTzids::zoneOf(std::string_view tzid, std::size_t calendar, int /*line*/,
                                                     ReadProblems& /*problems*/) {
  if (const auto* zone = m_table.known(tzid, calendar)) { return *zone; }
  m_askedForMore = true;
  return m_none;
}

std::optional<std::string> TzidTable::find(std::string_view tzid, std::size_t calendar, int line,
                                           ReadProblems& problems) {
  if (const auto& system = systemZone(tzid)) { return system; }
  std::string reason = tr("names no known time zone and the file does not define it");
  if (const auto blocks = m_blocks.find(tzid); blocks != m_blocks.end()) {
    const auto& all = blocks->second;
    const auto after = std::upper_bound(all.begin(), all.end(), calendar, [](std::size_t wanted, const ZoneSpan* zone) {
      return wanted < zone->calendar;
    });
    const bool own = after != all.begin() && (*(after - 1))->calendar == calendar;
    const ZoneSpan& block = own ? **(after - 1) : *all.front();
    const Meaning& meaning = meaningOf(block);
    if (meaning.zone) { return meaning.zone; }
    reason = tr("is defined in line {}, which is of no use: {}", block.span.line, meaning.trouble);
  }
  problems.warn(line, "", tr("TZID \"{}\" {}; its times are read as floating", tzid.substr(0, 200), reason));
  return std::nullopt;
}

const std::optional<std::string>& TzidTable::systemZone(std::string_view tzid) {
  static const std::optional<std::string> none;
  const auto known = m_system.find(tzid);
  if (known != m_system.end()) { return known->second; }
  if (m_system.size() >= kMostNames) { return none; }
  return m_system.emplace(std::string(tzid), systemZoneOf(tzid)).first->second;
}

const TzidTable::Meaning& TzidTable::meaningOf(const ZoneSpan& block) {
  const Meaning*& meaning = m_meanings[&block];
  if (meaning != nullptr) { return *meaning; }
  const std::string_view text = block.span.of(m_bytes);
  auto found = m_meaningsOfTexts.find(text);
  if (found == m_meaningsOfTexts.end()) { found = m_meaningsOfTexts.emplace(text, work(block, text)).first; }
  return *(meaning = &found->second);
}

TzidTable::Meaning TzidTable::work(const ZoneSpan& block, std::string_view text) {
  if (text.size() > kLongestBlock) { return {std::nullopt, tr("it is longer than 64 KiB")}; }
  if (!isOneZone(text)) { return {std::nullopt, tr("a component in it is not closed")}; }
  if (m_workLeft <= 0) { return {std::nullopt, tr("the file defines too many time zones")}; }
  const auto rules = rulesOfVTimeZone(text);
  m_workLeft -= rules ? kWorkOfOne + static_cast<std::int64_t>(rules->changes.size()) : kWorkInVain;
  if (!rules) { return {std::nullopt, rules.error().message}; }
  if (auto system = systemZoneByRules(*rules)) { return {std::move(system), ""}; }
  const PrivateZone made = privateZoneOf(block.tzid, text);
  // The name tells the rules; what one that is known says beside them is as good.
  const auto known = Zone::named(made.name);
  const std::string vtimezone = known ? known->privateText().value_or("") : made.vtimezone;
  if (const auto status = registerPrivateZone(made.name, vtimezone); !status) {
    return {std::nullopt, status.error().message};
  }
  m_private.emplace(made.name, vtimezone);
  return {made.name, ""};
}

}  // namespace orlocal::store
