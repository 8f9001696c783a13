#pragma once

#include <atomic>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include "base/result.h"

namespace orlocal::accounts {

/// Where an account's password or token comes from. None of it stands in the store but the command or the file's name.
struct PasswordCommand {
  std::string command;  ///< run by /bin/sh; the first line of its output is the password
};
struct TokenCommand {
  std::string command;  ///< the first line of its output is a bearer token (RFC 6750); run again when it was refused
};
/// The first line of a file that nobody else may read (mode 0600 or stricter, owned by this user or root). A relative
/// name is looked for in the folder that `CREDENTIALS_DIRECTORY` names, as systemd gives it to services.
struct PasswordFile {
  std::filesystem::path file;
};
/// What `account add` asked for: kept in our own file of secrets.
struct KeptPassword {};
struct NoPassword {};

using SecretSource = std::variant<NoPassword, KeptPassword, PasswordFile, PasswordCommand, TokenCommand>;

/// "command:…", "token:…", "file:…", "kept", "none": how a source stands in the store.
std::string textOf(const SecretSource& source);
Result<SecretSource> secretSourceOf(std::string_view text);

struct Secret {
  std::string value;
  bool isToken = false;
};

/// The file of kept passwords: `secrets` beside the store's settings (`$XDG_CONFIG_HOME/orlocal/secrets`, else
/// `~/.config/orlocal/secrets`), mode 0600, a line of JSON for each account. Written by renaming, read anew each time.
class SecretsFile {
 public:
  explicit SecretsFile(std::filesystem::path file) : m_file(std::move(file)) {}
  static Result<std::filesystem::path> userFile();

  /// `account` is the account's identifier, which no other account ever has.
  Result<std::optional<std::string>> password(std::string_view account) const;
  Status keep(std::string_view account, std::string_view password);
  Status forget(std::string_view account);

 private:
  std::filesystem::path m_file;
};

/// Gets it. Fails with a sentence that names the account and what to do: the command and how it ended (never its
/// output), the file and its mode. A command runs for two minutes at most, and ends with `stop`.
Result<Secret> secretOf(const SecretSource& source, std::string_view account, const std::string& accountName,
                        const SecretsFile& kept, const std::atomic<bool>* stop = nullptr);

}  // namespace orlocal::accounts
