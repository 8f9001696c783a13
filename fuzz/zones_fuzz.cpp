#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "store/icalendar/private_zone.h"
#include "store/icalendar/vtimezone.h"
#include "store/time/zone.h"
#include "store/time/zone_names.h"
#include "temporary_folder.h"

// A zone by any name, by a POSIX rule or by the text of a VTIMEZONE: what is made of it answers for all times.

namespace {

using namespace orlocal::store;

void use(const std::optional<Zone>& zone) {
  if (!zone) { return; }
  for (std::int64_t seconds = -4'000'000'000; seconds < 9'000'000'000; seconds += 777'777'777) {
    const Moment moment{std::chrono::seconds(seconds)};
    const int offset = zone->offsetSeconds(moment);
    if (offset < -200'000 || offset > 200'000) { std::abort(); }
    (void)zone->toLocal(moment);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(orlocal::fuzz::textOf(data, size));
  if (text.size() < 200) {
    use(Zone::named(text));
    use(Zone::named("TZ:" + text));
    if (const auto system = systemZoneOf(text)) { use(Zone::named(*system)); }
  }
  if (const auto rules = rulesOfVTimeZone(text)) {
    if (const auto system = systemZoneByRules(*rules)) { use(Zone::named(*system)); }
    (void)privateZoneOf("Fuzz", text);
  }
  return 0;
}
