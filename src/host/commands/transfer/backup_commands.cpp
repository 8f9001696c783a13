#include <filesystem>
#include <memory>
#include <ostream>
#include <string>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"
#include "host/commands/command_line/command.h"
#include "host/commands/command_line/terminal_text.h"
#include "host/commands/transfer/transfer_commands.h"
#include "store/backup.h"
#include "store/location.h"

namespace orlocal::host {
namespace {

std::string contentOf(const store::CopiedStore& content) {
  const auto events = static_cast<std::size_t>(content.events), reminders = static_cast<std::size_t>(content.reminders);
  return tr("{} and {}", trn("{} event", "{} events", events, events),
            trn("{} reminder", "{} reminders", reminders, reminders));
}

Result<store::StoreOptions> userStore() { return store::userStoreOptions(store::Zone::ofUser()); }

Result<ExitStatus> runBackup(const std::string& file, bool replace, CommandContext& context) {
  ORLOCAL_TRY(const store::StoreOptions options, userStore());
  const auto existing = replace ? store::ExistingFile::kIsReplaced : store::ExistingFile::kIsRefused;
  ORLOCAL_TRY(const auto content, store::backUpStore(options.file, file, existing, options.busyTimeout));
  context.streams.out << tr("{}: {} of {}, {} bytes\n", printable(file), contentOf(content),
                            printable(options.file.string()), content.bytes);
  return ExitStatus::kDone;
}

Result<ExitStatus> runRestore(const std::string& file, CommandContext& context) {
  ORLOCAL_TRY(const store::StoreOptions options, userStore());
  ORLOCAL_TRY(const auto restored, store::restoreStore(options, file));
  context.streams.out << tr("{}: {} from {}", printable(options.file.string()), contentOf(restored.content),
                            printable(file));
  if (restored.kept) {
    const std::string kept = printable(restored.kept->string());
    context.streams.out << (restored.keptUnread
                                ? tr("; what was there could not be read and is, as it was, in {}", kept)
                                : tr("; what was there is in {}", kept));
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
  restore.footer(tr("The backup is checked first. What the store holds is kept in a file beside it, "
                    "<store>.before-restore-<time>.\nOther programs may go on: they show the restored content.\n") +
                 "  orlocal restore calendars-monday.db");
  restore.add_option("file", *source, "The backup")->type_name("FILE")->required();
}

}  // namespace orlocal::host
