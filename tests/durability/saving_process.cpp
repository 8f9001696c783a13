#include "durability/saving_process.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

namespace orlocal::test {

TemporaryStore::TemporaryStore() {
  std::string pattern = (std::filesystem::temp_directory_path() / "orlocal-durability-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) { throw std::runtime_error("no temporary folder"); }
  m_folder = pattern;
}

TemporaryStore::~TemporaryStore() {
  std::error_code ignored;
  std::filesystem::permissions(m_folder, std::filesystem::perms::owner_all, ignored);
  std::filesystem::remove_all(m_folder, ignored);
}

std::unique_ptr<store::CalendarStore> openStore(const std::filesystem::path& file) {
  store::StoreOptions options;
  options.file = file;
  options.viewer = store::Zone::ofUser();
  auto opened = store::CalendarStore::open(std::move(options));
  if (!opened) { throw std::runtime_error(opened.error().message); }
  return std::move(*opened);
}

store::Item newEvent(store::CalendarStore& store, const std::string& title) {
  const auto calendar = store.defaultCalendar(store::CalendarKind::kEvents);
  if (!calendar || !*calendar) { throw std::runtime_error("no default calendar"); }
  store::Item event;
  event.kind = store::ItemKind::kEvent;
  event.calendar = (*calendar)->id;
  event.title = title;
  event.start = store::CalendarTime{store::CalendarTime::Kind::kUtc, store::LocalTime(2026, 11, 3, 9, 0, 0), ""};
  event.end = store::CalendarTime{store::CalendarTime::Kind::kUtc, store::LocalTime(2026, 11, 3, 10, 0, 0), ""};
  return event;
}

SavingProcess::SavingProcess(const std::function<void(const Tell&)>& work) {
  int ends[2];
  if (pipe(ends) != 0) { throw std::runtime_error("no pipe"); }
  m_child = fork();
  if (m_child < 0) { throw std::runtime_error("no process"); }
  if (m_child == 0) {
    close(ends[0]);
    int status = 0;
    try {
      work([&](const std::string& line) {
        const std::string whole = line + "\n";
        if (write(ends[1], whole.data(), whole.size()) != static_cast<ssize_t>(whole.size())) { _exit(3); }
      });
    } catch (const std::exception& problem) {
      std::fprintf(stderr, "saving process: %s\n", problem.what());
      status = 2;
    }
    _exit(status);
  }
  close(ends[1]);
  m_end = ends[0];
}

SavingProcess::~SavingProcess() {
  if (m_child > 0) {
    kill();
    finish();
  }
}

void SavingProcess::kill() {
  if (m_child > 0) { ::kill(m_child, SIGKILL); }
}

std::vector<std::string> SavingProcess::finish() {
  std::string all;
  char buffer[4096];
  for (ssize_t n = 0; (n = read(m_end, buffer, sizeof buffer)) > 0;) {
    all.append(buffer, static_cast<std::size_t>(n));
  }
  close(m_end);
  int status = 0;
  waitpid(m_child, &status, 0);
  m_child = -1;
  m_succeeded = WIFEXITED(status) && WEXITSTATUS(status) == 0;
  std::vector<std::string> lines;
  for (std::size_t begin = 0, end = 0; (end = all.find('\n', begin)) != std::string::npos; begin = end + 1) {
    lines.push_back(all.substr(begin, end - begin));
  }
  return lines;
}

std::string integrityOf(const std::filesystem::path& file) {
  sqlite3* database = nullptr;
  std::string verdict = "the file cannot be opened";
  if (sqlite3_open_v2(file.c_str(), &database, SQLITE_OPEN_READWRITE, nullptr) == SQLITE_OK) {
    sqlite3_stmt* check = nullptr;
    if (sqlite3_prepare_v2(database, "PRAGMA integrity_check", -1, &check, nullptr) == SQLITE_OK &&
        sqlite3_step(check) == SQLITE_ROW) {
      verdict = reinterpret_cast<const char*>(sqlite3_column_text(check, 0));
    }
    sqlite3_finalize(check);
  }
  sqlite3_close(database);
  return verdict;
}

}  // namespace orlocal::test
