#include "store/item_limits.h"

#include <algorithm>

#include <fmt/format.h>

#include "store/icalendar_writer.h"

namespace orlocal::store {
namespace {

/// Titles are shown in messages as far as this.
constexpr std::size_t kShownTitle = 60;

std::size_t textBytes(const Item& item) {
  std::size_t bytes = 0;
  for (const auto& text : {item.title, item.notes, item.location, item.url}) bytes += text ? text->size() : 0;
  return bytes;
}

}  // namespace

void dropUnwritable(std::string& text) {
  std::erase_if(text, [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte == 0x7F || (byte < 0x20 && c != '\t' && c != '\n' && c != '\r');
  });
}

Status checkSize(const Item& item) {
  // Escaped and folded, a text becomes about twice as long; what lies far below the limit need not be written out.
  if (textBytes(item) < kMostItemBytes / 8) return {};
  std::string text;
  writeItem(text, item);
  if (text.size() <= kMostItemBytes) return {};
  return failure(ErrorCode::kRefused,
                 fmt::format("The item \"{:.{}}\" would take more than {} MiB as iCalendar text, and no import would "
                             "take it again; shorten its texts.",
                             item.title.value_or(std::string()), kShownTitle, kMostItemBytes >> 20U));
}

}  // namespace orlocal::store
