#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>

#include "base/try.h"
#include "host/commands/command_line/command.h"
#include "host/commands/command_line/output_file.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/command_line/terminal_text.h"
#include "host/commands/transfer/salvage_export.h"
#include "host/commands/transfer/transfer_commands.h"
#include "store/export.h"

namespace orlocal::host {
namespace {

constexpr const char* kStandardOutput = "-";

struct ExportWords {
  std::vector<std::string> calendars;
  std::string file = kStandardOutput;
  bool salvage = false;
};

/// Has `write` write to where the words say; a file appears when all of it is there.
Result<ExitStatus> writeTo(const std::string& file, std::ostream& standardOutput,
                           const std::function<Result<ExitStatus>(const store::TextSink&)>& write) {
  if (file == kStandardOutput) {
    return write([&](std::string_view text) -> Status {
      standardOutput.write(text.data(), static_cast<std::streamsize>(text.size()));
      if (standardOutput) { return {}; }
      return failure(ErrorCode::kIo, "The standard output cannot be written.");
    });
  }
  ORLOCAL_TRY(const auto output, OutputFile::open(file));
  ORLOCAL_TRY(const ExitStatus status, write([&](std::string_view text) { return output->write(text); }));
  ORLOCAL_CHECK(output->finish());
  return status;
}

Result<ExitStatus> runExport(const ExportWords& words, CommandContext& context) {
  if (words.salvage) {
    return writeTo(words.file, context.streams.out, [&](const store::TextSink& sink) {
      return salvageInto(sink, words.calendars, context.streams.err);
    });
  }
  ORLOCAL_TRY(const auto store, openUserStore());
  ORLOCAL_TRY(const auto calendars, calendarsTitled(*store, words.calendars));
  return writeTo(words.file, context.streams.out, [&](const store::TextSink& sink) -> Result<ExitStatus> {
    ORLOCAL_TRY(const store::ExportReport report, store::exportCalendars(*store, calendars, sink));
    for (const std::string& note : report.notes) { context.streams.err << "orlocal: " << printable(note) << '\n'; }
    return report.notes.empty() ? ExitStatus::kDone : ExitStatus::kFailed;
  });
}

}  // namespace

void registerExportCommand(CommandLine& line) {
  auto words = std::make_shared<ExportWords>();
  CLI::App& command = line.add("export", "Write calendars and reminder lists as a calendar file.",
                               [words](CommandContext& context) { return runExport(*words, context); });
  command.footer("  orlocal export -o all.ics\n  orlocal export --calendar Work -o work.ics");
  command.add_option("--calendar", words->calendars, "Only this calendar or reminder list; may be repeated")
      ->type_name("TITLE")
      ->allow_extra_args(false);
  command.add_flag("--salvage", words->salvage,
                   "Write what can still be read of a damaged store, and say what cannot; status 1 when something "
                   "is lost");
  command.add_option("-o,--output", words->file, "The file to write; - is the standard output, as without it")
      ->type_name("FILE");
}

}  // namespace orlocal::host
