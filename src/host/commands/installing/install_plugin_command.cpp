#include <filesystem>
#include <memory>
#include <optional>
#include <ostream>
#include <string>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "base/translation.h"
#include "base/try.h"
#include "host/commands/command_line/json_text.h"
#include "host/commands/command_line/terminal_text.h"
#include "host/commands/command_line/trouble.h"
#include "host/commands/installing/installation.h"
#include "host/commands/installing/installing_commands.h"
#include "host/commands/scripting/plugin_host.h"

namespace orlocal::host {
namespace {

namespace fs = std::filesystem;

constexpr const char* kServerUser = "fmserver";
constexpr const char* kMachineSettings = "/etc/orlocal/orlocal.conf";
constexpr const char* kStandardStore = "/var/lib/orlocal/calendar.db";

struct Words {
  std::optional<std::string> folder, user, settings;
  bool server = false, removes = false, dryRun = false;
};

Result<fs::path> wholePath(const std::string& typed) {
  if (typed.empty() || printable(typed) != typed) {
    return failure(ErrorCode::kInvalid, tr("\"{}\" is no path that a line of settings can hold", typed));
  }
  std::error_code error;
  fs::path whole = fs::absolute(typed, error).lexically_normal();
  if (error) { return failure(ErrorCode::kIo, fmt::format("{}: {}", typed, error.message())); }
  // "folder/" names what "folder" names.
  return whole.has_filename() ? whole : whole.parent_path();
}

/// In the server's own folder everything has its place; in another one only what was asked for is done.
Result<InstallWish> wishOf(const Words& words, const CommandContext& context) {
  InstallWish wish;
  wish.user = words.user;
  wish.standardStore = kStandardStore;
  if (words.folder) {
    ORLOCAL_TRY(wish.folder, wholePath(*words.folder));
  } else {
    wish.folder = serverFolder();
    wish.settings = kMachineSettings;
    if (!wish.user) { wish.user = kServerUser; }
  }
  if (words.settings) { ORLOCAL_TRY(wish.settings, wholePath(*words.settings)); }
  if (context.options.store) { ORLOCAL_TRY(wish.store, wholePath(*context.options.store)); }
  if (wish.store && !wish.settings) {
    return failure(ErrorCode::kInvalid, tr("--store is written into a settings file; name that with --settings"));
  }
  if (words.removes) {
    wish.user.reset();
    wish.plugin = pluginPlaces(context.programFile).front().filename();
  } else {
    ORLOCAL_TRY(const fs::path plugin, pluginFile(context.options, context.programFile));
    ORLOCAL_TRY(wish.plugin, wholePath(plugin.string()));
  }
  return wish;
}

/// Unfolded, since paths are there to be copied.
void printSteps(const Installation& plan, std::ostream& out) {
  for (const InstallStep& step : plan.steps) { out << "  " << printable(step.sentence) << '\n'; }
}

nlohmann::json asJson(const Installation& plan, bool dryRun, const std::optional<std::string>& version) {
  nlohmann::json steps = nlohmann::json::array();
  for (const InstallStep& step : plan.steps) {
    steps.push_back({{"step", step.kind}, {"path", step.path.string()}, {"text", step.sentence}});
  }
  return {{"folder", plan.wish.folder.string()},
          {"owner", plan.owner.userName},
          {"group", plan.owner.groupName},
          {"store", plan.store.empty() ? nlohmann::json() : nlohmann::json(plan.store.string())},
          {"version", jsonText(version)},
          {"done", !dryRun},
          {"steps", steps}};
}

Result<ExitStatus> runInstallPlugin(const Words& words, CommandContext& context) {
  const auto wish = wishOf(words, context);
  if (!wish) {
    if (wish.error().code != ErrorCode::kInvalid) { return failure(wish.error()); }
    tellTrouble(context.streams.err, wish.error().message);
    return ExitStatus::kUsage;
  }
  ORLOCAL_TRY(const Installation plan, words.removes ? planRemoval(*wish) : planInstallation(*wish));
  std::optional<std::string> version;
  if (!words.dryRun && !plan.steps.empty()) {
    if (words.removes) {
      ORLOCAL_CHECK(removeInstalled(plan));
    } else {
      ORLOCAL_TRY(version, install(context, plan));
    }
  }
  std::ostream& out = context.streams.out;
  if (context.options.json) {
    printJson(asJson(plan, words.dryRun, version), out);
    return ExitStatus::kDone;
  }
  const std::string folder = printable(plan.wish.folder.string());
  if (plan.steps.empty()) {
    out << tr("Nothing of it is in {}.\n", folder);
    return ExitStatus::kDone;
  }
  out << (words.dryRun ? tr("These steps would be taken:\n") : tr("These steps were taken:\n"));
  printSteps(plan, out);
  if (words.dryRun) { return ExitStatus::kDone; }
  if (words.removes) {
    out << tr(
        "A server that runs keeps what it has loaded until it is started anew. The\nstore, where there is one, "
        "stays.\n");
  } else {
    out << tr("Orlocal {} loads there. A server that runs has it once it is started anew.\n", *version);
  }
  return ExitStatus::kDone;
}

}  // namespace

void registerInstallPluginCommand(CommandLine& line) {
  auto words = std::make_shared<Words>();
  CLI::App& command =
      line.add("install-plugin", "Put the plug-in into a database host's folder, and see that it works there.",
               [words](CommandContext& context) { return runInstallPlugin(*words, context); });
  auto* server = command.add_flag("--server", words->server,
                                  tr("Into the server's own folder, as without --folder: {}", serverFolder().string()));
  command.add_option("--folder", words->folder, "Into that folder; settings are left alone unless they are named")
      ->type_name("FOLDER")
      ->excludes(server);
  command
      .add_option("--user", words->user,
                  "The account that the host runs as (fmserver; with --folder, whoever owns the folder)")
      ->type_name("NAME");
  command
      .add_option("--settings", words->settings,
                  tr("The settings file that names the store ({}; with --folder, none)", kMachineSettings))
      ->type_name("FILE");
  command.add_flag("--remove", words->removes, "Take it away again; the store stays");
  command.add_flag("--dry-run", words->dryRun, "Show each step, and take none");
  command.footer(
      tr("The plug-in is loaded beside the folder's own first, as that account, then put in place in one step. When "
         "anything fails, everything is as it was. A settings file that names a store is left as it is; one that names "
         "none gets --store, or {}.\n",
         kStandardStore) +
      "  orlocal install-plugin --server --dry-run\n"
      "  orlocal install-plugin --server --user fmserver\n"
      "  orlocal install-plugin --folder ~/Extensions\n"
      "  orlocal install-plugin --remove");
}

}  // namespace orlocal::host
