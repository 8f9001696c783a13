#pragma once

#include <cstdint>

#include "platform/host/text.h"

namespace orlocal {

// The localized strings. String N stands under the key "Orlo N" of the table "Orlo".

/// Copies string `number` and a 0 unit into `buffer`, which has room for `capacity` units, and gives its length. Gives
/// 0 and copies nothing when there is no such string or when its length is `capacity` - 1 or more.
std::int32_t Sub_OSXLoadString(std::int32_t number, char16_t* buffer, std::int32_t capacity);

/// Answers the host's request for a string. The host asks for its options string by 131; ours has the number 1.
void Do_GetString(std::uint32_t stringId, std::uint32_t unused, std::int32_t capacity, char16_t* buffer);

/// The same string as a text for registration; empty when there is none. `nameOnly` cuts it before its first "(".
void Do_GetString(std::uint32_t stringId, HostText& text, bool nameOnly);

}  // namespace orlocal
