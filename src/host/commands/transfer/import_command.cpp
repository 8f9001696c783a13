#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"
#include "host/commands/command_line/command.h"
#include "host/commands/command_line/interruption.h"
#include "host/commands/command_line/progress_line.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/command_line/terminal_text.h"
#include "host/commands/transfer/import_report.h"
#include "host/commands/transfer/input_files.h"
#include "host/commands/transfer/transfer_commands.h"
#include "store/contacts.h"
#include "store/import.h"
#include "store/prune.h"

namespace orlocal::host {
namespace {

struct ImportWords {
  std::vector<std::string> files;
  std::string calendar, list;
  bool readOnly = false;
  bool subscription = false;
  bool keep = false;
  bool prune = false;
  bool dryRun = false;

  bool removesOthers() const { return prune || (subscription && !keep); }
  /// What is said of calendars has no meaning for address cards.
  bool calendarsOnly() const { return !calendar.empty() || !list.empty() || readOnly || subscription || prune; }
};

/// What a command takes.
enum class Takes { kBoth, kCalendars, kCards };

std::string wordsFor(Takes takes) {
  switch (takes) {
    case Takes::kCalendars:
      return tr("no calendar file");
    case Takes::kCards:
      return tr("no file of address cards");
    case Takes::kBoth:
      break;
  }
  return tr("neither a calendar file nor address cards");
}

std::string remedyFor(Takes takes, FileKind kind) {
  if (takes == Takes::kCalendars && kind == FileKind::kCards) {
    return tr("; import it without words about calendars");
  }
  if (takes == Takes::kCards && kind == FileKind::kCalendar) { return tr("; `orlocal import` takes it"); }
  return "";
}

bool isTaken(Takes takes, FileKind kind) {
  if (kind == FileKind::kCalendar) { return takes != Takes::kCards; }
  return kind == FileKind::kCards && takes != Takes::kCalendars;
}

class ImportRun {
 public:
  ImportRun(const ImportWords& words, Takes takes, CommandContext& context)
      : m_words(words), m_takes(takes), m_context(context), m_reports(context, words.dryRun) {}

  Result<ExitStatus> run() {
    const Interruption interruption;
    InputOptions options;
    options.readingLongFile = [&](const std::string& file) {
      ProgressLine(m_context.streams.err, m_context.streams.errIsTerminal, tr("Importing {}", printable(file)))
          .announce(tr("reading"));
    };
    for (const std::string& word : m_words.files) {
      m_taken = 0;
      m_refused = false;
      const bool goesOn = visitInput(word, m_context.streams.in, options,
                                     [&](const std::string& name, auto file) { return take(name, std::move(file)); });
      if (!goesOn) { return m_reports.finish(); }
      if (m_taken == 0 && !m_refused) { refuse(word, tr("{} has nothing in it that could be imported", word)); }
    }
    if (m_words.removesOthers()) { ORLOCAL_CHECK(removeOthers()); }
    return m_reports.finish();
  }

 private:
  /// Opened, or made, when there is something to bring into it.
  Result<store::CalendarStore*> openStore() {
    if (m_store == nullptr) { ORLOCAL_TRY(m_store, openStoreToChange(m_words.dryRun, NoStore::kIsMade)); }
    return m_store.get();
  }

  /// False when somebody stopped it.
  bool take(const std::string& name, Result<BroughtFile> file) {
    if (!file) {
      refuse(name, file.error().message);
      return true;
    }
    if (!isTaken(m_takes, file->what.kind)) {
      if (file->found && !saysItIsACalendar(name)) {
        m_reports.passOver(name, translated(file->what.looksLike));
        return true;
      }
      refuse(name, tr("{} is {}: it looks like {}{}", name, wordsFor(m_takes), translated(file->what.looksLike),
                      remedyFor(m_takes, file->what.kind)));
      return true;
    }
    ++m_taken;
    auto outcome = import(name, *std::move(file));
    const bool stopped = !outcome && outcome.error().code == ErrorCode::kInterrupted;
    m_wholly = m_wholly && outcome && !outcome->endsEarly;
    m_reports.add(name, outcome);
    if (outcome && m_words.removesOthers()) {
      outcome->warnings.clear();
      m_brought.push_back(*std::move(outcome));
    }
    return !stopped;
  }

  void refuse(const std::string& name, const std::string& why) {
    m_refused = true;
    m_wholly = false;
    m_reports.add(name, failure(ErrorCode::kInvalid, why));
  }

