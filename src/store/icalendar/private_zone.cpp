#include "store/icalendar/private_zone.h"

#include <cstdint>
#include <utility>

#include <fmt/format.h>

#include "base/hash.h"
#include "base/text.h"
#include "store/icalendar/content_line.h"
#include "store/icalendar/vtimezone.h"
#include "store/time/zone.h"

namespace orlocal::store {
namespace {

/// In bytes.
constexpr std::size_t kLongestName = 200;

}  // namespace

PrivateZone privateZoneOf(std::string_view tzid, std::string_view vtimezone) {
  std::string rules, rest;
  ContentLines lines(vtimezone);
  for (ContentLine line; lines.next(line);) {
    if (line.is("TZID")) { continue; }
    rest.append(line.text).append("\n");
    // Notes about the block do not make it another zone.
    if (!line.is("LAST-MODIFIED") && !line.is("TZURL") && !line.name.starts_with("X-")) {
      rules.append(line.text).append("\n");
    }
  }
  std::string name = unescapeText(withoutQuotes(tzid)).substr(0, kLongestName);
  while (!isUtf8(name)) { name.pop_back(); }
  const std::string number = fmt::format(" #{:08x}", static_cast<std::uint32_t>(contentHash(rules)));
  if (!name.ends_with(number)) { name += number; }
  const std::size_t firstLine = rest.find('\n') + 1;
  return PrivateZone{name, rest.substr(0, firstLine) + "TZID:" + escapeText(name) + "\n" + rest.substr(firstLine)};
}

Status registerPrivateZone(const std::string& name, std::string_view vtimezone) {
  return Zone::registerPrivate(name, vtimezone, rulesOfVTimeZone);
}

void announcePrivateZone(std::string name, std::string vtimezone) {
  Zone::announcePrivate(std::move(name), std::move(vtimezone), rulesOfVTimeZone);
}

}  // namespace orlocal::store
