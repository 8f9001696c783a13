#include "store/icalendar/item_limits.h"

#include <algorithm>
#include <string_view>

#include <fmt/format.h>

#include "base/translation.h"
#include "store/icalendar/icalendar_writer.h"

namespace orlocal::store {
namespace {

/// Titles are shown in messages as far as this.
constexpr std::size_t kShownTitle = 60;

std::size_t textBytes(const Item& item) {
  std::size_t bytes = item.extra.size();
  for (const auto* text : {&item.title, &item.notes, &item.location, &item.url}) {
    bytes += *text ? (*text)->size() : 0;
  }
  for (const Alarm& alarm : item.alarms) {
    bytes += alarm.extra.size();
    for (const auto* text : {&alarm.emailAddress, &alarm.soundName, &alarm.url}) {
      bytes += *text ? (*text)->size() : 0;
    }
  }
  for (const Attendee& attendee : item.attendees) {
    bytes += attendee.extra.size() + attendee.address.size() + attendee.name.value_or(std::string()).size();
  }
  return bytes;
}

/// Without those that continue the one before (RFC 5545, 3.1).
std::size_t linesOf(std::string_view text) {
  std::size_t lines = 0;
  for (std::size_t at = 0; (at = text.find('\n', at)) != std::string_view::npos; ++at) {
    lines += at + 1 == text.size() || text[at + 1] != ' ' ? 1U : 0U;
  }
  return lines;
}

}  // namespace

void dropUnwritable(std::string& text) {
  std::erase_if(text, [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte == 0x7F || (byte < 0x20 && c != '\t' && c != '\n' && c != '\r');
  });
}

void keepOnOneLine(std::string& value) {
  dropUnwritable(value);
  std::erase_if(value, [](char c) { return c == '\n' || c == '\r'; });
}

Status checkSize(const Item& item) {
  // Escaped and folded, a text becomes about twice as long; what lies far below the limit need not be written out.
  constexpr std::size_t kFewBytes = kMostItemLines * 2, kFew = kMostItemLines / 20;
  const std::size_t parts =
      item.alarms.size() + item.attendees.size() + item.recurrence.added.size() + item.recurrence.excluded.size();
  if (textBytes(item) < kFewBytes && parts < kFew) { return {}; }
  std::string text;
  writeItem(text, item);
  if (text.size() <= kMostItemBytes && linesOf(text) <= kMostItemLines) { return {}; }
  return failure(ErrorCode::kTooLarge,
                 tr("The item \"{:.{}}\" would take more than {} MiB or {} lines as iCalendar text, and no "
                    "import would take it again; shorten it.",
                    item.title.value_or(std::string()), kShownTitle, kMostItemBytes >> 20U, kMostItemLines));
}

}  // namespace orlocal::store
