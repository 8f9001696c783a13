#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <unistd.h>

#include "host/commands/all_commands.h"
#include "host/commands/command.h"
#include "host/commands/store_session.h"
#include "store/export.h"

namespace orlocal::host {
namespace {

struct ExportWords {
  std::vector<std::string> calendars;
  std::string file;
};

void write(store::CalendarStore& store, const std::vector<store::Calendar>& calendars, std::ostream& out,
           const std::string& name) {
  const auto status = store::exportCalendars(store, calendars, [&](std::string_view text) -> store::Status {
    out.write(text.data(), static_cast<std::streamsize>(text.size()));
    if (out) return {};
    return store::failure(store::ErrorCode::kIo, fmt::format("{} cannot be written: {}", name, std::strerror(errno)));
  });
  if (!status) throw CommandFailure(status.error().message);
  out.flush();
  if (!out) throw CommandFailure(fmt::format("{} cannot be written: {}", name, std::strerror(errno)));
}

/// The file appears when all of it is written; until then one that was there before stays as it is.
class NewFile {
 public:
  explicit NewFile(std::filesystem::path file)
      : m_file(std::move(file)), m_draft(m_file.string() + fmt::format(".{}.part", ::getpid())) {
    m_out.open(m_draft, std::ios::binary | std::ios::trunc);
    if (!m_out) throw CommandFailure(fmt::format("{} cannot be written: {}", m_file.string(), std::strerror(errno)));
  }
  ~NewFile() {
    std::error_code ignored;
    if (!m_kept) std::filesystem::remove(m_draft, ignored);
  }
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  std::ostream& out() { return m_out; }

  void keep() {
    m_out.close();
    if (!m_out) throw CommandFailure(fmt::format("{} cannot be written: {}", m_file.string(), std::strerror(errno)));
    std::error_code error;
    std::filesystem::rename(m_draft, m_file, error);
    if (error) throw CommandFailure(fmt::format("{} cannot be written: {}", m_file.string(), error.message()));
    m_kept = true;
  }

 private:
  std::filesystem::path m_file, m_draft;
  std::ofstream m_out;
  bool m_kept = false;
};

ExitStatus runExport(const ExportWords& words, CommandContext& context) {
  const auto store = openUserStore();
  const auto calendars = calendarsTitled(allCalendars(*store), words.calendars);
  if (words.file.empty()) {
    write(*store, calendars, context.streams.out, "the standard output");
    return ExitStatus::kDone;
  }
  NewFile file(words.file);
  write(*store, calendars, file.out(), words.file);
  file.keep();
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
  command.add_option("-o,--output", words->file, "The file to write (default: the standard output)")->type_name("FILE");
}

}  // namespace orlocal::host
