#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/result.h"
#include "host/commands/browsing/browse_state.h"
#include "host/commands/command_line/command.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/scripting/commands_in_place.h"
#include "store/calendar_store.h"

namespace orlocal::host {

/// Does in the store what keys ask for. What changes something is a command as it could be typed, so that it says,
/// checks and notes in the journal what that does.
class BrowseDesk {
 public:
  /// All is borrowed. `shown`: which calendars are.
  BrowseDesk(CommandContext& context, Registration registerAll, store::CalendarStore& store, CalendarChoice shown);

  /// Reads what the screen needs where that is not known, or is no longer so.
  Status refresh(BrowseState& state);
  /// What goes wrong becomes the state's message.
  void serve(const BrowseWish& wish, BrowseState& state);

 private:
  Status run(const std::vector<std::string>& words, BrowseState& state);
  /// Goes to what the last commit of others after `since` brought, so that one sees it and goes on there.
  Status goToWhatCame(store::LogPosition since, BrowseState& state);
  Status show(BrowseState& state);
  Status search(const std::string& text, BrowseState& state);

  CommandContext& m_context;
  Registration m_registerAll;
  store::CalendarStore& m_store;
  CalendarChoice m_shown;
  std::uint64_t m_generation = 0;
};

}  // namespace orlocal::host
