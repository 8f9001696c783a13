#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "host/commands/browsing/browse_days.h"
#include "host/commands/browsing/browse_key.h"
#include "host/commands/browsing/picture.h"
#include "host/commands/browsing/typed_line.h"
#include "host/commands/words/terms.h"
#include "store/time/zone.h"

// Where somebody is in the calendars, and what a key does there. Nothing here touches a store or a terminal.
namespace orlocal::host {

/// What a key asks of the world.
struct BrowseWish {
  enum class Kind : std::uint8_t {
    kNothing,
    kQuit,
    kRun,     ///< the command of these words: {"remove", …}
    kShow,    ///< all of the chosen thing
    kSearch,  ///< for the text in `words`
  };
  Kind kind = Kind::kNothing;
  std::vector<std::string> words = {};
};

/// A line to type.
struct BrowsePrompt {
  enum class Purpose : std::uint8_t { kNew, kTitle, kWhen, kSearch };
  Purpose purpose = Purpose::kNew;
  std::string label;
  TypedLine line;
  std::vector<std::string> words = {};  ///< of the command, as far as they are known
  std::string before = {};              ///< the text that it began with
  std::string when = {};                ///< of a title: what the next line begins with
  bool changed = false;                 ///< of times: the title was changed
};

/// Something to answer with one key; any other key takes it back.
struct BrowseQuestion {
  struct Answer {
    std::string key, text;
    std::vector<std::string> words;  ///< of the command that it means
    bool whole = false;              ///< all of a series
  };
  std::string text;
  std::vector<Answer> answers;
  bool edits = false;  ///< what is to be changed is asked then; else the command runs
};

/// Lines to read.
struct BrowsePage {
  std::string title;
  std::vector<PictureLine> lines;
  std::size_t top = 0;
};

/// Something to choose from.
struct BrowseMenu {
  struct Row {
    std::string text;
    std::optional<store::Rgb> color;
    std::vector<std::string> words;      ///< of the command that it means, or
    std::optional<store::LocalDay> day;  ///< where it leads
    store::ItemId item = 0;              ///< and to what there
  };
  std::string title;
  std::vector<Row> rows;
  std::size_t chosen = 0;
};

struct BrowseState {
  Size size;
  store::Zone viewer;
  WordsSetting setting;  ///< of the person's words, with the time that it is
  cctz::weekday firstWeekday = cctz::weekday::monday;
  store::LocalDay day;                               ///< where the person is
  bool inList = false;                               ///< the keys move in the list, not in the month
  std::optional<std::size_t> chosen = std::nullopt;  ///< among `browseRows`
  BrowseDays days;
  std::vector<store::Calendar> only = {};  ///< those that are shown where not all are
  std::string message = {};
  std::variant<std::monostate, BrowsePrompt, BrowseQuestion, BrowsePage, BrowseMenu> over = {};
  std::optional<BrowsePrompt> sent = std::nullopt;  ///< the line that the last wish came from, in case that it fails
  store::ItemId sought = 0;                         ///< to be chosen once its day is known

  store::LocalDay today() const { return setting.today(); }
};

/// The days that have to be known where the person is.
struct BrowseRange {
  store::LocalDay first, last;
};
BrowseRange daysNeeded(const BrowseState& state);

/// A block of the list: the day's, those of the days to come and, on today, what is overdue or has no date.
struct BrowseSection {
  std::string heading;
  std::optional<store::LocalDay> day;
  const std::vector<AgendaLine>* lines;
};
/// Borrowed from the state.
std::vector<BrowseSection> browseSections(const BrowseState& state);
std::vector<const AgendaLine*> browseRows(const BrowseState& state);
/// Null when nothing is chosen.
const AgendaLine* chosenRow(const BrowseState& state);

/// Puts what was read anew in the place of what was known; what was chosen stays so as long as it is there.
void takeDays(BrowseState& state, BrowseDays days);
/// Goes to a day, and to its first thing or, in the list, to that item.
void goTo(BrowseState& state, store::LocalDay day, store::ItemId item = 0);

/// What the key does.
BrowseWish press(BrowseState& state, const BrowseKey& key);

/// The times of a thing as `edit` reads them: "2026-11-03 12:30-13:30"; empty without a date. Of a whole series they
/// are those of the clock alone: its days are not those of the occurrence.
std::string timesToEdit(const AgendaLine& row, const store::Zone& viewer, bool wholeSeries);

}  // namespace orlocal::host
