#pragma once

#include <cstddef>

namespace orlocal::host::calc {

/// Bytes of this thread's stack that a recursion may still use. What it calls at its deepest point (a plug-in's
/// function, the database below it) and what unwinds it find room in a reserve that is not counted: a third of the
/// stack, and never more than 256 KiB. 0 when the reserve is reached.
///
/// The stack is measured once for each thread, as the system gave it; a process that runs with a smaller one just
/// nests less deeply.
std::size_t stackRoom();

/// Where on the stack the caller stands, for measuring what a recursion has taken.
std::size_t stackPlace();

}  // namespace orlocal::host::calc
