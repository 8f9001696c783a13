#pragma once

#include "platform/run_loop.h"

namespace orlocal {

/// The calling thread's run loop, made on first use. It lives until the thread ends; its ports may live longer and then
/// wake nobody.
RunLoop& currentThreadRunLoop();

}  // namespace orlocal
