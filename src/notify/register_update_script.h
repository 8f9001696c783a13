#pragma once

#include "bridge/function_table.h"  // declares Orlo_RegisterUpdateScript

namespace orlocal {

class NAXiCalNotificationListener;

/// The one listener; null before the first registration, never freed.
extern NAXiCalNotificationListener* listener;

}  // namespace orlocal
