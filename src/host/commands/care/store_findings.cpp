#include "host/commands/care/store_findings.h"

#include <cerrno>
#include <system_error>

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/system_reason.h"
#include "base/translation.h"
#include "base/try.h"
#include "host/commands/care/file_users.h"
#include "store/examination.h"
#include "store/left_drafts.h"

namespace orlocal::host {
namespace {

namespace fs = std::filesystem;

constexpr const char* kStore = translatable("store");
constexpr std::size_t kMostTold = 5;
constexpr std::uintmax_t kMuchLog = std::uintmax_t{64} << 20;
/// Of the file's own size.
constexpr double kMuchUnused = 0.5;
/// So long no program leaves what it makes unwritten.
constexpr std::chrono::hours kUnwritten(1);

std::string sizeText(std::uintmax_t bytes) {
  constexpr double kStep = 1024;
  double size = static_cast<double>(bytes);
  for (const char* unit : {translatable("bytes"), "KiB", "MiB"}) {
    if (size < kStep) { return fmt::format("{:.{}f} {}", size, size < 10 && bytes >= 1024 ? 1 : 0, translated(unit)); }
    size /= kStep;
  }
  return fmt::format("{:.1f} GiB", size);
}

std::string ownerOf(const struct stat& file) {
  const passwd* owner = ::getpwuid(file.st_uid);
  return owner != nullptr ? owner->pw_name : tr("user {}", file.st_uid);
}

std::size_t sizeOf(std::int64_t count) { return static_cast<std::size_t>(count); }

Finding modeFinding(const fs::path& file, const struct stat& found) {
  const unsigned mode = found.st_mode & 07777U;
  const std::string seen = tr("It belongs to {} and has the mode {:04o}", ownerOf(found), mode);
  if ((mode & S_IWOTH) != 0) {
    Finding finding =
        problem(kStore, tr("{}: everybody may change it.", seen), fmt::format("chmod o-rw {}", file.string()));
    if (found.st_uid == ::geteuid()) {
      finding.mend = [file]() -> Status {
        struct stat now {};
        const bool done = ::stat(file.c_str(), &now) == 0 &&
                          ::chmod(file.c_str(), now.st_mode & ~mode_t{S_IROTH | S_IWOTH} & 07777U) == 0;
        return done ? Status() : failure(ErrorCode::kIo, systemReason(errno));
      };
    }
    return finding;
  }
  if (::access(file.c_str(), W_OK) != 0) {
    return problem(kStore, tr("{}: you may not write it.", seen),
                   tr("Run this as its owner, or give it to who is to use it (chown)."));
  }
  if ((mode & S_IROTH) != 0) {
    return note(kStore, tr("{}: everybody on this machine may read it.", seen),
                fmt::format("chmod o-r {}", file.string()));
  }
  return fine(kStore, seen + ".");
}

void addExamination(const store::StoreOptions& store, Findings& findings) {
  const auto found = store::examine(store.file, store.busyTimeout);
  if (!found) {
    findings.push_back(
        problem(kStore, found.error().message,
                tr("orlocal restore FILE puts a backup in its place; what is there is kept beside it.")));
    return;
  }
  findings.push_back(
      fine(kStore, tr("{}, format {}: {}, {}, {}.", sizeText(found->bytes + found->logBytes), found->version,
                      trn("{} calendar", "{} calendars", sizeOf(found->calendars), found->calendars),
                      trn("{} event", "{} events", sizeOf(found->events), found->events),
                      trn("{} reminder", "{} reminders", sizeOf(found->reminders), found->reminders))));
  const auto tell = [&](const std::vector<std::string>& lines, const std::string& remedy) {
    for (std::size_t i = 0; i < lines.size() && i < kMostTold; ++i) {
      findings.push_back(problem(kStore, lines[i], i == 0 ? remedy : ""));
    }
    if (lines.size() > kMostTold) {
      findings.push_back(problem(kStore, tr("{} more of this kind.", lines.size() - kMostTold), ""));
    }
  };
  tell(found->damage,
       tr("orlocal export --salvage writes out what can be read; orlocal restore FILE brings a backup back."));
  tell(found->unread,
       tr("orlocal export --salvage writes out what can be read; orlocal restore FILE brings a backup back."));
  if (found->damage.empty() && found->unread.empty()) {
    findings.push_back(fine(kStore, tr("All of it can be read.")));
  }
  if (found->logBytes > kMuchLog) {
    findings.push_back(note(kStore,
                            tr("{} have not been brought into the file: somebody has been reading all the "
                               "while.",
                               sizeText(found->logBytes)),
                            tr("End the programs that have it open for long; then any command brings it in.")));
  }
  if (static_cast<double>(found->unusedBytes) > kMuchUnused * static_cast<double>(found->bytes)) {
    findings.push_back(
        note(kStore, tr("{} of the file are unused.", sizeText(found->unusedBytes)),
             tr("orlocal backup FILE writes a copy without them; orlocal restore FILE puts it in place.")));
  }
}

void addUsers(const fs::path& file, Findings& findings) {
  std::vector<std::string> names;
  for (const FileUser& user : usersOf(file)) {
    names.push_back(tr("{} ({}, process {})", user.name, user.user, user.process));
  }
  findings.push_back(fine(kStore, names.empty() ? tr("Nobody else that you may see has it open.")
                                                : tr("Open in {}.", fmt::join(names, ", "))));
}

/// What programs were making beside the store when they were killed.
void addDrafts(const fs::path& store, Findings& findings) {
  auto left = store::draftsLeftIn(store.parent_path(), kUnwritten);
  std::erase_if(left, [](const store::LeftDraft& draft) { return !usersOf(draft.file).empty(); });
  if (left.empty()) { return; }
  std::uintmax_t bytes = 0;
  for (const store::LeftDraft& draft : left) { bytes += draft.bytes; }
  Finding finding =
      note(kStore,
           trn("A program that was killed left a file half made beside it ({1}): {2}.",
               "Programs that were killed left {0} files half made beside it ({1}), the first of them {2}.",
               left.size(), left.size(), sizeText(bytes), left.front().file.filename().string()),
           tr("orlocal doctor --fix removes what nobody has written for an hour."));
  finding.mend = [left]() -> Status {
    for (const store::LeftDraft& draft : left) { ORLOCAL_CHECK(store::removeLeft(draft)); }
    return {};
  };
  findings.push_back(std::move(finding));
}

}  // namespace

Findings storeFindings(const store::StoreOptions& store) {
  struct stat found {};
  if (::stat(store.file.c_str(), &found) != 0) {
    const int reason = errno;
    if (reason == ENOENT) {
      return {note(kStore, tr("There is no calendar store at {}.", store.file.string()),
                   tr("orlocal import or orlocal new makes one."))};
    }
    return {problem(kStore, tr("{} cannot be looked at: {}.", store.file.string(), systemReason(reason)),
                    tr("Look at the mode of the folders that lead there."))};
  }
  if (!S_ISREG(found.st_mode)) {
    return {problem(kStore, tr("{} is no file.", store.file.string()),
                    tr("Name a file by --store, ORLOCAL_STORE or `file` in the settings below [store]."))};
  }
  Findings findings{fine(kStore, store.file.string()), modeFinding(store.file, found)};
  addExamination(store, findings);
  addUsers(store.file, findings);
  addDrafts(store.file, findings);
  return findings;
}

}  // namespace orlocal::host
