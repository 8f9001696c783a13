#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "host/fmwrapper/export.h"

namespace orlocal::host {

/// UTF-16 units to UTF-8; an unpaired surrogate becomes U+FFFD.
ORLOCAL_HOST_API std::string toUtf8(std::u16string_view units);

/// The same into a buffer of `room` bytes: as many whole characters as fit, without a NUL. Returns the bytes written.
ORLOCAL_HOST_API std::size_t encodeUtf8(std::u16string_view units, char* buffer, std::size_t room) noexcept;

/// UTF-8 to UTF-16 units; each malformed sequence becomes one U+FFFD.
ORLOCAL_HOST_API std::u16string toUtf16(std::string_view bytes);

/// Unicode default upper and lower case, without a locale.
ORLOCAL_HOST_API std::u16string toUpper(std::u16string_view text);
ORLOCAL_HOST_API std::u16string toLower(std::u16string_view text);

/// Full case folding: texts that differ only in case fold to the same units. The length may change ("ß" becomes "ss").
ORLOCAL_HOST_API std::u16string foldCase(std::u16string_view text);

inline constexpr std::u16string::size_type kNotFound = std::u16string::npos;

/// The place of the `occurrence`-th time that `what` stands in `text` at or after `from` when case is ignored; below 0
/// counted backwards, from the last time at or before `from`. A unit position in `text`. An empty `what` stands
/// nowhere.
ORLOCAL_HOST_API std::u16string::size_type findIgnoringCase(std::u16string_view text, std::u16string_view what,
                                                            std::u16string::size_type from,
                                                            std::int64_t occurrence = 1);

}  // namespace orlocal::host
