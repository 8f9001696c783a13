#include "host/commands/browsing/picture.h"

#include "host/commands/command_line/folded_text.h"
#include "host/commands/command_line/terminal_text.h"

namespace orlocal::host {

std::string plainText(const PictureLine& line) {
  std::string text;
  for (const Piece& piece : line) { text += piece.text; }
  return text;
}

std::size_t widthOf(const PictureLine& line) {
  std::size_t width = 0;
  for (const Piece& piece : line) { width += displayWidth(piece.text); }
  return width;
}

PictureLine fitted(const PictureLine& line, std::size_t width) {
  PictureLine fitting;
  std::size_t left = width;
  for (const Piece& piece : line) {
    fitting.push_back({clipped(piece.text, left), piece.look});
    left -= displayWidth(fitting.back().text);
    if (fitting.back().text.size() < piece.text.size()) { break; }
  }
  fitting.push_back({std::string(left, ' ')});
  return fitting;
}

}  // namespace orlocal::host
