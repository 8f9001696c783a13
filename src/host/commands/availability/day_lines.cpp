#include "host/commands/availability/day_lines.h"

#include "host/commands/command_line/folded_text.h"
#include "host/commands/words/day_words.h"

namespace orlocal::host {
namespace {

constexpr std::size_t kDayWidth = 17;

}  // namespace

void printDays(const AskedTime& asked, const std::vector<ToldSpan>& spans, const std::string& nothing, const Ink& ink,
               std::size_t width, std::ostream& out) {
  const store::Zone& viewer = asked.viewer;
  // Hours past midnight reach into the day after the last.
  const bool overnight = asked.wanted.hours.end <= asked.wanted.hours.start;
  auto next = spans.begin();
  for (store::LocalDay day = asked.days.first; day <= asked.days.last + (overnight ? 1 : 0); ++day) {
    while (next != spans.end() && store::LocalDay(viewer.toLocal(next->span.end)) < day) { ++next; }
    std::string text;
    for (auto each = next; each != spans.end(); ++each) {
      const store::LocalDay begins(viewer.toLocal(each->span.start));
      if (begins > day) { break; }
      const std::string words = spanInWords(each->span, day, viewer);
      if (words.empty()) { continue; }
      const bool tells = !each->remark.empty() && begins == day;
      text += (text.empty() ? "" : ", ") + words + (tells ? " " + each->remark : "");
    }
    if (text.empty() && (day > asked.days.last || !asked.wanted.weekDays.test(placeInWeek(day)))) { continue; }
    const std::string told =
        text.empty() ? ink.dim(nothing) + "\n" : foldedParagraph(text, width, kDayWidth).substr(kDayWidth);
    out << ink.bold(padded(shortDay(day), kDayWidth)) << told;
  }
}

}  // namespace orlocal::host
