#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <system_error>
#include <vector>

#include <fcntl.h>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "accounts/transport/secret.h"
#include "base/system_reason.h"
#include "base/text.h"
#include "base/translation.h"
#include "base/try.h"
#include "base/whole_input.h"

namespace orlocal::accounts {
namespace {

struct KeptLine {
  std::string account;
  std::string password;
};

Failed secretsFailure(const std::filesystem::path& file, const char* what, int error) {
  const ErrorCode code = error == EACCES || error == EPERM || error == EROFS ? ErrorCode::kNotPermitted
                         : error == ENOSPC || error == EDQUOT                ? ErrorCode::kFull
                                                                             : ErrorCode::kIo;
  return failure(code, tr("The file of passwords \"{}\" cannot be {}: {}.", file.string(), what, systemReason(error)));
}

Result<std::vector<KeptLine>> readKept(const std::filesystem::path& file) {
  struct stat found {};
  if (::stat(file.c_str(), &found) != 0) {
    if (errno == ENOENT) { return std::vector<KeptLine>(); }
    return secretsFailure(file, "read", errno);
  }
  if (found.st_uid != ::geteuid() || (found.st_mode & (S_IRWXG | S_IRWXO)) != 0) {
    return failure(ErrorCode::kNotPermitted,
                   tr("The file of passwords \"{}\" must be this user's alone; it has the mode {:04o}. Change the "
                      "passwords that it holds if others could read them, and make its mode 0600.",
                      file.string(), found.st_mode & 07777U));
  }
  ORLOCAL_TRY(const std::string text, readWholeFile(file));
  std::vector<KeptLine> lines;
  std::size_t number = 0;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find('\n', at), text.size());
    const auto line = nlohmann::json::parse(text.substr(at, end - at), nullptr, false);
    ++number;
    at = end + 1;
    if (!line.is_object() || !line.contains("account") || !line.contains("password") || !line["account"].is_string() ||
        !line["password"].is_string()) {
      // What stands there may be half of a password.
      return failure(ErrorCode::kCorrupt,
                     tr("Line {} of the file of passwords \"{}\" cannot be read; remove it and add that account again.",
                        number, file.string()));
    }
    lines.push_back({line["account"], line["password"]});
  }
  return lines;
}

/// A folder that is locked against others who change its secrets.
class LockedFolder {
 public:
  explicit LockedFolder(const std::filesystem::path& folder)
      : m_descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    while (m_descriptor >= 0 && ::flock(m_descriptor, LOCK_EX) != 0 && errno == EINTR) {}
  }
  LockedFolder(const LockedFolder&) = delete;
  LockedFolder& operator=(const LockedFolder&) = delete;
  ~LockedFolder() {
    if (m_descriptor >= 0) { ::close(m_descriptor); }
  }
  bool isOpen() const { return m_descriptor >= 0; }
  void sync() const { static_cast<void>(::fsync(m_descriptor)); }

 private:
  int m_descriptor;
};

/// 0, or a value of errno. The file has the mode 0600 from its first moment.
int writeWhole(const std::string& name, int descriptor, const std::string& text) {
  std::size_t written = 0;
  int error = 0;
  while (error == 0 && written < text.size()) {
    const ssize_t count = ::write(descriptor, text.data() + written, text.size() - written);
    if (count >= 0) {
      written += static_cast<std::size_t>(count);
    } else if (errno != EINTR) {
      error = errno;
    }
  }
  if (error == 0 && ::fsync(descriptor) != 0) { error = errno; }
  if (::close(descriptor) != 0 && error == 0) { error = errno; }
  if (error != 0) { ::unlink(name.c_str()); }
  return error;
}

/// Changes the line of an account: a new password, or none.
Status changeKept(const std::filesystem::path& named, std::string_view account, const std::string* password) {
  // A link stays one.
  std::error_code ignored;
  std::filesystem::path file = std::filesystem::weakly_canonical(named, ignored);
  if (ignored) { file = named; }
  const std::filesystem::path folder = file.parent_path();
  if (!std::filesystem::exists(folder, ignored)) {
    if (password == nullptr) { return {}; }
    std::filesystem::create_directories(folder.parent_path(), ignored);
    if (::mkdir(folder.c_str(), S_IRWXU) != 0 && errno != EEXIST) { return secretsFailure(file, "written", errno); }
  }
  const LockedFolder lock(folder);
  if (!lock.isOpen()) { return secretsFailure(file, "written", errno); }
  ORLOCAL_TRY(auto lines, readKept(file));
  const bool had = std::erase_if(lines, [&](const KeptLine& line) { return line.account == account; }) > 0;
  if (password == nullptr && !had) { return {}; }
  if (password != nullptr) { lines.push_back({std::string(account), *password}); }

  std::string text;
  for (const KeptLine& line : lines) {
    text += nlohmann::json({{"account", line.account}, {"password", line.password}}).dump() + "\n";
  }
  std::string draft = file.string() + "-XXXXXX";
  const int descriptor = ::mkostemp(draft.data(), O_CLOEXEC);
  if (descriptor < 0) { return secretsFailure(file, "written", errno); }
  if (const int error = writeWhole(draft, descriptor, text); error != 0) {
    return secretsFailure(file, "written", error);
  }
  if (::rename(draft.c_str(), file.c_str()) != 0) {
    const int error = errno;
    ::unlink(draft.c_str());
    return secretsFailure(file, "written", error);
  }
  lock.sync();
  return {};
}

std::filesystem::path settingOf(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::filesystem::path() : std::filesystem::path(value);
}

}  // namespace

Result<std::filesystem::path> SecretsFile::userFile() {
  const std::filesystem::path below = std::filesystem::path("orlocal") / "secrets";
  // The desktop's rules for folders have relative ones ignored.
  if (const auto config = settingOf("XDG_CONFIG_HOME"); config.is_absolute()) { return config / below; }
  if (const auto home = settingOf("HOME"); home.is_absolute()) { return home / ".config" / below; }
  return failure(ErrorCode::kInvalid, tr("nothing says where passwords are kept: set HOME to a folder"));
}

Result<std::optional<std::string>> SecretsFile::password(std::string_view account) const {
  ORLOCAL_TRY(const auto lines, readKept(m_file));
  for (const KeptLine& line : lines) {
    if (line.account == account) { return line.password; }
  }
  return std::nullopt;
}

Status SecretsFile::keep(std::string_view account, std::string_view password) {
  if (!isUtf8(password) || !isUtf8(account)) {
    return failure(ErrorCode::kInvalid,
                   tr("a password that is kept must be UTF-8; a command or a file may have any other"));
  }
  const std::string kept(password);
  return changeKept(m_file, account, &kept);
}

Status SecretsFile::forget(std::string_view account) { return changeKept(m_file, account, nullptr); }

}  // namespace orlocal::accounts
