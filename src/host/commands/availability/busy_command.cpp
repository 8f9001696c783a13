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
#include "host/commands/command_line/output_file.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/command_line/trouble.h"
#include "host/commands/words/day_words.h"
#include "store/file/uuid.h"
#include "store/icalendar/icalendar_writer.h"
#include "store/invitations/people.h"
#include "store/time/clock.h"

namespace orlocal::host {
namespace {

using store::BusyKind;
using store::BusyTime;

struct BusyWords {
  TimeWords time;
  bool asFile = false;
  std::string file = "-";
};

const char* nameOf(BusyKind kind) {
  switch (kind) {
    case BusyKind::kTentative:
      return translatable("tentative");
    case BusyKind::kUnavailable:
      return translatable("unavailable");
    case BusyKind::kBusy:
      return "busy";
  }
  return "busy";
}

nlohmann::json busyJson(const std::vector<BusyTime>& busy, const store::Zone& viewer) {
  nlohmann::json json = nlohmann::json::array();
  for (const BusyTime& time : busy) {
    json.push_back(
        {{"start", isoMoment(time.start, viewer)}, {"end", isoMoment(time.end, viewer)}, {"kind", nameOf(time.kind)}});
  }
  return json;
}

std::string freeBusyFile(const AskedTime& asked, const std::vector<BusyTime>& busy) {
  store::FreeBusy freeBusy;
  freeBusy.uid = store::UuidMaker().next().text();
  freeBusy.stamp = store::now();
  freeBusy.from = asked.viewer.toMoment(store::LocalTime(asked.days.first));
  freeBusy.to = asked.viewer.toMoment(store::LocalTime(asked.days.last + 1));
  // Hours past midnight reach into the day after the last.
  if (!busy.empty()) { freeBusy.to = std::max(freeBusy.to, busy.back().end); }
  if (!asked.owner.addresses.empty()) {
    freeBusy.organizer = fmt::format("mailto:{}", store::withoutMailto(asked.owner.addresses.front()));
  }
  freeBusy.busy = busy;
  std::string text;
  store::writePlainHead(text);
  store::writeFreeBusy(text, freeBusy);
  store::writeCalendarEnd(text);
  return text;
}

Result<ExitStatus> runBusy(const BusyWords& words, CommandContext& context) {
  if (words.asFile && context.options.json) {
    tellTrouble(context.streams.err, tr("a calendar file is no JSON; say --ics or --json"));
    return ExitStatus::kUsage;
  }
  const auto asked = readTimeWords(words.time, context);
  if (!asked) { return ExitStatus::kUsage; }
  ORLOCAL_TRY(const auto store, openUserStore(asked->viewer));
  const auto spans = asked->spans();
  ORLOCAL_TRY(const auto merged, busyTimesOf(*store, *asked, spans, words.time.calendars));
  const auto busy = partsWithin(merged, spans);
  if (words.asFile) {
    ORLOCAL_CHECK(writeOutput(words.file, freeBusyFile(*asked, busy), context.streams.out));
    return ExitStatus::kDone;
  }
  if (context.options.json) {
    nlohmann::json json = askedJson(*asked);
    json["busy"] = busyJson(busy, asked->viewer);
    printJson(json, context.streams.out);
    return ExitStatus::kDone;
  }
  context.streams.out << tr("Busy: {}\n", askedInWords(*asked, !words.time.zone.empty()));
  std::vector<ToldSpan> told;
  for (const BusyTime& time : busy) {
    const bool usual = time.kind == BusyKind::kBusy;
    told.push_back({{time.start, time.end}, usual ? "" : fmt::format("({})", translated(nameOf(time.kind)))});
  }
  printDays(*asked, told, "–", Ink(context.streams.colors), terminalWidth(context.streams.outIsTerminal),
            context.streams.out);
  return ExitStatus::kDone;
}

}  // namespace

void registerBusyCommand(CommandLine& line) {
  auto words = std::make_shared<BusyWords>();
  CLI::App& command = line.add("busy",
                               "Show when you are busy, and nothing of why: the coming week, or the days named.\n"
                               "What takes time stands in docs/availability.md.",
                               [words](CommandContext& context) { return runBusy(*words, context); });
  addTimeOptions(command, words->time);
  CLI::Option* asFile =
      command.add_flag("--ics", words->asFile, "As a calendar file with a VFREEBUSY, to be given to others");
  command.add_option("-o,--output", words->file, "The file to write; - is the standard output, as without it")
      ->type_name("FILE")
      ->needs(asFile);
  command.footer("  orlocal busy\n  orlocal busy --from monday --to +28 --ics -o busy.ics");
}

}  // namespace orlocal::host
