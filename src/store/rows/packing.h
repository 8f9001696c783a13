#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "store/model/model.h"

namespace orlocal::store {

/// What no query asks for is kept packed in the row: see docs/store_format.md, "Packed columns".
/// The buffer is the caller's, so that packing many rows allocates nothing; it is cleared first.
using PackedBytes = std::vector<std::byte>;

void packRecurrence(const Recurrence& recurrence, PackedBytes& out);
void packAlarms(const std::vector<Alarm>& alarms, PackedBytes& out);
void packAttendees(const std::vector<Attendee>& attendees, PackedBytes& out);
void packStrings(const std::vector<std::string>& strings, PackedBytes& out);

/// None when the bytes are damaged: they are not packed in this way, a number lies outside of its enum or its range, a
/// text is no UTF-8.
std::optional<Recurrence> unpackRecurrence(std::span<const std::byte> bytes);
std::optional<std::vector<Alarm>> unpackAlarms(std::span<const std::byte> bytes);
std::optional<std::vector<Attendee>> unpackAttendees(std::span<const std::byte> bytes);
std::optional<std::vector<std::string>> unpackStrings(std::span<const std::byte> bytes);

}  // namespace orlocal::store
