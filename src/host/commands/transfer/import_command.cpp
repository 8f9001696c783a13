#include <filesystem>
#include <istream>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include <CLI/CLI.hpp>

#include "base/try.h"
#include "base/whole_input.h"
#include "host/commands/command_line/command.h"
#include "host/commands/command_line/interruption.h"
#include "host/commands/command_line/progress_line.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/command_line/terminal_text.h"
#include "host/commands/transfer/import_report.h"
#include "host/commands/transfer/transfer_commands.h"
#include "store/contacts.h"
#include "store/import.h"

namespace orlocal::host {
namespace {

/// Reading a file of this size takes so long that somebody who waits should hear of it.
constexpr std::uintmax_t kLongFile = 8U << 20U;

constexpr const char* kStandardInput = "standard input";

struct ImportWords {
  std::vector<std::string> files;
  std::string calendar, list;
  bool readOnly = false;
  bool subscription = false;
};

store::ImportOptions optionsOf(const ImportWords& words) {
  store::ImportOptions options;
  if (!words.calendar.empty()) { options.calendarTitle = words.calendar; }
  if (!words.list.empty()) { options.listTitle = words.list; }
  options.readOnly = words.readOnly;
  options.subscription = words.subscription;
  options.stop = &Interruption::flag();
  options.workers = store::workersThatPay();
  return options;
}

Result<store::ImportReport> importOne(store::CalendarStore& store, const std::string& file,
                                      store::ImportOptions options, Streams& streams) {
  ProgressLine progress(streams.err, streams.errIsTerminal, "Importing " + printable(file));
  options.progress = [&progress](std::size_t done, std::size_t all) { progress.update(done, all); };
  if (file == "-") {
    ORLOCAL_TRY(std::string text, readWhole(streams.in, kStandardInput));
    return store::importCalendarText(store, std::move(text), kStandardInput, options);
  }
  std::error_code ignored;
  if (const auto size = std::filesystem::file_size(file, ignored); !ignored && size >= kLongFile) {
    progress.announce("reading");
  }
  return store::importCalendarFile(store, file, options);
}

Result<ExitStatus> runImport(const ImportWords& words, CommandContext& context) {
  ORLOCAL_TRY(const auto store, openOrMakeUserStore());
  const Interruption interruption;
  ImportReports reports(context);
  for (const std::string& file : words.files) {
    const auto outcome = importOne(*store, file, optionsOf(words), context.streams);
    reports.add(file, outcome);
    if (!outcome && outcome.error().code == ErrorCode::kInterrupted) { break; }
  }
  return reports.finish();
}

Result<ExitStatus> runImportContacts(const std::vector<std::string>& files, CommandContext& context) {
  ORLOCAL_TRY(const auto store, openOrMakeUserStore());
  ImportReports reports(context);
  for (const std::string& file : files) { reports.add(file, store::importContactsFile(*store, file)); }
  return reports.finish();
}

}  // namespace

void registerImportCommands(CommandLine& line) {
  auto words = std::make_shared<ImportWords>();
  CLI::App& import =
      line.add("import", "Read calendar files into the store; reading one again updates what it brought.",
               [words](CommandContext& context) { return runImport(*words, context); });
  import.footer(
      "Each file comes in whole or not at all; what cannot be read in it is left out, listed with its line, and ends\n"
      "the command with status 1.\n"
      "  orlocal import work.ics --calendar Work");
  import.add_option("files", words->files, "Calendar files (.ics); - is the standard input")
      ->type_name("FILE.ics")
      ->required();
  import.add_option("--calendar", words->calendar, "Put events into the calendar of this title (made when missing)")
      ->type_name("TITLE");
  import.add_option("--list", words->list, "Put reminders into the list of this title (made when missing)")
      ->type_name("TITLE");
  import.add_flag("--read-only", words->readOnly, "Calendars that are made allow no changes");
  import.add_flag("--subscription", words->subscription, "The same, and they are marked as subscribed");

  auto contacts = std::make_shared<std::vector<std::string>>();
  CLI::App& importContacts =
      line.add("import-contacts", "Read address cards, for the addresses of attendees.",
               [contacts](CommandContext& context) { return runImportContacts(*contacts, context); });
  importContacts.footer("  orlocal import-contacts colleagues.vcf");
  importContacts.add_option("files", *contacts, "Address cards (.vcf)")->type_name("FILE.vcf")->required();
}

}  // namespace orlocal::host
