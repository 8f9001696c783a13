#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <CLI/CLI.hpp>

#include "base/translation.h"
#include "base/try.h"
#include "host/commands/browsing/browse_desk.h"
#include "host/commands/browsing/browse_picture.h"
#include "host/commands/browsing/browse_state.h"
#include "host/commands/browsing/browsing_commands.h"
#include "host/commands/browsing/terminal_screen.h"
#include "host/commands/choosing/common_options.h"
#include "host/commands/command_line/change_wait.h"
#include "host/commands/command_line/command.h"
#include "host/commands/command_line/interruption.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/command_line/trouble.h"
#include "host/commands/words/date_locale.h"
#include "host/commands/words/day_range.h"
#include "store/time/clock.h"

namespace orlocal::host {
namespace {

struct BrowseWords {
  std::string day;
  CalendarChoice calendars;
};

/// Why there can be no screen here; none when there can.
std::optional<std::string> objectionToTerminal(const Streams& streams) {
  if (!streams.inIsTerminal || !streams.outIsTerminal) {
    return tr("browse needs a terminal to show and to read; `orlocal agenda` and `orlocal month` do not.");
  }
  const char* type = std::getenv("TERM");
  if (type == nullptr || *type == '\0' || std::string_view(type) == "dumb") {
    return tr(
        "This terminal cannot be written to at will; `orlocal agenda` and `orlocal month` need no more than lines.");
  }
  return std::nullopt;
}

void noteTime(BrowseState& state) { state.setting = settingOfUser(state.viewer.toLocal(store::now())); }

/// Shows, waits and does, until somebody has had enough.
Status followKeys(TerminalScreen& screen, BrowseDesk& desk, store::ChangeSignal& signal, BrowseState& state) {
  const int descriptors[] = {screen.keyDescriptor(), screen.sizeDescriptor(), signal.descriptor()};
  for (;;) {
    noteTime(state);
    state.size = screen.size();
    if (const Status read = desk.refresh(state); !read) { state.message = read.error().message; }
    screen.show(pictureOf(state));
    ORLOCAL_TRY(const Woken woken, waitForAnyOf(descriptors));
    if (woken == Woken::kByInterruption || screen.isGone()) { return {}; }
    signal.drain();
    screen.takeSize();
    while (const auto key = screen.key()) {
      const BrowseWish wish = press(state, *key);
      if (wish.kind == BrowseWish::Kind::kQuit) { return {}; }
      desk.serve(wish, state);
      // The next key may be about what this one changed.
      if (const Status read = desk.refresh(state); !read) { state.message = read.error().message; }
    }
  }
}

Result<ExitStatus> browse(const BrowseWords& words, Registration registerAll, CommandContext& context) {
  if (const auto objection = objectionToTerminal(context.streams)) {
    tellTrouble(context.streams.err, *objection);
    return ExitStatus::kUsage;
  }
  ORLOCAL_TRY(const auto store, openUserStore());
  BrowseState state;
  if (!words.calendars.only.empty()) { ORLOCAL_TRY(state.only, calendarsChosen(*store, words.calendars)); }
  state.viewer = store::Zone::ofUser();
  state.firstWeekday = firstWeekday();
  noteTime(state);
  state.day = state.today();
  if (const auto named = daysFromWords(words.day, state.today())) { state.day = named->first; }
  ORLOCAL_TRY(const auto signal, store->listen());
  BrowseDesk desk(context, registerAll, *store, words.calendars);
  const Interruption interruption;
  ORLOCAL_TRY(const auto screen, TerminalScreen::open(context.streams.colors));
  ORLOCAL_CHECK(followKeys(*screen, desk, *signal, state));
  return ExitStatus::kDone;
}

}  // namespace

void registerBrowseCommand(CommandLine& line, Registration registerAll) {
  const auto words = std::make_shared<BrowseWords>();
  CLI::App& command = line.add(
      "browse", "Move about in the calendars on a screen of their own, and change them there; ? shows the keys.",
      [words, registerAll](CommandContext& context) { return browse(*words, registerAll, context); });
  command.footer("  orlocal browse\n  orlocal browse friday --calendar Work");
  command.add_option("day", words->day, "Where to begin: 2026-11-02, tomorrow, monday, december (default: today)")
      ->type_name("DAY")
      ->check(objectionToDays);
  addCalendarOptions(command, words->calendars);
}

}  // namespace orlocal::host
