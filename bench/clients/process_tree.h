#pragma once

#include <sys/types.h>

namespace orlocal::bench {

/// Processor time of a process, of all below it and of those that ended there; to a hundredth of a second.
double processorSecondsOf(pid_t root);
/// Memory of a process and of all below it, in MiB; what several share is counted once.
double mebibytesOf(pid_t root);

/// Of this process.
double ownProcessorSeconds();
double ownPeakMebibytes();

}  // namespace orlocal::bench
