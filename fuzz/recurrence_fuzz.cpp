#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "store/recurrence/recurrence.h"
#include "store/recurrence/rule_text.h"
#include "store/time/time_text.h"

// A rule's text, a line break, a start: expanding stays within its budget, goes forward, and begins where it says.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace orlocal::store;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const std::size_t end = text.find('\n');
  const auto rule = parseRule(text.substr(0, end));
  auto start = end == std::string_view::npos ? std::nullopt : parseTime(text.substr(end + 1));
  if (!rule || !start) { return 0; }
  if (start->kind == CalendarTime::Kind::kFloating) {
    start->kind = CalendarTime::Kind::kZoned;
    start->zone = "Europe/Berlin";
  }
  Item item;
  item.start = start;
  item.recurrence.rules.push_back(*rule);
  const Zone viewer;
  const auto series = Series::compile(item, viewer);
  if (!series) { return 0; }
  ExpansionBudget budget(200'000);
  Moment previous = Moment::min();
  int count = 0;
  (void)series->expand(Moment::min(), Moment::max(), budget, [&](const Series::Instance& instance) {
    if (instance.start <= previous || instance.end < instance.start) { std::abort(); }
    previous = instance.start;
    return ++count < 500;
  });
  const Moment middle = series->bounds().start + std::chrono::days(3000);
  (void)series->expand(middle, middle + std::chrono::days(30), budget, [&](const Series::Instance& instance) {
    if (instance.start >= middle + std::chrono::days(30)) { std::abort(); }
    return true;
  });
  (void)series->countBefore(middle, 0, budget);
  return 0;
}
