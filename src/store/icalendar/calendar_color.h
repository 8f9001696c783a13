#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "store/model/model.h"

namespace orlocal::store {

/// "#RRGGBB", "#RRGGBBAA" or a CSS colour name; none when it is neither.
std::optional<Rgb> parseColor(std::string_view text);
/// "#RRGGBB".
std::string colorText(const Rgb& color);

}  // namespace orlocal::store
