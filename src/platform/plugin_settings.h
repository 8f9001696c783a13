#pragma once

#include <optional>
#include <string>

namespace orlocal {

/// What whoever runs the host has set for the plug-in.
struct PluginSettings {
  struct UpdateScript {
    std::string file;    ///< the solution's
    std::string script;  ///< in it
  };
  /// Registered when the plug-in starts up: hosts that call functions of the table alone have no other way.
  std::optional<UpdateScript> updateScript;
  /// Minutes of a zone's offset are written as minutes. Otherwise dates do not arrive in zones of part hours, which
  /// solutions there have come to rely on.
  bool datesInPartHourZones = false;
};

}  // namespace orlocal
