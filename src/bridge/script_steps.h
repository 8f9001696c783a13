#pragma once

#include <cstdint>
#include <string>

#include "platform/host/text.h"

namespace orlocal {

/// The XML definition of the script step that goes with function `functionId`; empty for any other ID.
std::string scriptStepDefinition(std::int32_t functionId);

/// The same in a text of the host.
void GetXMLDefinition(std::int32_t functionId, HostText& definition);

}  // namespace orlocal
