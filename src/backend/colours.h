#pragma once

#include <optional>
#include <string>

#include "platform/colour.h"
#include "platform/text.h"

namespace orlocal {

/// The colour that `name` stands for, compared after lower-casing; none for any other name.
std::optional<Color> colourNamed(const OptionalText& name);

/// The opaque colour of three numbers between white space, 255 being full. None unless there are exactly three, each at
/// least 0 and, divided by 255, at most 255.
std::optional<Color> colourFromNumbers(const OptionalText& numbers);

/// Red, green and blue, 0 to 255, as whole numbers between blanks; none for a colour without components.
OptionalText colourText(const std::optional<Color>& colour);

}  // namespace orlocal
