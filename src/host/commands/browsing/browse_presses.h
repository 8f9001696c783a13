#pragma once

#include <string>
#include <vector>

#include "host/commands/browsing/browse_state.h"

// What a key does, by what is in front.
namespace orlocal::host {

BrowseWish pressInCalendar(BrowseState& state, const BrowseKey& key);
BrowseWish pressInPrompt(BrowseState& state, BrowsePrompt& prompt, const BrowseKey& key);
BrowseWish pressInQuestion(BrowseState& state, BrowseQuestion& question, const BrowseKey& key);
BrowseWish pressInPage(BrowseState& state, BrowsePage& page, const BrowseKey& key);
BrowseWish pressInMenu(BrowseState& state, BrowseMenu& menu, const BrowseKey& key);

/// Asks for a title and times of the chosen thing; `words` are those of `edit` that name it.
void askForChanges(BrowseState& state, std::vector<std::string> words, bool wholeSeries);

/// What each key is for, for people.
struct KeyHelp {
  const char* keys;     ///< translatable
  const char* meaning;  ///< translatable
};
const std::vector<KeyHelp>& keyHelp();

/// Lines of a page that have room.
std::size_t pageLines(const BrowseState& state);

}  // namespace orlocal::host
