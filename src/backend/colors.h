#pragma once

#include <optional>
#include <string>

#include "platform/color.h"
#include "platform/text.h"

namespace orlocal {

/// The colour that `name` stands for, compared after lower-casing; none for any other name.
std::optional<Color> colorNamed(const OptionalText& name);

/// The opaque colour of three numbers between white space, 255 being full. None unless there are exactly three, each at
/// least 0 and, divided by 255, at most 255.
std::optional<Color> colorFromNumbers(const OptionalText& numbers);

/// Red, green and blue, 0 to 255, as whole numbers between blanks; none for a colour without components.
OptionalText colorText(const std::optional<Color>& color);

}  // namespace orlocal
