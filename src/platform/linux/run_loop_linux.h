#pragma once

#include <functional>
#include <memory>

#include "platform/run_loop.h"

namespace orlocal {

/// The calling thread's run loop, made on first use. It lives until the thread ends; its ports may live longer and then
/// wake nobody.
RunLoop& currentThreadRunLoop();

/// Adds a descriptor of the system to the calling thread's loop: `handler` runs there while it is readable, and must
/// read it empty. The descriptor must outlive what is returned. On its `send` the handler runs, too.
std::unique_ptr<RunLoopPort> watchDescriptor(int descriptor, std::function<void()> handler);

}  // namespace orlocal
