#include "accounts/transport/secret.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include "accounts/transport/first_line.h"
#include "base/system_reason.h"
#include "base/translation.h"
#include "base/try.h"

namespace orlocal::accounts {
namespace {

// Long enough to find a key and type its password.
constexpr std::chrono::minutes kCommandLimit{2};

template <class... Cases>
struct Overloaded : Cases... {
  using Cases::operator()...;
};
template <class... Cases>
Overloaded(Cases...) -> Overloaded<Cases...>;

/// A descriptor that closes itself.
class OpenFile {
 public:
  explicit OpenFile(const std::filesystem::path& file) : m_descriptor(::open(file.c_str(), O_RDONLY | O_CLOEXEC)) {}
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  ~OpenFile() {
    if (m_descriptor >= 0) { ::close(m_descriptor); }
  }
  int descriptor() const { return m_descriptor; }

 private:
  int m_descriptor;
};

Failed unreadable(const std::string& subject, const std::filesystem::path& file, int error) {
  const ErrorCode code = error == ENOENT   ? ErrorCode::kNotFound
                         : error == EACCES ? ErrorCode::kNotPermitted
                                           : ErrorCode::kIo;
  return failure(code, tr("{} cannot be read from \"{}\": {}.", subject, file.string(), systemReason(error)));
}

/// As the service manager gives credentials to services, they lie in a folder that only the service may enter, and the
/// group's bits of their mode show who else an access list names.
Status checkMode(const std::string& subject, const std::filesystem::path& file, const struct stat& found,
                 bool isCredential) {
  const mode_t forbidden = isCredential ? S_IRWXO | S_IWGRP : S_IRWXO | S_IRWXG;
  if (!S_ISREG(found.st_mode)) {
    return failure(ErrorCode::kInvalid, tr("{} is kept in \"{}\", which is no file.", subject, file.string()));
  }
  if (found.st_uid != ::geteuid() && found.st_uid != 0) {
    return failure(ErrorCode::kNotPermitted,
                   tr("{} is kept in \"{}\", which belongs to another user.", subject, file.string()));
  }
  if ((found.st_mode & forbidden) != 0) {
    return failure(ErrorCode::kNotPermitted,
                   tr("{} is kept in \"{}\", which others may open (its mode is {:04o}); make that 0600.", subject,
                      file.string(), found.st_mode & 07777U));
  }
  return {};
}

Result<std::string> firstLineOfFile(const std::filesystem::path& name, const std::string& subject) {
  constexpr std::size_t kMostBytes = 1U << 16U;
  std::filesystem::path file = name;
  const bool isCredential = name.is_relative();
  if (isCredential) {
    const char* folder = std::getenv("CREDENTIALS_DIRECTORY");
    if (folder == nullptr || *folder == '\0') {
      return failure(ErrorCode::kNotFound,
                     tr("{} is the credential \"{}\", and nothing says where credentials are: set "
                        "CREDENTIALS_DIRECTORY, or name the file with its whole path.",
                        subject, name.string()));
    }
    file = std::filesystem::path(folder) / name;
  }
  const OpenFile open(file);
  struct stat found {};
  if (open.descriptor() < 0 || ::fstat(open.descriptor(), &found) != 0) { return unreadable(subject, file, errno); }
  ORLOCAL_CHECK(checkMode(subject, file, found, isCredential));
  std::string text(std::min(kMostBytes, static_cast<std::size_t>(found.st_size)), '\0');
  const ssize_t count = ::pread(open.descriptor(), text.data(), text.size(), 0);
  if (count < 0) { return unreadable(subject, file, errno); }
  return std::string(firstLineIn(std::string_view(text).substr(0, static_cast<std::size_t>(count))));
}

/// What can be sent: passwords travel encoded, tokens as they are.
Result<Secret> checkedSecret(std::string value, bool isToken, const std::string& subject) {
  if (value.empty()) { return failure(ErrorCode::kInvalid, tr("{} is empty.", subject)); }
  const auto fits = [&](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return isToken ? byte > ' ' && byte < 0x7F : byte >= ' ' && byte != 0x7F;
  };
  if (!std::all_of(value.begin(), value.end(), fits)) {
    return failure(ErrorCode::kInvalid, isToken ? tr("{} has characters that no token has.", subject)
                                                : tr("{} has control characters.", subject));
  }
  return Secret{std::move(value), isToken};
}

}  // namespace

std::string textOf(const SecretSource& source) {
  return std::visit(Overloaded{
                        [](const NoPassword&) { return std::string("none"); },
                        [](const KeptPassword&) { return std::string("kept"); },
                        [](const PasswordFile& file) { return "file:" + file.file.string(); },
                        [](const PasswordCommand& command) { return "command:" + command.command; },
                        [](const TokenCommand& command) { return "token:" + command.command; },
                    },
                    source);
}

Result<SecretSource> secretSourceOf(std::string_view text) {
  if (text == "none") { return NoPassword{}; }
  if (text == "kept") { return KeptPassword{}; }
  const std::size_t colon = text.find(':');
  const std::string_view kind = text.substr(0, colon);
  const std::string rest(colon == text.npos ? "" : text.substr(colon + 1));
  if (!rest.empty() && kind == "file") { return PasswordFile{rest}; }
  if (!rest.empty() && kind == "command") { return PasswordCommand{rest}; }
  if (!rest.empty() && kind == "token") { return TokenCommand{rest}; }
  return failure(ErrorCode::kInvalid, tr("\"{}\" is no place for a password.", text));
}

Result<Secret> secretOf(const SecretSource& source, std::string_view account, const std::string& accountName,
                        const SecretsFile& kept, const std::atomic<bool>* stop) {
  const std::string subject = tr("The password of the account \"{}\"", accountName);
  const auto run = [&](const std::string& command, bool isToken) -> Result<Secret> {
    const std::string what = isToken ? "token" : "password";
    ORLOCAL_TRY(auto line, firstLineOf(command, kCommandLimit,
                                       tr("The {} command of the account \"{}\"", what, accountName), stop));
    return checkedSecret(std::move(line), isToken,
                         tr("What the {} command of the account \"{}\" prints", what, accountName));
  };
  return std::visit(
      Overloaded{
          [&](const NoPassword&) -> Result<Secret> { return Secret{}; },
          [&](const KeptPassword&) -> Result<Secret> {
            ORLOCAL_TRY(auto password, kept.password(account));
            if (password) { return checkedSecret(std::move(*password), false, subject); }
            return failure(
                ErrorCode::kNotFound,
                tr("{} is not kept here; add the account again, or give it a command or a file that has the password.",
                   subject));
          },
          [&](const PasswordFile& file) -> Result<Secret> {
            ORLOCAL_TRY(auto line, firstLineOfFile(file.file, subject));
            return checkedSecret(std::move(line), false, subject);
          },
          [&](const PasswordCommand& command) { return run(command.command, false); },
          [&](const TokenCommand& command) { return run(command.command, true); },
      },
      source);
}

}  // namespace orlocal::accounts
