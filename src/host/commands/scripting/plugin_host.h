#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/result.h"
#include "host/calc/function_library.h"
#include "host/calc/session.h"
#include "host/commands/command_line/command.h"
#include "host/plugin/plugin.h"

namespace orlocal::host {

/// What `--plugin` takes to load nothing: the language's own functions are all there is then.
inline constexpr std::string_view kNoPlugin = "none";

/// Where a plug-in is looked for when none is named: beside the program, where it was installed with the program, then
/// where a server keeps it.
std::vector<std::filesystem::path> pluginPlaces(const std::string& programFile);

/// Where a database host's server keeps plug-ins.
std::filesystem::path serverFolder();

/// The plug-in to load: the one that `--plugin` names, else the first that there is. A failure says where it was
/// sought.
Result<std::filesystem::path> pluginFile(const GlobalOptions& options, const std::string& programFile);

/// What a function of the plug-in returns when it could not do its work.
inline constexpr std::string_view kErrorResult = "!!ERROR!!";

/// The functions that loaded plug-ins have registered.
class PluginFunctions : public calc::FunctionLibrary {
 public:
  std::vector<calc::Signature> signatures() const override;
  Result<Value> call(std::string_view name, std::span<const Value> arguments) override;

  /// Why the last call failed, in the plug-in's own words: "Item not found. (9001)". None when it did not, or when the
  /// plug-in has no such function. Asking changes nothing that a calculation could see.
  static std::optional<std::string> lastError();

  /// From now on each call that returns `kErrorResult` is noted with its reason.
  void noteErrors() { m_notes = true; }
  /// What was noted since the last time.
  std::vector<std::string> takeErrors() { return std::exchange(m_errors, {}); }

 private:
  bool m_notes = false;
  std::vector<std::string> m_errors;
};

/// The plug-in, loaded and started, and a session that calls it: what a host is to a script. One in a process at a
/// time.
///
/// Destruction sends the shutdown message.
class Workbench {
 public:
  enum class Need {
    kPlugin,   ///< without a plug-in there is nothing to do
    kIfThere,  ///< goes on without one, when none was named
  };

  /// Fails while another one is open. A failure says what was missing. A plug-in that is not there and not needed is a
  /// line on the error stream.
  static Result<std::unique_ptr<Workbench>> open(CommandContext& context, Need need);
  ~Workbench();
  Workbench(const Workbench&) = delete;
  Workbench& operator=(const Workbench&) = delete;

  /// From now on each call that returned "!!ERROR!!" is a failure of the calculation that made it, whatever became of
  /// the result.
  void beStrict() { m_functions.noteErrors(); }

  /// Evaluates, then gives the plug-in its idle message.
  Result<calc::Outcome> evaluate(std::string_view calculation);

  calc::Session& session() { return m_session; }
  const calc::FunctionLibrary& library() const { return m_functions; }

  /// Null when no plug-in is loaded.
  Plugin* plugin() { return m_plugin.get(); }

 private:
  explicit Workbench(std::unique_ptr<Plugin> plugin);

  static bool s_open;

  PluginFunctions m_functions;
  calc::Session m_session{m_functions};
  std::unique_ptr<Plugin> m_plugin;
};

}  // namespace orlocal::host
