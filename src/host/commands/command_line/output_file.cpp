#include "host/commands/command_line/output_file.h"

#include <cerrno>
#include <filesystem>
#include <ostream>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <fmt/format.h>
#include <linux/magic.h>
#include <sys/vfs.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "base/system_reason.h"
#include "base/translation.h"
#include "base/try.h"

namespace orlocal::host {
namespace {

constexpr mode_t kPermissions = 07777;
constexpr int kStandsForNone = 0;  // where errno would say what went wrong
constexpr int kMostLinks = 40;     // as many as the kernel follows

/// A descriptor that is closed at the end of its scope.
class Descriptor {
 public:
  explicit Descriptor(int number) : m_number(number) {}
  ~Descriptor() {
    if (m_number >= 0) { ::close(m_number); }
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int get() const { return m_number; }

 private:
  int m_number;
};

/// Links of the process file system stand for open files, whatever their text says.
bool namesAnOpenFile(const std::filesystem::path& link) {
  struct statfs where {};
  const std::filesystem::path folder = link.has_parent_path() ? link.parent_path() : ".";
  return ::statfs(folder.c_str(), &where) == 0 && where.f_type == PROC_SUPER_MAGIC;
}

/// Where a name leads in the end, also when nothing is there yet. None when it leads to an open file of a process, or
/// nowhere.
std::optional<std::string> followed(std::filesystem::path path) {
  for (int links = 0; links < kMostLinks; ++links) {
    std::error_code error;
    if (!std::filesystem::is_symlink(std::filesystem::symlink_status(path, error))) { return path.string(); }
    if (namesAnOpenFile(path)) { return std::nullopt; }
    const std::filesystem::path next = std::filesystem::read_symlink(path, error);
    if (error) { return std::nullopt; }
    path = path.parent_path() / next;  // an absolute one replaces it all
  }
  return std::nullopt;
}

ErrorCode codeOf(int error) {
  if (error == ENOSPC || error == EDQUOT || error == EFBIG) { return ErrorCode::kFull; }
  if (error == EACCES || error == EPERM || error == EROFS) { return ErrorCode::kNotPermitted; }
  return ErrorCode::kIo;
}

}  // namespace

Result<std::unique_ptr<OutputFile>> OutputFile::open(std::string path) {
  std::unique_ptr<OutputFile> file(new OutputFile(std::move(path)));
  ORLOCAL_CHECK(file->start());
  return file;
}

OutputFile::~OutputFile() {
  // Before signals end the process again.
  m_draft.reset();
  if (m_descriptor >= 0) { ::close(m_descriptor); }
}

Status OutputFile::start() {
  struct stat found {};
  const bool exists = ::stat(m_path.c_str(), &found) == 0;
  if (!exists && errno != ENOENT) { return failed(errno); }
  if (exists && !S_ISREG(found.st_mode)) { return startInPlace(0); }
  const auto target = followed(m_path);
  if (!target) { return exists ? startInPlace(O_APPEND) : Status(failed(ELOOP)); }
  if (startDraft(*target)) { return {}; }
  const int error = errno;
  // What is full or broken now would leave nothing of the old file.
  const bool mayNot = error == kStandsForNone || error == EACCES || error == EPERM || error == EROFS;
  return exists && mayNot ? startInPlace(O_TRUNC) : Status(failed(error));
}

bool OutputFile::startDraft(const std::string& target) {
  const std::filesystem::path path(target);
  m_name = path.filename().string();
  m_interruption.emplace();
  if (auto draft = store::DraftEntry::in(path.parent_path())) { m_draft.emplace(std::move(*draft)); }
  if (m_draft && standsForWhatIsThere()) { return true; }
  const int error = errno;
  m_draft.reset();
  m_interruption.reset();
  errno = error;
  return false;
}

bool OutputFile::standsForWhatIsThere() const {
  const Descriptor old(::openat(m_draft->folder(), m_name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
  struct stat was {};
  if (old.get() < 0) { return errno == ENOENT; }
  if (::fstat(old.get(), &was) != 0) { return false; }
  if (::faccessat(m_draft->folder(), m_name.c_str(), W_OK, AT_EACCESS) != 0) { return false; }
  errno = kStandsForNone;
  return S_ISREG(was.st_mode) && takesOver(was, old.get());
}

bool OutputFile::takesOver(const struct stat& old, int oldFile) const {
  errno = kStandsForNone;
  if (old.st_nlink > 1) { return false; }
  // A descriptor that only names the file gives its attributes by way of its link.
  const std::string byLink = fmt::format("/proc/self/fd/{}", oldFile);
  const bool hasList = ::getxattr(byLink.c_str(), "system.posix_acl_access", nullptr, 0) > 0;
  errno = kStandsForNone;
  if (hasList) { return false; }
  struct stat made {};
  if (::fstat(m_draft->descriptor(), &made) != 0) { return false; }
  const bool sameOwner = made.st_uid == old.st_uid && made.st_gid == old.st_gid;
  if (!sameOwner && ::fchown(m_draft->descriptor(), old.st_uid, old.st_gid) != 0) { return false; }
  return ::fchmod(m_draft->descriptor(), old.st_mode & kPermissions) == 0;
}

Status OutputFile::startInPlace(int flags) {
  m_descriptor = ::open(m_path.c_str(), O_WRONLY | O_NOCTTY | O_CLOEXEC | flags);
  return m_descriptor >= 0 ? Status() : failed(errno);
}

Status OutputFile::write(std::string_view bytes) {
  while (!bytes.empty()) {
    if (m_interruption && Interruption::flag()) {
      return failure(ErrorCode::kInterrupted, tr("{} was left as it is: stopped.", m_path));
    }
    const ssize_t count = ::write(descriptor(), bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) { continue; }
    if (count < 0) { return failed(errno); }
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return {};
}

Status OutputFile::finish() {
  if (!m_draft) {
    // What is no file has nothing to bring to a disk.
    if (::fsync(m_descriptor) != 0 && errno != EINVAL && errno != EROFS) { return failed(errno); }
    return ::close(std::exchange(m_descriptor, -1)) == 0 ? Status() : failed(errno);
  }
  if (const int error = m_draft->finish(); error != 0) { return failed(error); }
  if (Interruption::flag()) { return failure(ErrorCode::kInterrupted, tr("{} was left as it is: stopped.", m_path)); }
  if (const int error = m_draft->publish(m_name, store::DraftEntry::Existing::kIsReplaced); error != 0) {
    return failed(error);
  }
  m_interruption.reset();
  return {};
}

Failed OutputFile::failed(int error) const {
  const ErrorCode code = codeOf(error);
  const std::string remedy =
      code == ErrorCode::kFull ? tr("make room, or name another place") : tr("name another file");
  return failure(code, tr("{} cannot be written: {}; {}.", m_path, systemReason(error), remedy));
}

Status writeOutput(const std::string& file, std::string_view text, std::ostream& standardOutput) {
  if (file == "-") {
    standardOutput << text << std::flush;
    return standardOutput ? Status() : failure(ErrorCode::kIo, tr("The standard output cannot be written."));
  }
  ORLOCAL_TRY(const auto output, OutputFile::open(file));
  ORLOCAL_CHECK(output->write(text));
  return output->finish();
}

}  // namespace orlocal::host
