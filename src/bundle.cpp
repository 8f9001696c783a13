// The entry points live in static libraries that nothing in this file calls; naming them pulls them into the bundle.
#include "bridge/extern_call.h"
#include "notify/register_update_script.h"

namespace {
[[gnu::used]] void (*const g_entry)(fmx::ExternCall*) = &FMExternCallProc;
[[gnu::used]] const fmx::ExternalFunction g_registerUpdateScript = &orlocal::Orlo_RegisterUpdateScript;
}  // namespace
