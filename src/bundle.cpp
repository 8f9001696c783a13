// The entry points live in static libraries that nothing in this file calls; naming them pulls them into the bundle.
#include "platform/host/fm_api.h"

extern "C" {
void FMExternCallProc(fmx::ExternCall* call);
}

namespace {
[[gnu::used]] void (*const g_entry)(fmx::ExternCall*) = &FMExternCallProc;
}
