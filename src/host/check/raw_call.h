#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "host/fmwrapper/registry.h"
#include "host/plugin/plugin.h"
#include "platform/host/fm_api.h"

// The entry point as a host calls it, without what `Plugin` sees to.
namespace orlocal::host::check {

using EntryPoint = void (*)(fmx::ExternCall*);

inline EntryPoint entryOf(const Plugin& plugin) {
  return reinterpret_cast<EntryPoint>(plugin.symbol("FMExternCallProc"));
}

/// A message as a host sends it, without parameters.
inline fmx::ExternCall messageFor(const Plugin& plugin, std::uint8_t message, std::int16_t version = 62) {
  return fmx::ExternCall{.extnVersion = version,
                         .unusedID = -1,
                         .entryPoint = entryOf(plugin),
                         .unusedFlag = 0,
                         .whichCall = message,
                         .unsafeCalls = 0,
                         .parm1 = 0,
                         .parm2 = 0,
                         .parm3 = 0,
                         .instanceID = 0,
                         .result = 0,
                         .unused = 0,
                         .cStartScript = Registry::startScriptCallback(),
                         .cCurrentEnv = Registry::currentEnvironmentCallback()};
}

/// Asks for a string with `capacity` units of room. What lies beyond the room is poisoned: `intact` tells whether it
/// still is.
struct AskedString {
  std::u16string units;  ///< the room as it is afterwards, `capacity` units
  bool touched = false;  ///< something was written into the room
  bool intact = false;
};

inline AskedString askString(const Plugin& plugin, std::uint8_t id, std::uint32_t capacity,
                             std::uint16_t language = 0) {
  constexpr char16_t kPoison = 0xDEAD;
  constexpr std::size_t kBeyond = 4'096;
  std::u16string buffer(kBeyond + capacity + kBeyond, kPoison);
  fmx::ExternCall record = messageFor(plugin, fmx::kCallGetString);
  record.parm1 = id;
  record.parm2 = language;
  record.parm3 = capacity;
  record.result = reinterpret_cast<std::uintptr_t>(buffer.data() + kBeyond);
  entryOf(plugin)(&record);
  AskedString asked;
  asked.units = buffer.substr(kBeyond, capacity);
  asked.touched = asked.units.find_first_not_of(kPoison) != std::u16string::npos;
  asked.intact = buffer.substr(0, kBeyond).find_first_not_of(kPoison) == std::u16string::npos &&
                 buffer.substr(kBeyond + capacity).find_first_not_of(kPoison) == std::u16string::npos;
  return asked;
}

}  // namespace orlocal::host::check
