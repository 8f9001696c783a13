#pragma once

#include <string>
#include <vector>

#include <tl/expected.hpp>

#include "host/fmwrapper/export.h"
#include "host/fmwrapper/registry.h"
#include "host/fmwrapper/value.h"

namespace orlocal::host {

/// A function's result, or why the call failed: a sentence that names the function.
using CallResult = tl::expected<Value, std::string>;

/// Calls a plug-in's function as the host does: the argument count is held against the registration first, the result
/// starts empty, and whatever leaves the function, an error code or a C++ exception, is a failed call. Arguments and
/// environment belong to the caller and are borrowed for the call.
ORLOCAL_HOST_API CallResult callFunction(const RegisteredFunction& function, const std::vector<Value>& arguments,
                                         const Environment& environment = Registry::instance().currentEnvironment());

/// Runs a plug-in's script step. Its parameters stand at the indexes that its definition gives them.
ORLOCAL_HOST_API CallResult callStep(const RegisteredStep& step, const std::vector<Value>& parameters,
                                     const Environment& environment = Registry::instance().currentEnvironment());

}  // namespace orlocal::host
