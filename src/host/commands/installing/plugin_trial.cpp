#include "host/commands/installing/plugin_trial.h"

#include <cstdlib>
#include <memory>
#include <ostream>
#include <string_view>

#include <fmt/format.h>
#include <grp.h>
#include <unistd.h>

#include "base/translation.h"
#include "base/try.h"
#include "host/commands/command_line/child_process.h"
#include "host/commands/scripting/plugin_host.h"

namespace orlocal::host {
namespace {

constexpr std::string_view kVersionCalculation = "Orlo_Version";
/// Looks into the store and counts nothing: it says whether the store can be read.
constexpr std::string_view kStoreCalculation =
    R"(Orlo_EventsFetch( Timestamp( "2001-01-01 00:00:00" ) ; Timestamp( "2001-01-02 00:00:00" ) ; "" ; "" ))";
constexpr char kFine = '+';
constexpr char kTrouble = '-';

Status become(const FileOwner& owner) {
  if (::geteuid() != 0 || owner.user == 0) { return {}; }
  if (::initgroups(owner.userName.c_str(), owner.group) == 0 && ::setgid(owner.group) == 0 &&
      ::setuid(owner.user) == 0) {
    return {};
  }
  return failure(ErrorCode::kNotPermitted, tr("this process cannot become {}", owner.userName));
}

Result<std::string> evaluated(Workbench& workbench, std::string_view calculation) {
  ORLOCAL_TRY(const calc::Outcome outcome, workbench.evaluate(calculation));
  if (!outcome.failures.empty()) { return failure(ErrorCode::kIo, outcome.failures.front()); }
  return outcome.value.utf8();
}

Result<std::string> load(const CommandContext& context, const std::filesystem::path& plugin, bool asksStore) {
  GlobalOptions options = context.options;
  options.plugin = plugin.string();
  CommandContext here{options, context.streams, context.programFile};
  ORLOCAL_TRY(const auto workbench, Workbench::open(here, Workbench::Need::kPlugin));
  workbench->beStrict();
  ORLOCAL_TRY(std::string version, evaluated(*workbench, kVersionCalculation));
  if (asksStore) { ORLOCAL_TRY([[maybe_unused]] const auto fetched, evaluated(*workbench, kStoreCalculation)); }
  return version;
}

}  // namespace

Result<std::string> tryPlugin(const CommandContext& context, const std::filesystem::path& plugin,
                              const FileOwner& owner, const std::optional<std::filesystem::path>& settings) {
  ORLOCAL_TRY(const ChildResult child, runInChild([&](std::ostream& out) -> Status {
                ::clearenv();
                ::setenv("ORLOCAL_SETTINGS", settings ? settings->c_str() : "", 1);
                ORLOCAL_CHECK(become(owner));
                const auto version = load(context, plugin, settings.has_value());
                if (version) {
                  out << kFine << *version;
                } else {
                  out << kTrouble << version.error().message;
                }
                return {};
              }));
  const std::string said = child.output.empty() ? std::string() : child.output.substr(1);
  if (child.succeeded() && child.output.starts_with(kFine)) { return said; }
  return failure(ErrorCode::kRefused,
                 child.succeeded()
                     ? tr("as {}, {} cannot be used: {}", owner.userName, plugin.string(), said)
                     : tr("as {}, {} {} when it was loaded", owner.userName, plugin.string(), child.ending));
}

}  // namespace orlocal::host
