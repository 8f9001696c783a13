#include "host/commands/words/zone_words.h"

#include "base/translation.h"

namespace orlocal::host {

store::Zone zoneAskedFor(const std::string& name) {
  return name.empty() ? store::Zone::ofUser() : store::Zone::named(name).value_or(store::Zone::ofUser());
}

std::string objectionToZone(const std::string& name) {
  if (store::Zone::named(name)) { return {}; }
  return tr("\"{}\" is no time zone; write Europe/Berlin, America/New_York or UTC", name);
}

}  // namespace orlocal::host
