#include <algorithm>
#include <utility>

#include <fmt/format.h>

#include "base/text.h"
#include "base/translation.h"
#include "host/commands/browsing/browse_presses.h"
#include "host/commands/words/day_words.h"
#include "host/commands/words/when_words.h"

namespace orlocal::host {
namespace {

using store::LocalDay;
using store::LocalTime;

using Kind = BrowseWish::Kind;
using Name = BrowseKey::Name;
using Purpose = BrowsePrompt::Purpose;

/// Puts a text behind an option, so that none of it can be taken for another one.
void addOption(std::vector<std::string>& words, const std::string& option, const std::string& text) {
  if (text.empty()) {
    words.insert(words.end(), {option, text});
  } else {
    words.push_back(option + '=' + text);
  }
}

/// A sentence without a day is about the day where the person is. What cannot be read is left to the command to tell.
bool namesNoDay(const std::string& sentence, const WordsSetting& setting) {
  const auto read = readTitleAndWhen(sentence, setting);
  return read && !read->when.day && !read->when.repeat;
}

BrowseWish makeNew(const BrowseState& state, const BrowsePrompt& prompt) {
  BrowseWish wish{Kind::kRun, prompt.words};
  const std::string& sentence = prompt.line.text();
  if (namesNoDay(sentence, state.setting)) { addOption(wish.words, "--start", isoDay(state.day)); }
  wish.words.insert(wish.words.end(), {"--", sentence});
  return wish;
}

void askWhen(BrowseState& state, const BrowsePrompt& title) {
  BrowsePrompt prompt{Purpose::kWhen, tr("When: "), TypedLine(title.when), title.words, title.when};
  prompt.changed = title.line.text() != title.before;
  if (prompt.changed) { addOption(prompt.words, "--title", title.line.text()); }
  state.over = std::move(prompt);
}

BrowseWish saveChanges(BrowseState& state, BrowsePrompt prompt) {
  const bool moves = prompt.line.text() != prompt.before;
  if (moves) { addOption(prompt.words, "--start", prompt.line.text()); }
  if (moves || prompt.changed) { return {Kind::kRun, std::move(prompt.words)}; }
  state.message = tr("Nothing was changed.");
  return {};
}

BrowseWish enter(BrowseState& state, BrowsePrompt prompt) {
  state.over = std::monostate();
  state.sent = prompt;
  const std::string text(trimmed(prompt.line.text()));
  switch (prompt.purpose) {
    case Purpose::kNew:
      return text.empty() ? BrowseWish{} : makeNew(state, prompt);
    case Purpose::kSearch:
      return text.empty() ? BrowseWish{} : BrowseWish{Kind::kSearch, {text}};
    case Purpose::kTitle:
      askWhen(state, prompt);
      return {};
    case Purpose::kWhen:
      return saveChanges(state, std::move(prompt));
  }
  return {};
}

/// The length in words that are read in any language.
std::string lengthOf(std::int64_t seconds) {
  const std::int64_t minutes = seconds / 60;
  std::string text;
  if (minutes >= 60) { text += fmt::format("{}h", minutes / 60); }
  if (minutes % 60 != 0 || text.empty()) { text += fmt::format("{}m", minutes % 60); }
  return text;
}

}  // namespace

std::string timesToEdit(const AgendaLine& row, const store::Zone& viewer, bool wholeSeries) {
  const store::Item& item = *row.item;
  if (item.kind == store::ItemKind::kReminder) {
    if (!item.due) { return ""; }
    const LocalTime due = viewer.toLocal(store::momentOf(*item.due, viewer));
    const std::string day = isoDay(LocalDay(due));
    return item.due->kind == store::CalendarTime::Kind::kDate ? day : day + ' ' + clockTime(due);
  }
  if (!row.when) { return ""; }
  const LocalTime start = viewer.toLocal(row.when->start), end = viewer.toLocal(row.when->end);
  const std::string day = isoDay(LocalDay(start));
  if (item.allDay()) {
    if (wholeSeries) { return ""; }
    const auto days = LocalDay(end) - LocalDay(start);
    return days > 1 ? fmt::format("{} {} days", day, days) : day;
  }
  const std::string begin = (wholeSeries ? "" : day + ' ') + clockTime(start);
  if (end <= start) { return begin + " 0m"; }
  return LocalDay(start) == LocalDay(end) ? begin + '-' + clockTime(end) : begin + ' ' + lengthOf(end - start);
}

void askForChanges(BrowseState& state, std::vector<std::string> words, bool wholeSeries) {
  const AgendaLine* row = chosenRow(state);
  if (row == nullptr) { return; }
  const std::string title = row->item->title.value_or("");
  state.over = BrowsePrompt{Purpose::kTitle,  tr("Title: "), TypedLine(title),
                            std::move(words), title,         timesToEdit(*row, state.viewer, wholeSeries)};
}

BrowseWish pressInPrompt(BrowseState& state, BrowsePrompt& prompt, const BrowseKey& key) {
  if (key.name == Name::kEscape) {
    state.over = std::monostate();
    return {};
  }
  if (key.name == Name::kEnter) { return enter(state, std::move(prompt)); }
  prompt.line.press(key);
  return {};
}

BrowseWish pressInQuestion(BrowseState& state, BrowseQuestion& question, const BrowseKey& key) {
  const BrowseQuestion asked = std::move(question);
  state.over = std::monostate();
  for (const BrowseQuestion::Answer& answer : asked.answers) {
    // English is understood in every language, as in the questions of commands.
    if (!key.is(answer.key) && !(key.is("y") && asked.answers.size() == 1)) { continue; }
    if (!asked.edits) { return {Kind::kRun, answer.words}; }
    askForChanges(state, answer.words, answer.whole);
    return {};
  }
  state.message = tr("Nothing was done.");
  return {};
}

BrowseWish pressInPage(BrowseState& state, BrowsePage& page, const BrowseKey& key) {
  const std::size_t room = pageLines(state);
  const std::size_t last = page.lines.size() - std::min(page.lines.size(), room);
  if (key.name == Name::kUp || key.is("k")) {
    page.top -= std::min<std::size_t>(page.top, 1);
  } else if (key.name == Name::kDown || key.is("j")) {
    page.top = std::min(page.top + 1, last);
  } else if (key.name == Name::kPageUp) {
    page.top -= std::min(page.top, room);
  } else if (key.name == Name::kPageDown || key.is(" ")) {
    page.top = std::min(page.top + room, last);
  } else {
    state.over = std::monostate();
  }
  return {};
}

BrowseWish pressInMenu(BrowseState& state, BrowseMenu& menu, const BrowseKey& key) {
  const std::size_t last = menu.rows.size() - 1;
  if (key.name == Name::kUp || key.is("k")) {
    menu.chosen -= std::min<std::size_t>(menu.chosen, 1);
  } else if (key.name == Name::kDown || key.is("j")) {
    menu.chosen = std::min(menu.chosen + 1, last);
  } else if (key.name == Name::kPageUp) {
    menu.chosen -= std::min(menu.chosen, pageLines(state));
  } else if (key.name == Name::kPageDown) {
    menu.chosen = std::min(menu.chosen + pageLines(state), last);
  } else if (key.name == Name::kEnter) {
    const BrowseMenu::Row row = std::move(menu.rows[menu.chosen]);
    state.over = std::monostate();
    if (!row.words.empty()) { return {Kind::kRun, row.words}; }
    if (row.day) { goTo(state, *row.day, row.item); }
  } else if (key.name == Name::kEscape || key.is("q")) {
    state.over = std::monostate();
  }
  return {};
}

}  // namespace orlocal::host
