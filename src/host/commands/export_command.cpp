#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "host/commands/all_commands.h"
#include "host/commands/command.h"
#include "host/commands/output_file.h"
#include "host/commands/store_session.h"
#include "store/export.h"

namespace orlocal::host {
namespace {

constexpr const char* kStandardOutput = "-";

struct ExportWords {
  std::vector<std::string> calendars;
  std::string file = kStandardOutput;
};

void writeOut(store::CalendarStore& store, const std::vector<store::Calendar>& calendars, std::ostream& out) {
  const auto status = store::exportCalendars(store, calendars, [&out](std::string_view text) -> store::Status {
    out.write(text.data(), static_cast<std::streamsize>(text.size()));
    if (out) return {};
    return store::failure(store::ErrorCode::kIo, "The standard output cannot be written.");
  });
  if (!status) throw CommandFailure(status.error().message);
}

ExitStatus runExport(const ExportWords& words, CommandContext& context) {
  const auto store = openUserStore();
  const auto calendars = calendarsTitled(allCalendars(*store), words.calendars);
  if (words.file == kStandardOutput) {
    writeOut(*store, calendars, context.streams.out);
    return ExitStatus::kDone;
  }
  const auto file = orFail(OutputFile::open(words.file));
  auto status = store::exportCalendars(*store, calendars, [&](std::string_view text) { return file->write(text); });
  if (status) status = file->finish();
  if (!status) throw CommandFailure(status.error().message);
  return ExitStatus::kDone;
}

}  // namespace

void registerExportCommand(CommandLine& line) {
  auto words = std::make_shared<ExportWords>();
  CLI::App& command = line.add("export", "Write calendars and reminder lists as a calendar file.",
                               [words](CommandContext& context) { return runExport(*words, context); });
  command.add_option("--calendar", words->calendars, "Only this calendar or reminder list; may be repeated")
      ->type_name("TITLE")
      ->allow_extra_args(false);
  command.add_option("-o,--output", words->file, "The file to write; - is the standard output, as without it")
      ->type_name("FILE");
}

}  // namespace orlocal::host
