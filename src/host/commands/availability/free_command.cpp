#include <algorithm>
#include <memory>
#include <ostream>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"
#include "host/commands/availability/asked_time.h"
#include "host/commands/availability/availability_commands.h"
#include "host/commands/availability/day_lines.h"
#include "host/commands/command_line/json_text.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/command_line/trouble.h"
#include "host/commands/words/day_words.h"
#include "store/time/clock.h"

namespace orlocal::host {
namespace {

struct FreeWords {
  TimeWords time;
  std::string length;
};

/// The least that is worth telling; none where a usage error was told already.
std::optional<std::chrono::minutes> leastOf(const std::string& words, const AskedTime& asked, CommandContext& context) {
  if (words.empty()) { return std::chrono::minutes(1); }
  const auto length = readLength(words, settingOfUser(asked.viewer.toLocal(store::now())));
  if (!length) {
    tellTrouble(context.streams.err, fmt::format("--length: {}.", length.error().message));
    return std::nullopt;
  }
  return std::max<std::chrono::minutes>(std::chrono::days(length->days) + length->minutes, std::chrono::minutes(1));
}

/// Nobody has time any more that is over, unless it is the past that is asked about.
std::vector<TimeSpan> spansStillToCome(AskedTime& asked) {
  const store::Moment now = std::chrono::ceil<std::chrono::minutes>(store::now());
  const store::LocalDay today(asked.viewer.toLocal(now));
  if (asked.days.last < today) { return asked.spans(); }
  asked.days.first = std::max(asked.days.first, today);
  std::vector<TimeSpan> spans = asked.spans();
  std::erase_if(spans, [now](const TimeSpan& span) { return span.end <= now; });
  for (TimeSpan& span : spans) { span.start = std::max(span.start, now); }
  return spans;
}

nlohmann::json gapsJson(const std::vector<TimeSpan>& gaps, const store::Zone& viewer) {
  nlohmann::json json = nlohmann::json::array();
  for (const TimeSpan& gap : gaps) {
    json.push_back({{"start", isoMoment(gap.start, viewer)},
                    {"end", isoMoment(gap.end, viewer)},
                    {"minutes", std::chrono::floor<std::chrono::minutes>(gap.length()).count()}});
  }
  return json;
}

Result<ExitStatus> runFree(const FreeWords& words, CommandContext& context) {
  auto asked = readTimeWords(words.time, context);
  if (!asked) { return ExitStatus::kUsage; }
  const auto least = leastOf(words.length, *asked, context);
  if (!least) { return ExitStatus::kUsage; }
  ORLOCAL_TRY(const auto store, openUserStore(asked->viewer));
  const auto spans = spansStillToCome(*asked);
  ORLOCAL_TRY(const auto busy, busyTimesOf(*store, *asked, spans, words.time.calendars));
  const auto gaps = gapsBetween(busy, spans, *least);
  if (context.options.json) {
    nlohmann::json json = askedJson(*asked);
    json["leastMinutes"] = least->count();
    json["free"] = gapsJson(gaps, asked->viewer);
    printJson(json, context.streams.out);
    return ExitStatus::kDone;
  }
  const std::string when = askedInWords(*asked, !words.time.zone.empty());
  context.streams.out << (words.length.empty() ? tr("Free: {}\n", when)
                                               : tr("Free for {} or more: {}\n", shortLength(*least), when));
  std::vector<ToldSpan> told;
  for (const TimeSpan& gap : gaps) { told.push_back({gap, fmt::format("({})", shortLength(gap.length()))}); }
  printDays(*asked, told, "–", Ink(context.streams.colors), terminalWidth(context.streams.outIsTerminal),
            context.streams.out);
  return ExitStatus::kDone;
}

}  // namespace

void registerFreeCommand(CommandLine& line) {
  auto words = std::make_shared<FreeWords>();
  CLI::App& command =
      line.add("free",
               "Show when you have time, day by day: the coming week, or the days named. What takes time\n"
               "stands in docs/availability.md.",
               [words](CommandContext& context) { return runFree(*words, context); });
  addTimeOptions(command, words->time);
  command.add_option("--length", words->length, "Only what is at least so long: 1h, 30m (default: any)")
      ->type_name("LENGTH");
  command.footer(
      "  orlocal free --hours 9-17 --weekdays\n  orlocal free next week --length 2h\n"
      "  orlocal free friday --calendar Work --zone America/New_York");
}

}  // namespace orlocal::host
