#pragma once

#include <string>

namespace orlocal {

/// The system's words for a value of errno, such as "Too many open files".
std::string systemReason(int error);

}  // namespace orlocal
