#include "host/commands/browsing/browse_picture.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

#include "base/translation.h"
#include "host/commands/browsing/browse_presses.h"
#include "host/commands/command_line/folded_text.h"
#include "host/commands/command_line/terminal_text.h"
#include "host/commands/views/day_grids.h"
#include "host/commands/words/date_names.h"

namespace orlocal::host {
namespace {

using store::LocalDay;
using Lines = std::vector<PictureLine>;

constexpr Size kSmallest{28, 8};
/// From here on month and list stand side by side.
constexpr std::size_t kWide = 64;
/// From here on a narrow screen has room for a whole month and for details.
constexpr std::size_t kTall = 20;
constexpr std::size_t kDayWidth = 4;
constexpr std::size_t kMonthWidth = kDaysInWeek * kDayWidth;
constexpr std::size_t kWeeksInMonth = 6;
constexpr std::size_t kTimeColumn = 13;
constexpr std::size_t kDetailLines = 5;
constexpr std::size_t kMostMessageLines = 3;

/// What is around the parts: a title and a line of hints.
constexpr std::size_t kAroundPage = 2;

void append(Lines& lines, Lines further) { std::move(further.begin(), further.end(), std::back_inserter(lines)); }

Lines fitted(Lines lines, Size size) {
  lines.resize(size.lines);
  for (PictureLine& line : lines) { line = orlocal::host::fitted(line, size.columns); }
  return lines;
}

PictureLine rule(std::size_t width) {
  std::string text;
  for (std::size_t i = 0; i < width; ++i) { text += "─"; }
  return {{std::move(text), {.dim = true}}};
}

PictureLine centred(const std::string& text, std::size_t width) {
  return {{std::string((width - std::min(width, displayWidth(text))) / 2, ' ')}, {text, {.bold = true}}};
}

// The month.

void addDay(PictureLine& line, const BrowseState& state, LocalDay day) {
  Look look;
  look.bold = day == state.today();
  look.dim = day.month() != state.day.month();
  look.reversed = day == state.day;
  const auto there = state.days.lines.find(day);
  line.push_back({fmt::format("{:2}", day.day()), look});
  if (there == state.days.lines.end()) {
    line.push_back({"  "});
  } else {
    line.push_back({"• ", {.color = there->second.front().color}});
  }
}

Lines monthLines(const BrowseState& state, std::size_t weeks) {
  const LocalDay first = weeks == 1 ? weekStart(state.day, state.firstWeekday) : daysNeeded(state).first;
  const DateNames& names = DateNames::ofUser();
  Lines lines{centred(fmt::format("{} {}", names.month(state.day.month()), state.day.year()), kMonthWidth)};
  std::string days;
  for (std::size_t i = 0; i < kDaysInWeek; ++i) {
    days += cell(names.shortWeekday(first + static_cast<int>(i)), kDayWidth - 1) + ' ';
  }
  lines.push_back({{days, {.dim = true}}});
  for (std::size_t week = 0; week < weeks; ++week) {
    PictureLine line;
    for (std::size_t i = 0; i < kDaysInWeek; ++i) {
      addDay(line, state, first + static_cast<int>(week * kDaysInWeek + i));
    }
    lines.push_back(std::move(line));
  }
  return lines;
}

Lines calendarLines(const BrowseState& state) {
  Lines lines;
  for (const store::Calendar& calendar : state.days.calendars) {
    lines.push_back({{"● ", {.color = calendar.color}},
                     {shortened(state.days.names.name(calendar), kMonthWidth - 2), {.dim = true}}});
  }
  return lines;
}

// The list.

PictureLine rowLine(const AgendaLine& row, bool chosen, std::size_t width) {
  const std::string before = " " + cell(row.time, kTimeColumn);
  const std::string title = row.cancelled ? row.title + tr(" (cancelled)") : row.title;
  const std::size_t room = width - std::min(width, displayWidth(before) + 2);
  return {{before, {.reversed = chosen}},
          {"● ", {.reversed = chosen, .color = row.color}},
          {padded(shortened(title, room), room), {.dim = row.cancelled, .reversed = chosen}}};
}

/// As many lines as there is room for, the chosen row among them and, where that goes, what it is under.
Lines listLines(const BrowseState& state, Size size) {
  Lines lines;
  std::size_t row = 0, shown = 0, heading = 0;
  for (const BrowseSection& section : browseSections(state)) {
    if (!lines.empty()) { lines.push_back({}); }
    const std::size_t top = lines.size();
    if (!state.chosen && section.day == state.day) { shown = heading = top; }
    lines.push_back({{shortened(section.heading, size.columns), {.bold = true}}});
    if (section.lines->empty()) { lines.push_back({{" " + tr("nothing"), {.dim = true}}}); }
    for (const AgendaLine& line : *section.lines) {
      const bool chosen = state.chosen == row++;
      if (chosen) {
        shown = lines.size();
        heading = top;
      }
      lines.push_back(rowLine(line, chosen && state.inList, size.columns));
    }
  }
  if (shown >= size.lines) {
    const std::size_t wanted = shown - heading < size.lines ? heading : shown - size.lines / 2;
    const std::size_t over = std::min(wanted, lines.size() - size.lines);
    lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(over));
  }
  return lines;
}

Lines detailLines(const BrowseState& state, std::size_t width) {
  const AgendaLine* row = chosenRow(state);
  if (row == nullptr) { return {}; }
  Lines lines{{{shortened(row->item->title.value_or(tr("(no title)")), width), {.bold = true}}}};
  ItemFacts facts{*row->item, row->when, {}, {}, false, {}};
  append(lines, cardLines(cardOf(facts, state.days.names, state.viewer), width));
  return lines;
}

// What stands below.

std::string hints(const BrowseState& state) {
  return state.inList ? tr("? keys  q quit  Enter all  e edit  x remove  Space done  m move  u undo")
                      : tr("? keys  q quit  Tab list  n new  / search  t today  u undo");
}

/// A line to type, of which the end is seen when it is longer than the screen.
Lines promptLines(const BrowsePrompt& prompt, std::size_t width, std::size_t& cursor) {
  constexpr std::size_t kStep = 10;
  const std::size_t label = displayWidth(prompt.label);
  std::string text = printable(prompt.line.text());
  std::string before = printable(prompt.line.beforeCursor());
  while (label + displayWidth(before) >= width && before.size() > kStep) {
    const std::string hidden = clipped(before, kStep);
    if (hidden.empty()) { break; }
    before.erase(0, hidden.size());
    text.erase(0, hidden.size());
  }
  cursor = std::min(width - 1, label + displayWidth(before));
  return {{{prompt.label, {.bold = true}}, {text}}};
}

Lines questionLines(const BrowseQuestion& question, std::size_t width) {
  std::string text = question.text + "  ";
  for (const BrowseQuestion::Answer& answer : question.answers) { text += answer.key + ' ' + answer.text + "  "; }
  text += tr("Esc nothing");
  Lines lines;
  for (const std::string& line : foldedText(text, width)) { lines.push_back({{line, {.bold = true}}}); }
  return lines;
}

/// What a command said. Lines that fit stay as they are: some point at a place in the one before.
Lines messageLines(std::string_view message, std::size_t width) {
  Lines lines;
  while (!message.empty() && lines.size() < kMostMessageLines) {
    const std::size_t end = std::min(message.find('\n'), message.size());
    const std::string line = printable(message.substr(0, end));
    message.remove_prefix(std::min(message.size(), end + 1));
    if (displayWidth(line) <= width) {
      lines.push_back({{line}});
    } else {
      for (const std::string& part : foldedText(line, width)) { lines.push_back({{part}}); }
    }
  }
  lines.resize(std::min(lines.size(), kMostMessageLines));
  return lines;
}

/// The last lines of the screen, with the column of the cursor where there is one: it stands in the last of them.
Lines bottomLines(const BrowseState& state, std::optional<std::size_t>& cursor) {
  const std::size_t width = state.size.columns;
  if (const auto* prompt = std::get_if<BrowsePrompt>(&state.over)) {
    std::size_t column = 0;
    Lines lines = messageLines(state.message, width);
    append(lines, promptLines(*prompt, width, column));
    cursor = column;
    return lines;
  }
  if (const auto* question = std::get_if<BrowseQuestion>(&state.over)) { return questionLines(*question, width); }
  if (state.message.empty()) { return {{{shortened(hints(state), width), {.dim = true}}}}; }
  return messageLines(state.message, width);
}

Lines sideBySide(const BrowseState& state, Size size) {
  Lines left = monthLines(state, kWeeksInMonth);
  left.push_back({});
  append(left, calendarLines(state));
  left = fitted(std::move(left), {kMonthWidth, size.lines});
  const std::size_t listWidth = size.columns - kMonthWidth - 2;
  const Lines right = fitted(listLines(state, {listWidth, size.lines}), {listWidth, size.lines});
  for (std::size_t i = 0; i < size.lines; ++i) {
    left[i].push_back({"│ ", {.dim = true}});
    left[i].insert(left[i].end(), right[i].begin(), right[i].end());
  }
  return left;
}

Lines oneBelowTheOther(const BrowseState& state, Size size) {
  Lines lines = monthLines(state, state.size.lines >= kTall ? kWeeksInMonth : 1);
  lines.push_back(rule(size.columns));
  const Size rest{size.columns, size.lines - lines.size()};
  append(lines, fitted(listLines(state, rest), rest));
  return lines;
}

Picture calendarPicture(const BrowseState& state) {
  const auto [columns, height] = state.size;
  std::optional<std::size_t> cursor;
  Lines bottom = bottomLines(state, cursor);
  Lines below;
  if (height >= kTall) {
    below.push_back(rule(columns));
    append(below, fitted(detailLines(state, columns), {columns, kDetailLines}));
  }
  append(below, std::move(bottom));
  const std::size_t lineOfCursor = height - 1;
  const Size body{columns, height - std::min(height - 1, below.size())};
  Picture picture;
  picture.lines = fitted(columns >= kWide ? sideBySide(state, body) : oneBelowTheOther(state, body), body);
  append(picture.lines, std::move(below));
  if (cursor) { picture.cursor = Picture::Place{lineOfCursor, *cursor}; }
  return picture;
}

Picture pagePicture(const BrowseState& state, const BrowsePage& page) {
  const std::size_t room = pageLines(state);
  Lines lines{{{shortened(page.title, state.size.columns), {.bold = true}}}};
  for (std::size_t i = page.top; i < std::min(page.lines.size(), page.top + room); ++i) {
    lines.push_back(page.lines[i]);
  }
  lines.resize(1 + room);
  const bool isWhole = page.lines.size() <= room;
  lines.push_back(
      {{isWhole ? tr("Any key goes back") : tr("Arrows and Space go on, any other key goes back"), {.dim = true}}});
  return {std::move(lines), {}};
}

Picture menuPicture(const BrowseState& state, const BrowseMenu& menu) {
  const std::size_t room = pageLines(state), width = state.size.columns;
  Lines lines{{{shortened(menu.title, width), {.bold = true}}}};
  const std::size_t top = menu.chosen < room ? 0 : menu.chosen - room + 1;
  for (std::size_t i = top; i < std::min(menu.rows.size(), top + room); ++i) {
    const bool chosen = i == menu.chosen;
    lines.push_back({{" ● ", {.reversed = chosen, .color = menu.rows[i].color}},
                     {padded(shortened(menu.rows[i].text, width - 3), width - 3), {.reversed = chosen}}});
  }
  lines.resize(1 + room);
  lines.push_back({{tr("Enter takes it, Esc goes back"), {.dim = true}}});
  return {std::move(lines), {}};
}

Picture contentOf(const BrowseState& state) {
  if (state.size.columns < kSmallest.columns || state.size.lines < kSmallest.lines) {
    Picture picture;
    const std::string told = tr("This is too small: {} × {} is needed.", kSmallest.columns, kSmallest.lines);
    for (const std::string& line : foldedText(told, state.size.columns)) { picture.lines.push_back({{line}}); }
    return picture;
  }
  if (const auto* page = std::get_if<BrowsePage>(&state.over)) { return pagePicture(state, *page); }
  if (const auto* menu = std::get_if<BrowseMenu>(&state.over)) { return menuPicture(state, *menu); }
  return calendarPicture(state);
}

}  // namespace

std::size_t pageLines(const BrowseState& state) {
  return state.size.lines - std::min(state.size.lines - 1, kAroundPage);
}

std::vector<PictureLine> cardLines(const std::vector<CardLine>& card, std::size_t width) {
  Lines lines;
  for (const CardLine& line : foldedCard(card, width)) { lines.push_back({{line.label, {.dim = true}}, {line.text}}); }
  return lines;
}

Picture pictureOf(const BrowseState& state) {
  Picture picture = contentOf(state);
  picture.lines = fitted(std::move(picture.lines), state.size);
  return picture;
}

}  // namespace orlocal::host
