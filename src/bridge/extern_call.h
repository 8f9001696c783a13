#pragma once

#include "platform/host/fm_api.h"

/// The plug-in's entry point. The host calls it on its main thread, one call at a time, with a record that outlives the
/// call; start-up and shutdown may come more than once. Answers start-up, shutdown, idle and requests for strings, and
/// ignores every other message.
extern "C" [[gnu::visibility("default")]] void FMExternCallProc(fmx::ExternCall* call);

namespace orlocal {

/// Chooses the back end, the first time, and makes the error object.
void Do_PluginInit();

/// Whether the system's minor version calls for the current back end; false when the system does not answer.
bool UseEKImplementation();

}  // namespace orlocal
