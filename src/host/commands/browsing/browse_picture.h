#pragma once

#include <vector>

#include "host/commands/browsing/browse_state.h"
#include "host/commands/browsing/picture.h"
#include "host/commands/views/item_card.h"

namespace orlocal::host {

/// What the screen shows: as many lines as it has, each as wide as it is.
Picture pictureOf(const BrowseState& state);

/// A card as lines of a page.
std::vector<PictureLine> cardLines(const std::vector<CardLine>& card, std::size_t width);

}  // namespace orlocal::host
