#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "store/model/model.h"

// What a screen shows, before a terminal gets it.
namespace orlocal::host {

struct Look {
  bool bold = false, dim = false, reversed = false;
  std::optional<store::Rgb> color = std::nullopt;

  friend bool operator==(const Look&, const Look&) = default;
};

/// Text that looks alike; `printable`.
struct Piece {
  std::string text;
  Look look = {};
};
using PictureLine = std::vector<Piece>;

struct Size {
  std::size_t columns = 80, lines = 24;

  friend bool operator==(const Size&, const Size&) = default;
};

struct Picture {
  struct Place {
    std::size_t line = 0, column = 0;
  };
  std::vector<PictureLine> lines;  ///< from the top
  std::optional<Place> cursor;     ///< where the person types
};

std::string plainText(const PictureLine& line);
std::size_t widthOf(const PictureLine& line);

/// The line cut off after so many cells, and filled up to them.
PictureLine fitted(const PictureLine& line, std::size_t width);

}  // namespace orlocal::host