  Result<store::ImportReport> import(const std::string& name, BroughtFile file) {
    ORLOCAL_TRY(store::CalendarStore* const store, openStore());
    if (file.what.kind == FileKind::kCards) { return store::importContactsText(*store, std::move(file.bytes), name); }
    ProgressLine progress(m_context.streams.err, m_context.streams.errIsTerminal, tr("Importing {}", printable(name)));
    store::ImportOptions options;
    options.progress = [&progress](std::size_t done, std::size_t all) { progress.update(done, all); };
    if (!m_words.calendar.empty()) { options.calendarTitle = m_words.calendar; }
    if (!m_words.list.empty()) { options.listTitle = m_words.list; }
    options.readOnly = m_words.readOnly;
    options.subscription = m_words.subscription;
    options.listItems = m_words.dryRun || m_words.removesOthers();
    options.stop = &Interruption::flag();
    options.workers = store::workersThatPay();
    return store::importCalendarText(*store, std::move(file.bytes), name, options);
  }

  /// What could not be read whole may hold what is missed.
  Status removeOthers() {
    if (!m_wholly) {
      m_reports.nothingRemoved(tr("not everything could be read, so nothing was removed"));
      return {};
    }
    if (m_brought.empty()) { return {}; }
    ORLOCAL_TRY(store::CalendarStore* const store, openStore());
    store::PruneOptions options;
    options.subscriptions = m_words.subscription;
    if (m_words.prune && !m_words.calendar.empty()) { options.calendarTitles = {m_words.calendar}; }
    if (m_words.prune && !m_words.list.empty()) { options.listTitles = {m_words.list}; }
    ORLOCAL_TRY(const auto removed, store::removeOthers(*store, m_brought, options));
    m_reports.removed(removed);
    return {};
  }

  const ImportWords& m_words;
  const Takes m_takes;
  CommandContext& m_context;
  std::shared_ptr<store::CalendarStore> m_store;
  ImportReports m_reports;
  std::vector<store::ImportReport> m_brought;
  std::size_t m_taken = 0;  ///< files of the word at hand
  bool m_refused = false;
  bool m_wholly = true;
};

Result<ExitStatus> runImport(const ImportWords& words, CommandContext& context) {
  if (words.prune && words.calendar.empty() && words.list.empty()) {
    context.streams.err << tr(
        "orlocal: --prune needs --calendar TITLE or --list TITLE: what the files do not hold is "
        "removed from there\n");
    return ExitStatus::kUsage;
  }
  if (words.keep && !words.subscription) {
    context.streams.err << tr("orlocal: --keep belongs to --subscription; nothing else removes what files lack\n");
    return ExitStatus::kUsage;
  }
  return ImportRun(words, words.calendarsOnly() ? Takes::kCalendars : Takes::kBoth, context).run();
}

}  // namespace

void registerImportCommands(CommandLine& line) {
  auto words = std::make_shared<ImportWords>();
  CLI::App& import = line.add(
      "import", "Read calendar files and address cards into the store; reading one again updates what it brought.",
      [words](CommandContext& context) { return runImport(*words, context); });
  import.footer(
      tr("Folders are gone through, zip and gzip files are opened; what a file is shows by its content. Each file "
         "comes\nin whole or not at all; what cannot be read in it is left out, listed with its line, and ends the "
         "command with\nstatus 1. Invitations, answers and cancellations have their meaning.\n") +
      "  orlocal import work.ics --calendar Work\n  orlocal import backup.zip colleagues.vcf --dry-run");
  import.add_option("files", words->files, "Calendar files, address cards, folders, archives; - is the standard input")
      ->type_name("FILE")
      ->required();
  import.add_option("--calendar", words->calendar, "Put events into the calendar of this title (made when missing)")
      ->type_name("TITLE");
  import.add_option("--list", words->list, "Put reminders into the list of this title (made when missing)")
      ->type_name("TITLE");
  import.add_flag("--read-only", words->readOnly, "Calendars that are made allow no changes");
  import.add_flag("--subscription", words->subscription,
                  "The same, they are marked as subscribed, and become what the files hold");
  import.add_flag("--keep", words->keep, "With --subscription: what the files do not hold any more stays");
  import.add_flag("--prune", words->prune,
                  "Remove from the calendar (and list) named what the files do not hold any more");
  import.add_flag("--dry-run", words->dryRun, "Say what would be done, and write nothing");

  auto contacts = std::make_shared<ImportWords>();
  CLI::App& importContacts =
      line.add("import-contacts", "Read address cards, for the addresses of attendees.",
               [contacts](CommandContext& context) { return ImportRun(*contacts, Takes::kCards, context).run(); });
  importContacts.footer("  orlocal import-contacts colleagues.vcf");
  importContacts.add_option("files", contacts->files, "Address cards, folders, archives; - is the standard input")
      ->type_name("FILE")
      ->required();
  importContacts.add_flag("--dry-run", contacts->dryRun, "Say what would be done, and write nothing");
}

}  // namespace orlocal::host
