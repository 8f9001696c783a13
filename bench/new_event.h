#pragma once

#include <string>
#include <string_view>

#include <fmt/format.h>

#include "solution.h"

// How a solution makes an event, through the plug-in that this process has started.
namespace orlocal::bench {

inline void setEvent(std::u16string_view property, const std::string& ascii) {
  Call(u"Orlo_SetProperty", {u"event", property, std::u16string(ascii.begin(), ascii.end())}).checked();
}

inline void saveEvent(std::u16string_view span) { Call(u"Orlo_SaveItem", {u"event", span}).checked(); }

/// Not saved yet.
inline void fillNewEvent(int number) {
  Call(u"Orlo_NewItem", {u"event"}).checked();
  setEvent(u"title", fmt::format("Saved {}", number));
  setEvent(u"calendartitle", "Calendar");
  setEvent(u"startdate", "2026-11-05 09:00:00");
  setEvent(u"enddate", "2026-11-05 10:00:00");
}

}  // namespace orlocal::bench
