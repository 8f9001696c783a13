#pragma once

#include <functional>
#include <memory>

#include "platform/run_loop.h"

namespace orlocal {

/// The calling thread's run loop, made on first use. It lives until the thread ends; its ports may live longer and then
/// wake nobody.
RunLoop& currentThreadRunLoop();

/// Something that a loop looks at.
using TurnLook = std::function<void()>;

/// Has `look` called at each turn of the calling thread's loop, as long as what is returned is held: for what costs
/// less to look at than to be woken for. It takes nothing from the system. A loop that runs for a time turns every 10
/// ms.
std::shared_ptr<const TurnLook> lookAtEachTurn(TurnLook look);

}  // namespace orlocal
