#pragma once

#include "platform/host/fm_api.h"

namespace orlocal {

class NAXiCalNotificationListener;

/// The one listener; null before the first registration, never freed.
extern NAXiCalNotificationListener* listener;

extern "C" {

/// Names the script to start whenever the calendar database changes outside the host: file name (argument 0), script
/// name (argument 1), both stored as they are. The last names win; each call subscribes once more, so that after n
/// calls a change starts the script n times. The thread of the first call is the one that starts scripts; it must be
/// the host's main thread.
///
/// Leaves the result as it is. A platform exception shows only in the last error: code -400 with the exception's name.
/// Not in the function table: hosts reach it by its symbol.
[[gnu::visibility("default")]] fmx::ErrorCode Orlo_RegisterUpdateScript(std::int16_t functionId,
                                                                        const fmx::ExprEnv* environment,
                                                                        const fmx::DataVect* arguments,
                                                                        fmx::Data* result);
}

}  // namespace orlocal
