#include <filesystem>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <system_error>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include "base/translation.h"
#include "base/try.h"
#include "host/commands/choosing/common_options.h"
#include "host/commands/command_line/command.h"
#include "host/commands/command_line/output_file.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/command_line/terminal_text.h"
#include "host/commands/transfer/calendar_files.h"
#include "host/commands/transfer/salvage_export.h"
#include "host/commands/transfer/transfer_commands.h"
#include "host/commands/words/day_range.h"
#include "host/commands/words/day_words.h"
#include "host/commands/words/listed_words.h"
#include "store/contacts.h"
#include "store/export.h"
#include "store/time/clock.h"

namespace orlocal::host {
namespace {

constexpr const char* kStandardOutput = "-";

struct ExportWords {
  CalendarChoice calendars;
  std::string from, to;
  std::string file = kStandardOutput;
  bool salvage = false;
  bool contacts = false;
};

/// Has `write` write to where the words say; a file appears when all of it is there.
Result<ExitStatus> writeTo(const std::string& file, std::ostream& standardOutput,
                           const std::function<Result<ExitStatus>(const store::TextSink&)>& write) {
  if (file == kStandardOutput) {
    return write([&](std::string_view text) -> Status {
      standardOutput.write(text.data(), static_cast<std::streamsize>(text.size()));
      if (standardOutput) { return {}; }
      return failure(ErrorCode::kIo, tr("The standard output cannot be written."));
    });
  }
  ORLOCAL_TRY(const auto output, OutputFile::open(file));
  ORLOCAL_TRY(const ExitStatus status, write([&](std::string_view text) { return output->write(text); }));
  ORLOCAL_CHECK(output->finish());
  return status;
}

Result<std::string> folderAt(const std::string& path) {
  std::error_code error;
  std::filesystem::create_directories(path, error);
  if (error) {
    return failure(ErrorCode::kIo, tr("{} cannot be made: {}; name another folder.", path, error.message()));
  }
  return path.ends_with('/') ? path : path + "/";
}

/// What of a calendar no calendar file can say; empty when there is nothing.
std::string lostMarks(const store::Calendar& calendar) {
  std::vector<std::string> lost;
  if (calendar.subscribed) { lost.emplace_back(tr("that it is subscribed (import --subscription)")); }
  if (calendar.readOnly && !calendar.subscribed) { lost.emplace_back(tr("that it is read-only (import --read-only)")); }
  if (calendar.notes && !calendar.notes->empty()) { lost.emplace_back(tr("its notes")); }
  if (lost.empty()) { return {}; }
  return tr("of \"{}\" the file does not say {}", calendar.title, listed(lost));
}

class CalendarExport {
 public:
  CalendarExport(store::CalendarStore& store, const ExportWords& words, CommandContext& context)
      : m_store(store), m_words(words), m_out(context.streams.out), m_err(context.streams.err) {}

  Result<ExitStatus> run() {
    ORLOCAL_TRY(const auto calendars, calendarsChosen(m_store, m_words.calendars));
    const store::Zone viewer = store::Zone::ofUser();
    const store::LocalDay today(viewer.toLocal(store::now()));
    if (!m_words.from.empty() || !m_words.to.empty()) {
      const auto from = daysFromWords(m_words.from, today), to = daysFromWords(m_words.to, today);
      const auto first = from ? std::optional(from->first) : std::nullopt;
      const auto last = to ? std::optional(to->last) : std::nullopt;
      if (first && last && *last < *first) {
        m_err << tr("orlocal: the last day {} lies before the first day {}\n", isoDay(*last), isoDay(*first));
        return ExitStatus::kUsage;
      }
      ORLOCAL_TRY(m_options.items, itemsWithin(m_store, calendars, viewer, first, last));
    }
    ORLOCAL_CHECK(namesFolder(m_words.file) ? intoFolder(calendars) : intoOne(calendars));
    return m_status;
  }

 private:
  Status intoOne(const std::vector<store::Calendar>& calendars) {
    // What was named is written, and so is something rather than nothing.
    ORLOCAL_TRY(const bool any, hasAnything(calendars));
    m_options.emptyOnes = !m_words.calendars.only.empty() || !any;
    return write(m_words.file, calendars).map([](std::size_t) {});
  }

