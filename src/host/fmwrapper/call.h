#pragma once

#include <vector>

#include "base/result.h"
#include "host/fmwrapper/export.h"
#include "host/fmwrapper/registry.h"
#include "host/fmwrapper/value.h"

namespace orlocal::host {

/// Calls a plug-in's function as the host does: the argument count is held against the registration first, the result
/// starts empty, and whatever leaves the function, an error code or a C++ exception, is a failed call. Arguments and
/// environment belong to the caller and are borrowed for the call. A failure names the function: `kInvalid` for a wrong
/// number of arguments, `kRefused` for an error code, `kIo` for an exception.
ORLOCAL_HOST_API Result<Value> callFunction(const RegisteredFunction& function, const std::vector<Value>& arguments,
                                            const Environment& environment = Registry::instance().currentEnvironment());

}  // namespace orlocal::host
