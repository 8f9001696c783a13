#pragma once

#include <memory>

#include "platform/date.h"

namespace orlocal {

class CalFramework;
class Platform;

/// The older platform over `platform`'s `EventKit`, whatever stands behind that, so that both platforms read and write
/// one store in one way. `now` tells the time. `platform` outlives what is made; nothing is asked of it until somebody
/// asks for a store or an object.
std::unique_ptr<CalFramework> makeCalFramework(Platform& platform, Date (*now)());

}  // namespace orlocal