  Status intoFolder(const std::vector<store::Calendar>& calendars) {
    ORLOCAL_TRY(const std::string folder, folderAt(m_words.file));
    FileNames names;
    for (const store::Calendar& calendar : calendars) {
      ORLOCAL_TRY(const bool any, hasAnything({calendar}));
      if (!any) {
        tell(tr("\"{}\" has nothing to write and was left out", calendar.title));
        continue;
      }
      const std::string file = folder + names.take(calendar.title, ".ics");
      ORLOCAL_TRY(const std::size_t items, write(file, {calendar}));
      m_out << printable(trn("{}: {} item of \"{}\"", "{}: {} items of \"{}\"", items, file, items, calendar.title))
            << '\n';
    }
    return {};
  }

  Result<bool> hasAnything(const std::vector<store::Calendar>& calendars) {
    bool any = false;
    for (const store::Calendar& calendar : calendars) {
      ORLOCAL_CHECK(m_store.forEachItem(calendar.id, [&](const store::Item& main, const std::vector<store::Item>&) {
        any = any || !m_options.items || m_options.items->contains(main.id);
        return Status();
      }));
    }
    return any;
  }

  /// Gives the number of items.
  Result<std::size_t> write(const std::string& file, const std::vector<store::Calendar>& calendars) {
    store::ExportReport report;
    ORLOCAL_CHECK(writeTo(file, m_out, [&](const store::TextSink& sink) -> Result<ExitStatus> {
      ORLOCAL_TRY(report, store::exportCalendars(m_store, calendars, sink, m_options));
      return ExitStatus::kDone;
    }));
    for (const std::string& note : report.notes) { tell(note); }
    if (!report.notes.empty()) { m_status = ExitStatus::kFailed; }
    for (const store::Calendar& calendar : calendars) {
      if (const std::string lost = lostMarks(calendar); !lost.empty()) { tell(lost); }
    }
    return report.items;
  }

  void tell(const std::string& note) { m_err << "orlocal: " << printable(note) << '\n'; }

  store::CalendarStore& m_store;
  const ExportWords& m_words;
  std::ostream& m_out;
  std::ostream& m_err;
  store::ExportOptions m_options;
  ExitStatus m_status = ExitStatus::kDone;
};

Result<ExitStatus> runContactsExport(store::CalendarStore& store, const ExportWords& words, CommandContext& context) {
  std::string file = words.file;
  if (namesFolder(file)) {
    ORLOCAL_TRY(file, folderAt(file));
    file += "contacts.vcf";
  }
  std::size_t cards = 0;
  ORLOCAL_TRY(const ExitStatus status,
              writeTo(file, context.streams.out, [&](const store::TextSink& sink) -> Result<ExitStatus> {
                ORLOCAL_TRY(cards, store::exportContacts(store, sink));
                return ExitStatus::kDone;
              }));
  if (file != words.file) {
    context.streams.out << printable(trn("{}: {} card", "{}: {} cards", cards, file, cards)) << '\n';
  }
  if (cards == 0) { context.streams.err << tr("orlocal: There are no contacts; `orlocal import` takes vCards.\n"); }
  return status;
}

Result<ExitStatus> runExport(const ExportWords& words, CommandContext& context) {
  if (words.salvage) {
    return writeTo(words.file, context.streams.out, [&](const store::TextSink& sink) {
      return salvageInto(sink, words.calendars.only, context.streams.err);
    });
  }
  ORLOCAL_TRY(const auto store, openUserStore());
  if (words.contacts) { return runContactsExport(*store, words, context); }
  return CalendarExport(*store, words, context).run();
}

}  // namespace

void registerExportCommand(CommandLine& line) {
  auto words = std::make_shared<ExportWords>();
  CLI::App& command = line.add("export", "Write calendars and reminder lists as a calendar file.",
                               [words](CommandContext& context) { return runExport(*words, context); });
  command.footer("  orlocal export -o all.ics\n  orlocal export --calendar Work -o work.ics");
  addCalendarOptions(command, words->calendars);
  command
      .add_flag("--salvage", words->salvage,
                "Write what can still be read of a damaged store, and say what cannot; status 1 when something "
                "is lost")
      ->excludes("--without");
  command.add_option("--from", words->from, "Only what is on this day or later; series come whole")
      ->type_name("DAY")
      ->check(objectionToDays);
  command.add_option("--to", words->to, "Only what is on this day or before")->type_name("DAY")->check(objectionToDays);
  command.add_flag("--contacts", words->contacts, "Write the contacts as address cards (vCard), and no calendars")
      ->excludes("--calendar", "--without", "--from", "--to", "--salvage");
  command
      .add_option("-o,--output", words->file,
                  "The file to write; a folder (DIR/) gets one for each calendar; - is the standard output, as "
                  "without it")
      ->type_name("FILE");
}

}  // namespace orlocal::host
