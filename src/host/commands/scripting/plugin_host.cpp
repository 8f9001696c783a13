#include "host/commands/scripting/plugin_host.h"

#include <algorithm>
#include <iterator>
#include <ostream>
#include <utility>

#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"
#include "host/commands/command_line/trouble.h"
#include "host/fmwrapper/call.h"
#include "host/fmwrapper/registry.h"
#include "host/fmwrapper/unicode.h"

namespace orlocal::host {

namespace {

constexpr std::string_view kPluginName = "Orlocal.fmx";
constexpr std::u16string_view kLastErrorFunction = u"Orlo_GetLastError";
/// From the program's folder, where both were installed.
constexpr std::string_view kOwnFolder = ORLOCAL_OWN_FOLDER;
constexpr std::string_view kServerFolder = "/opt/FileMaker/FileMaker Server/Database Server/Extensions";

bool isThere(const std::filesystem::path& file) {
  std::error_code error;
  return std::filesystem::exists(file, error);
}

fmx::ErrorCode evaluateFor(calc::Session& session, std::u16string_view expression, Value& result) {
  Result<calc::Outcome> outcome = session.evaluate(toUtf8(expression));
  if (!outcome) { return Registry::kRefused; }
  result = std::move(outcome->value);
  return 0;
}

}  // namespace

std::vector<std::filesystem::path> pluginPlaces(const std::string& programFile) {
  const std::filesystem::path folder = std::filesystem::path(programFile).parent_path();
  return {folder / kPluginName, (folder / kOwnFolder / kPluginName).lexically_normal(),
          std::filesystem::path(kServerFolder) / kPluginName};
}

Result<std::filesystem::path> pluginFile(const GlobalOptions& options, const std::string& programFile) {
  if (options.plugin) {
    if (isThere(*options.plugin)) { return *options.plugin; }
    return failure(ErrorCode::kNotFound, tr("there is no plug-in {}", *options.plugin));
  }
  std::string sought;
  for (const std::filesystem::path& place : pluginPlaces(programFile)) {
    if (isThere(place)) { return place; }
    sought = sought.empty() ? place.string() : tr("{} and {}", sought, place.string());
  }
  return failure(ErrorCode::kNotFound, tr("there is no plug-in (looked for {}); name one with --plugin", sought));
}

std::vector<calc::Signature> PluginFunctions::signatures() const {
  std::vector<calc::Signature> result;
  for (const auto& function : Registry::instance().functions()) {
    result.push_back({toUtf8(function->name), toUtf8(function->prototype), toUtf8(function->description),
                      function->minArgs, function->maxArgs});
  }
  return result;
}

Result<Value> PluginFunctions::call(std::string_view name, std::span<const Value> arguments) {
  const std::shared_ptr<const RegisteredFunction> function = Registry::instance().function(toUtf16(name));
  if (!function) { return failure(ErrorCode::kNotFound, tr("{} is no longer registered", name)); }
  Result<Value> result = callFunction(*function, std::vector<Value>(arguments.begin(), arguments.end()));
  if (m_notes && result && result->utf8() == kErrorResult) {
    m_errors.push_back(
        fmt::format("{} returned {}: {}", name, kErrorResult, lastError().value_or(tr("no reason is known"))));
  }
  return result;
}

std::optional<std::string> PluginFunctions::lastError() {
  const auto function = Registry::instance().function(kLastErrorFunction);
  if (!function) { return std::nullopt; }
  const auto reason = callFunction(*function, {});
  const auto code = callFunction(*function, {Value::ofText(u"number")});
  if (!reason || !code || code->utf8() == "0") { return std::nullopt; }
  return fmt::format("{} ({})", reason->utf8(), code->utf8());
}

Result<std::unique_ptr<Workbench>> Workbench::open(CommandContext& context, Need need) {
  const GlobalOptions& options = context.options;
  if (s_open) {
    return failure(
        ErrorCode::kInvalid,
        tr("The plug-in is loaded in this process already, and a process has it once: type calculations as they "
           "are, and give this command to a shell."));
  }
  const auto without = [] { return std::unique_ptr<Workbench>(new Workbench(nullptr)); };
  if (options.plugin == kNoPlugin) {
    if (need == Need::kPlugin) { return failure(ErrorCode::kInvalid, tr("this command needs a plug-in")); }
    return without();
  }
  const auto file = pluginFile(options, context.programFile);
  if (!file) {
    if (need == Need::kPlugin || options.plugin) { return failure(file.error()); }
    tellTrouble(context.streams.err, tr("{}; going on without one", file.error().message));
    return without();
  }
  HostDescription host;
  host.extensionVersion = static_cast<std::int16_t>(options.hostVersion);
  ORLOCAL_TRY(auto plugin, Plugin::load(*file, host));
  return std::unique_ptr<Workbench>(new Workbench(std::move(plugin)));
}

bool Workbench::s_open = false;

Workbench::Workbench(std::unique_ptr<Plugin> plugin) : m_plugin(std::move(plugin)) {
  s_open = true;
  Registry::instance().setEvaluator([this](const Environment&, std::u16string_view expression, Value& result) {
    return evaluateFor(m_session, expression, result);
  });
}

Workbench::~Workbench() {
  Registry::instance().setEvaluator(nullptr);
  s_open = false;
}

Result<calc::Outcome> Workbench::evaluate(std::string_view calculation) {
  Result<calc::Outcome> outcome = m_session.evaluate(calculation);
  auto errors = m_functions.takeErrors();
  if (outcome) { std::move(errors.begin(), errors.end(), std::back_inserter(outcome->failures)); }
  if (m_plugin) {
    if (const auto idle = m_plugin->idle(); !idle && outcome) { outcome->failures.push_back(idle.error().message); }
  }
  return outcome;
}

}  // namespace orlocal::host
