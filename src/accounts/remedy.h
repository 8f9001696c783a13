#pragma once

#include <string_view>

#include "accounts/transport/answer.h"

namespace orlocal::accounts {

/// What somebody can do about a failure, as a sentence; empty where patience is all.
std::string_view remedyFor(Trouble trouble);

}  // namespace orlocal::accounts
