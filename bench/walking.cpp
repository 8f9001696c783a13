// A solution's loop over the occurrences of a year: open one, read what it shows, open the next.
#include "walking.h"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "files.h"
#include "floors.h"
#include "parts.h"
#include "processes.h"
#include "solution.h"

namespace orlocal::bench {
namespace {

constexpr std::array<std::u16string_view, 5> kProperties = {u"title", u"startdate", u"enddate", u"location",
                                                            u"externaluid"};
constexpr std::size_t kCalls = 1 + kProperties.size();

/// The calls of one occurrence, made ready.
struct Loop {
  Call open{u"Orlo_OpenItemAt", {u"event", u"1"}};
  std::array<Call, kProperties.size()> properties{
      Call{u"Orlo_GetProperty", {u"event", kProperties[0]}}, Call{u"Orlo_GetProperty", {u"event", kProperties[1]}},
      Call{u"Orlo_GetProperty", {u"event", kProperties[2]}}, Call{u"Orlo_GetProperty", {u"event", kProperties[3]}},
      Call{u"Orlo_GetProperty", {u"event", kProperties[4]}}};
};

void openEach(Loop& loop, std::size_t count, bool withProperties) {
  for (std::size_t i = 1; i <= count; ++i) {
    loop.open.setLast(static_cast<std::int32_t>(i));
    loop.open();
    if (!withProperties) { continue; }
    for (Call& property : loop.properties) { property(); }
  }
  loop.open.checked();  // the last one, and so all before it
}

/// What the calls of some occurrences answer.
using Texts = std::vector<std::array<std::u16string, kCalls>>;

Texts textsOf(std::size_t most) {
  Texts texts;
  Loop loop;
  const std::size_t count = std::min(most, askPlugin()(kYear2026));
  for (std::size_t i = 1; i <= count; ++i) {
    auto& answers = texts.emplace_back();
    loop.open.setLast(static_cast<std::int32_t>(i));
    loop.open.checked();
    answers[0] = loop.open.text();
    for (std::size_t p = 0; p < kProperties.size(); ++p) {
      loop.properties[p].checked();
      answers[p + 1] = loop.properties[p].text();
    }
  }
  return texts;
}

std::u16string_view g_answer;

/// A function of the host's signature that reads its arguments and answers with a text that lies ready.
fmx::ErrorCode answering(std::int16_t, const fmx::ExprEnv*, const fmx::DataVect* arguments, fmx::Data* result) {
  fmx::Exception x;
  std::array<char16_t, 64> units;
  for (std::uint32_t i = 0, count = fmx::FM_DataVect_Size(arguments, &x); i < count; ++i) {
    const fmx::Text* argument = fmx::FM_DataVect_AtAsText(arguments, i, &x);
    fmx::FM_Text_GetUnicode(argument, units.data(), 0, fmx::FM_Text_GetSize(argument, &x), &x);
  }
  answerWith(g_answer, result);
  return 0;
}

/// As many calls with the same texts, over and over those of the first occurrences.
Outcome bareCalls(std::size_t occurrences) {
  constexpr std::size_t kSome = 1'000;
  const Texts texts = textsOf(kSome);
  Call open(&answering, {u"event", u"1"}), property(&answering, {u"event", u"startdate"});
  return {seconds([&] {
            for (std::size_t i = 0; i < occurrences; ++i) {
              const auto& answers = texts[i % texts.size()];
              open.setLast(static_cast<std::int32_t>(i + 1));
              g_answer = answers[0];
              open();
              for (std::size_t p = 1; p < kCalls; ++p) {
                g_answer = answers[p];
                property();
              }
            }
          }),
          occurrences};
}

Outcome rowByRow(const std::filesystem::path& file) {
  Floor floor(file);
  const auto numbers = floor.numbersWithin(utcSeconds(kYear2026.from), utcSeconds(kYear2026.to));
  return {seconds([&] { floor.readRows(numbers); }), numbers.size()};
}

Outcome scanned(const std::filesystem::path& file, std::size_t (Floor::*within)(std::int64_t, std::int64_t)) {
  Floor floor(file);
  const auto scan = [&] { return (floor.*within)(utcSeconds(kYear2026.from), utcSeconds(kYear2026.to)); };
  const std::size_t rows = scan();
  return {seconds(scan), rows};
}

/// What was answered before is asked for again.
Outcome walkAgain() {
  askPlugin()(kYear2026);
  Outcome outcome;
  outcome.amount = seconds([&] { outcome.rows = walk(kYear2026); });
  return outcome;
}

Outcome openKept() {
  Loop loop;
  const std::size_t count = askPlugin()(kYear2026);
  return {seconds([&] { openEach(loop, count, false); }), count};
}

}  // namespace

std::size_t walk(const Range& range) {
  Loop loop;
  const std::size_t count = askPlugin()(range);
  openEach(loop, count, true);
  return count;
}

void measureWalking(Report& report, const Setting& setting) {
  for (const std::size_t events : setting.sizes) {
    const auto file = floorFile(setting, events);
    useStore(storeFile(setting, events));
    const auto besides = [](const char* name, const auto& measure) {
      return Contender{name, [measure] { return inChild(measure); }};
    };
    const auto inHost = [&](const char* name, const auto& measure) {
      return Contender{name, [&, measure] {
                         return inChild([&] {
                           const auto plugin = startPlugin(setting.plugin);
                           return measure();
                         });
                       }};
    };
    const std::size_t occurrences = Floor(file).timesWithin(utcSeconds(kYear2026.from), utcSeconds(kYear2026.to));
    const auto rows = besides("plain rows", [&] { return scanned(file, &Floor::rowsWithin); });
    const auto index = besides("covering index", [&] { return scanned(file, &Floor::timesWithin); });
    const auto calls = inHost("six bare calls, same texts", [&] { return bareCalls(occurrences); });
    const auto each = besides("the row by its number", [&] { return rowByRow(file); });

    Row year = compare(setting.fewRoundsFor(events), inHost("", walkAgain), {calls, rows, index});
    year.name = "walk over a year";
    year.aim = 2;
    year.events = events;
    report.add(std::move(year));

    Row opens = compare(setting.fewRoundsFor(events), inHost("", openKept), {each, index});
    opens.name = "each item of a kept fetch opened";
    opens.aim = 1.5;
    opens.events = events;
    report.add(std::move(opens));
  }
}

}  // namespace orlocal::bench
