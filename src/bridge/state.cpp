#include "bridge/state.h"

namespace orlocal {

fmx::ExternCall* gFMX_ExternCallPtr = nullptr;
bool g_bUseEK = false;
iCalEKFunctions* g_sharedEKFunctions = nullptr;
iCalFunctions* g_sharedFunctions = nullptr;
orlo_PluginError* error = nullptr;

}  // namespace orlocal
