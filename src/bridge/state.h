#pragma once

#include "platform/host/fm_api.h"

namespace orlocal {

class iCalEKFunctions;
class iCalFunctions;
class orlo_PluginError;

// Process-wide state. Set by start-up, read by every function; main thread only. What is pointed at lives until the
// process ends.

/// The record of the host's latest call, whatever it was about.
extern fmx::ExternCall* gFMX_ExternCallPtr;

/// Whether `g_sharedEKFunctions` is the back end in use; chosen once, at start-up.
extern bool g_bUseEK;
/// After start-up one of the two is set, the other is null.
extern iCalEKFunctions* g_sharedEKFunctions;
extern iCalFunctions* g_sharedFunctions;

/// Null before start-up.
extern orlo_PluginError* error;

}  // namespace orlocal
