// A plug-in that answers start-up with no version and fails at everything else.
#include <stdexcept>

#include "platform/host/fm_api.h"

extern "C" __attribute__((visibility("default"))) void FMExternCallProc(fmx::ExternCall* call) {
  switch (call->whichCall) {
    case fmx::kCallStartUp:
      call->result = call->extnVersion == 60 ? 57 : 0;
      return;
    case fmx::kCallShutdown:
      throw std::runtime_error("not yet");
    default:
      throw 1;
  }
}
