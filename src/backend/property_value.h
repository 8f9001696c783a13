#pragma once

#include <optional>
#include <string>
#include <variant>

#include "platform/date.h"
#include "platform/text.h"

namespace orlocal {

/// What a property is set to: nothing, a text, or a moment.
using PropertyValue = std::variant<std::monostate, std::string, Date>;

/// The text in `value`; absent when it holds anything else.
inline OptionalText textOf(const PropertyValue& value) {
  const auto* text = std::get_if<std::string>(&value);
  return text ? OptionalText(*text) : std::nullopt;
}

/// The moment in `value`; absent when it holds anything else.
inline std::optional<Date> dateOf(const PropertyValue& value) {
  const auto* date = std::get_if<Date>(&value);
  return date ? std::optional<Date>(*date) : std::nullopt;
}

}  // namespace orlocal
