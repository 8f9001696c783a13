#pragma once

/// Marks what leaves `libFMWrapper.so`: the host's C functions, and the C++ side that the host program uses.
#define ORLOCAL_HOST_API __attribute__((visibility("default")))
