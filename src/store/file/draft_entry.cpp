#include "store/file/draft_entry.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/random.h>
#include <unistd.h>

namespace orlocal::store {
namespace {

constexpr std::string_view kBefore = ".orlocal-";
constexpr std::string_view kBehind = ".part";
constexpr std::size_t kDigits = 32;

std::string unguessableName() {
  std::array<std::uint64_t, 2> random{};
  if (::getrandom(random.data(), sizeof random, 0) != static_cast<ssize_t>(sizeof random)) { return {}; }
  return fmt::format("{}{:016x}{:016x}{}", kBefore, random[0], random[1], kBehind);
}

/// What is no file, and what lies on no disk, has nothing to bring there.
int synced(int descriptor) { return ::fsync(descriptor) == 0 || errno == EINVAL || errno == EROFS ? 0 : errno; }

}  // namespace

bool DraftEntry::isNameOfOne(std::string_view name) {
  if (!name.starts_with(kBefore) || !name.ends_with(kBehind)) { return false; }
  const std::string_view digits = name.substr(kBefore.size(), name.size() - kBefore.size() - kBehind.size());
  return digits.size() == kDigits && digits.find_first_not_of("0123456789abcdef") == digits.npos;
}

std::optional<DraftEntry> DraftEntry::in(const std::filesystem::path& folder) {
  const std::string name = unguessableName();
  if (name.empty()) { return std::nullopt; }
  const int opened = ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (opened < 0) { return std::nullopt; }
  const int made = ::openat(opened, name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
  if (made >= 0) { return DraftEntry(opened, made, name); }
  const int error = errno;
  ::close(opened);
  errno = error;
  return std::nullopt;
}

DraftEntry::~DraftEntry() {
  if (m_descriptor >= 0) { ::close(m_descriptor); }
  if (!m_name.empty()) { ::unlinkat(m_folder, m_name.c_str(), 0); }
  if (m_folder >= 0) { ::close(m_folder); }
}

int DraftEntry::letGo() { return ::close(std::exchange(m_descriptor, -1)) == 0 ? 0 : errno; }

int DraftEntry::finish() {
  if (m_descriptor < 0) { m_descriptor = ::openat(m_folder, m_name.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC); }
  if (m_descriptor < 0) { return errno; }
  const int error = synced(m_descriptor);
  const int closed = letGo();
  m_onDisk = error == 0 && closed == 0;
  return error != 0 ? error : closed;
}

int DraftEntry::publish(const std::string& name, Existing existing) {
  if (!m_onDisk) {
    if (const int error = finish(); error != 0) { return error; }
  }
  const unsigned how = existing == Existing::kIsReplaced ? 0 : RENAME_NOREPLACE;
  if (::renameat2(m_folder, m_name.c_str(), m_folder, name.c_str(), how) != 0) {
    // Not every file system can do this in one go; a second name is never given twice either.
    if (how == 0 || (errno != EINVAL && errno != ENOSYS)) { return errno; }
    if (::linkat(m_folder, m_name.c_str(), m_folder, name.c_str(), 0) != 0) { return errno; }
    ::unlinkat(m_folder, m_name.c_str(), 0);
  }
  const int error = synced(m_folder);
  // Where something was replaced, there is no way back; elsewhere nothing is to stand that was called a failure.
  if (error != 0 && existing == Existing::kStays && ::renameat(m_folder, name.c_str(), m_folder, m_name.c_str()) == 0) {
    return error;
  }
  m_name.clear();
  return error;
}

}  // namespace orlocal::store
