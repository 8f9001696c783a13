#pragma once

namespace orlocal {

/// Registers the script that the settings name, as a solution would by `Orlo_RegisterUpdateScript`; once in a process,
/// however often the plug-in starts up. What fails is in the platform's log, and the last error stays as it was.
void registerConfiguredScript();

}  // namespace orlocal
