#pragma once

#include <string>

#include "accounts/transport/answer.h"

namespace orlocal::accounts {

/// What somebody can do about a failure, as a sentence; empty where patience is all.
std::string remedyFor(Trouble trouble);

}  // namespace orlocal::accounts
