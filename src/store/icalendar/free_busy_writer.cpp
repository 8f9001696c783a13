#include "store/icalendar/free_busy_writer.h"

#include <string_view>

#include "store/icalendar/content_line.h"
#include "store/icalendar/item_limits.h"
#include "store/time/time_text.h"

namespace orlocal::store {
namespace {

std::string_view wordFor(BusyKind kind) {
  switch (kind) {
    case BusyKind::kTentative:
      return "BUSY-TENTATIVE";
    case BusyKind::kUnavailable:
      return "BUSY-UNAVAILABLE";
    case BusyKind::kBusy:
      return "BUSY";
  }
  return "BUSY";
}

}  // namespace

void writeFreeBusy(std::string& out, const FreeBusy& freeBusy) {
  const auto line = [&out](const std::string& text) { appendFolded(out, text); };
  line("BEGIN:VFREEBUSY");
  line("UID:" + escapeText(freeBusy.uid));
  line("DTSTAMP:" + momentText(freeBusy.stamp));
  if (freeBusy.organizer) {
    std::string organizer = *freeBusy.organizer;
    keepOnOneLine(organizer);
    line("ORGANIZER:" + organizer);
  }
  line("DTSTART:" + momentText(freeBusy.from));
  line("DTEND:" + momentText(freeBusy.to));
  // A line for each stretch of one kind, so that the periods stay in their order.
  for (std::size_t i = 0; i < freeBusy.busy.size();) {
    const BusyKind kind = freeBusy.busy[i].kind;
    std::string text = "FREEBUSY;FBTYPE=" + std::string(wordFor(kind));
    for (char before = ':'; i < freeBusy.busy.size() && freeBusy.busy[i].kind == kind; ++i, before = ',') {
      text += before + momentText(freeBusy.busy[i].start) + '/' + momentText(freeBusy.busy[i].end);
    }
    line(text);
  }
  line("END:VFREEBUSY");
}

}  // namespace orlocal::store
