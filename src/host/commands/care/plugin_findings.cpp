#include "host/commands/care/plugin_findings.h"

#include <filesystem>
#include <system_error>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "base/translation.h"
#include "base/whole_input.h"
#include "host/commands/command_line/child_process.h"
#include "host/commands/scripting/plugin_host.h"

namespace orlocal::host {
namespace {

namespace fs = std::filesystem;

constexpr const char* kPlugIn = translatable("plug-in");

bool isThere(const fs::path& path) {
  std::error_code error;
  return fs::exists(path, error);
}

Finding loaded(const CommandContext& context, const fs::path& file) {
  const auto child = runProgram({context.programFile, "--plugin", file.string(), "--json", "functions"});
  if (!child || !child->succeeded()) {
    const std::string why = child ? child->output.substr(0, child->output.find('\n')) : child.error().message;
    return problem(kPlugIn, tr("{} cannot be loaded: {}", file.string(), why),
                   tr("ldd FILE shows which libraries it does not find; install them, or the plug-in anew."));
  }
  const auto functions = nlohmann::json::parse(child->output, nullptr, false);
  return fine(kPlugIn,
              tr("{} offers {} functions.", file.string(), functions.is_array() ? functions.size() : std::size_t{0}));
}

/// What stands in a server's folder is held against the one beside the program.
void addServer(const fs::path& place, const fs::path& ours, Findings& findings) {
  const fs::path folder = place.parent_path();
  if (!isThere(folder)) {
    findings.push_back(fine(kPlugIn, tr("No database host's server is on this machine.")));
    return;
  }
  if (!isThere(place)) {
    findings.push_back(note(kPlugIn, tr("The server's folder {} does not hold it.", folder.string()),
                            tr("Copy {} and its .resources there.", ours.string())));
    return;
  }
  const auto theirs = readWholeFile(place);
  const auto own = readWholeFile(ours);
  if (theirs && own && *theirs != *own) {
    findings.push_back(note(kPlugIn, tr("{} is another version.", place.string()),
                            tr("Copy {} there, and start the server anew.", ours.string())));
    return;
  }
  findings.push_back(fine(kPlugIn, tr("The server has it, too: {}.", place.string())));
}

}  // namespace

Findings pluginFindings(const CommandContext& context) {
  if (context.options.plugin == kNoPlugin) { return {fine(kPlugIn, tr("None was to be looked at."))}; }
  const auto file = pluginFile(context.options, context.programFile);
  if (!file) { return {problem(kPlugIn, file.error().message + '.', tr("Install the plug-in beside the program."))}; }
  Findings findings{loaded(context, *file)};
  addServer(pluginPlaces(context.programFile).back(), *file, findings);
  return findings;
}

}  // namespace orlocal::host
