#include "host/commands/command_line/own_addresses.h"

#include "base/settings.h"
#include "base/text.h"

namespace orlocal::host {

std::vector<std::string> ownAddresses() {
  std::vector<std::string> addresses;
  const auto set = Settings::ofUser().value(Setting::kOwnAddresses);
  if (!set) { return addresses; }
  for (const std::string_view each : splitUnescaped(set->text, ',')) {
    if (!trimmed(each).empty()) { addresses.emplace_back(trimmed(each)); }
  }
  return addresses;
}

}  // namespace orlocal::host
