#pragma once

#include <optional>

namespace orlocal {

/// A colour as the platform's calendars carry it. Components are 0 to 1 in ordinary use; larger ones are kept.
struct Color {
  /// A pattern has no components and converts to nothing.
  enum class Space { kCalibratedRgb, kCalibratedWhite, kPattern };

  Space space = Space::kCalibratedRgb;
  double red = 0;  ///< also the white of `kCalibratedWhite`
  double green = 0;
  double blue = 0;
  double alpha = 1;

  static constexpr Color calibratedRgb(double red, double green, double blue, double alpha = 1) {
    return {Space::kCalibratedRgb, red, green, blue, alpha};
  }
  static constexpr Color calibratedWhite(double white, double alpha = 1) {
    return {Space::kCalibratedWhite, white, white, white, alpha};
  }

  /// This colour in the calibrated RGB space; none when it cannot be converted.
  constexpr std::optional<Color> usingCalibratedRgb() const {
    if (space == Space::kPattern) { return std::nullopt; }
    return calibratedRgb(red, green, blue, alpha);
  }

  friend bool operator==(const Color&, const Color&) = default;
};

}  // namespace orlocal
