#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/commands/command_line/terminal_text.h"
#include "host/commands/views/agenda.h"

// What the views of weeks and months put into their columns, one for each day.
namespace orlocal::host {

/// An event, an occurrence of a series, or a reminder, as a grid shows it.
struct GridEntry {
  std::string title;  ///< with "☐" before a reminder, "?" before what is tentative
  std::string place;
  std::optional<store::Rgb> color;
  bool cancelled = false;
  /// Takes whole days, and is drawn across them; also what has times and lasts a day or longer.
  bool wholeDays = false;
  store::LocalTime start, end;  ///< on the viewer's clock, the end excluded; of a reminder both its due moment
  std::shared_ptr<const store::Item> item;
  std::optional<store::Occurrence> when;  ///< of an event

  store::LocalDay firstDay() const { return store::LocalDay(start); }
  /// Included.
  store::LocalDay lastDay() const;
};

/// In the order in which they are shown: by day, what takes whole days first and the longer of it before, then by time.
std::vector<GridEntry> gridEntries(const Agenda& agenda);

/// The title as a grid shows it: struck through on a terminal when it is cancelled, behind "×" elsewhere.
std::string gridTitle(const GridEntry& entry, std::string_view text, const Ink& ink);

constexpr std::size_t kDaysInWeek = 7;

/// One of the lines of a week's columns.
struct GridLine {
  struct Piece {
    const GridEntry* entry;
    std::size_t days;   ///< columns that it covers
    bool begins, ends;  ///< in this week
  };
  std::array<std::optional<Piece>, kDaysInWeek> pieces;  ///< in the column where it begins
  std::array<bool, kDaysInWeek> taken{};
};

/// Puts these entries into lines of the week that begins on `first`, each into the first line where its days are free.
/// The entries are borrowed.
std::vector<GridLine> gridLines(const std::vector<const GridEntry*>& entries, store::LocalDay first);

/// Where each of several spans stands beside those that it overlaps.
struct Lane {
  std::size_t lane = 0;   ///< from 0
  std::size_t lanes = 1;  ///< of all that hang together
};
/// Spans by their beginnings, the ends excluded.
std::vector<Lane> lanesOf(const std::vector<std::pair<int, int>>& spans);

/// What is drawn across days: `[Away────]`, `<` and `>` where it goes on; on a terminal in the calendar's colour.
std::string barText(const GridLine::Piece& piece, std::size_t width, const Ink& ink);

/// `text`, cut off after so many cells and filled up to them.
std::string cell(std::string_view text, std::size_t width);
std::string withoutBlanksAtEnd(std::string line);

}  // namespace orlocal::host
