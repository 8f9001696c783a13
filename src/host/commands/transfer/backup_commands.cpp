#include <filesystem>
#include <memory>
#include <ostream>
#include <string>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "base/try.h"
#include "host/commands/command_line/command.h"
#include "host/commands/command_line/terminal_text.h"
#include "host/commands/transfer/transfer_commands.h"
#include "store/backup.h"
#include "store/location.h"

namespace orlocal::host {
namespace {

std::string counted(std::int64_t count, const char* what) {
  return fmt::format("{} {}{}", count, what, count == 1 ? "" : "s");
}

std::string contentOf(const store::CopiedStore& content) {
  return counted(content.events, "event") + " and " + counted(content.reminders, "reminder");
}

Result<store::StoreOptions> userStore() { return store::userStoreOptions(store::Zone::ofUser()); }

Result<ExitStatus> runBackup(const std::string& file, bool replace, CommandContext& context) {
  ORLOCAL_TRY(const store::StoreOptions options, userStore());
  const auto existing = replace ? store::ExistingFile::kIsReplaced : store::ExistingFile::kIsRefused;
  ORLOCAL_TRY(const auto content, store::backUpStore(options.file, file, existing, options.busyTimeout));
  context.streams.out << fmt::format("{}: {} of {}, {} bytes\n", printable(file), contentOf(content),
                                     printable(options.file.string()), content.bytes);
  return ExitStatus::kDone;
}

Result<ExitStatus> runRestore(const std::string& file, CommandContext& context) {
  ORLOCAL_TRY(const store::StoreOptions options, userStore());
  ORLOCAL_TRY(const auto restored, store::restoreStore(options, file));
  context.streams.out << fmt::format("{}: {} from {}", printable(options.file.string()), contentOf(restored.content),
                                     printable(file));
  if (restored.kept) {
    context.streams.out << fmt::format("; what was there {} {}",
                                       restored.keptUnread ? "could not be read and is, as it was, in" : "is in",
                                       printable(restored.kept->string()));
  }
  context.streams.out << '\n';
  return ExitStatus::kDone;
}

}  // namespace

void registerBackupCommands(CommandLine& line) {
  auto target = std::make_shared<std::string>();
  auto replace = std::make_shared<bool>(false);
  CLI::App& backup = line.add("backup", "Copy the whole store into one file, also while other programs write.",
                              [=](CommandContext& context) { return runBackup(*target, *replace, context); });
  backup.footer("  orlocal backup calendars-monday.db");
  backup.add_option("file", *target, "The file to make")->type_name("FILE")->required();
  backup.add_flag("--replace", *replace, "Replace a file that is there already");

  auto source = std::make_shared<std::string>();
  CLI::App& restore = line.add("restore", "Put the content of a backup in place of that of the store.",
                               [source](CommandContext& context) { return runRestore(*source, context); });
  restore.footer(
      "The backup is checked first. What the store holds is kept in a file beside it, <store>.before-restore-<time>.\n"
      "Other programs may go on: they show the restored content.\n"
      "  orlocal restore calendars-monday.db");
  restore.add_option("file", *source, "The backup")->type_name("FILE")->required();
}

}  // namespace orlocal::host
