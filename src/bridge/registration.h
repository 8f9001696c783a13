#pragma once

#include <cstdint>

#include "platform/host/fm_api.h"

namespace orlocal {

/// Registers one function with the host whose call is being served: with a description from interface version 56 on,
/// and as a script step from 57 on. The host's answers are not looked at.
void RegisterFunction(std::int16_t functionId, std::int16_t minArgs, std::int16_t maxArgs,
                      fmx::ExternalFunction function);

/// The whole function table.
void registerFunctions();

/// Takes back whatever may have been registered, functions first, then (from version 57 on) script steps.
void unregisterFunctions();

}  // namespace orlocal
