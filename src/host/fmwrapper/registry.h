#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/fmwrapper/export.h"
#include "host/fmwrapper/value.h"
#include "platform/host/fm_api.h"

namespace orlocal::host {

/// Where a calculation runs: which session and which open file; 0 is none.
struct Environment {
  std::uintptr_t sessionId = 0;
  std::uintptr_t fileId = 0;
};

/// What names a function or a step: the plug-in's four characters in reading order, and the ID among its own.
struct RegistrationKey {
  std::uint32_t pluginId = 0;
  std::int16_t id = 0;
  auto operator<=>(const RegistrationKey&) const = default;
};

/// A function that a plug-in registered.
struct RegisteredFunction {
  RegistrationKey key;
  std::u16string name;
  std::u16string prototype;
  std::u16string description;  ///< type-ahead words, a vertical bar, the text
  std::int16_t minArgs = 0;
  std::int16_t maxArgs = 0;  ///< -1 is any number
  std::uint32_t flags = 0;
  fmx::ExternalFunction function = nullptr;
};

/// A script step that a plug-in registered.
struct RegisteredStep {
  RegistrationKey key;
  std::u16string name;
  std::u16string definition;  ///< XML: the step's parameters
  std::u16string description;
  std::uint32_t flags = 0;
  fmx::ExternalFunction function = nullptr;
};

/// A script that a plug-in asked the host to start.
struct ScriptStart {
  std::u16string file;
  std::u16string script;
  std::uint8_t control = 0;  ///< 0 halt, 1 exit, 2 resume, 3 pause
  std::optional<Value> parameter;
};

/// The host's side of the interface, one for the process: what plug-ins registered, and what the host does for them.
///
/// Entries are handed out shared, so that one can be called while another thread unregisters it. All of it may be used
/// from any thread; the evaluator and the script hook run on the thread that asks.
class ORLOCAL_HOST_API Registry {
 public:
  using Evaluator = std::function<fmx::ErrorCode(const Environment&, std::u16string_view expression, Value& result)>;
  using ScriptHook = std::function<fmx::ErrorCode(const ScriptStart&)>;

  /// What a call is answered with when it cannot be done: nothing registered under that ID, a registration without a
  /// name or function or with impossible argument counts, no evaluator.
  static constexpr fmx::ErrorCode kRefused = -1;

  static Registry& instance();

  /// Registering the same plug-in and ID again replaces what was there.
  fmx::ErrorCode registerFunction(RegisteredFunction function);
  fmx::ErrorCode registerStep(RegisteredStep step);
  fmx::ErrorCode unregisterFunction(RegistrationKey key);
  fmx::ErrorCode unregisterStep(RegistrationKey key);

  /// By name, ignoring case; the first by plug-in and ID when several share it. Null when there is none.
  std::shared_ptr<const RegisteredFunction> function(std::u16string_view name) const;
  std::shared_ptr<const RegisteredStep> step(std::u16string_view name) const;

  /// Everything registered, ordered by plug-in and ID.
  std::vector<std::shared_ptr<const RegisteredFunction>> functions() const;
  std::vector<std::shared_ptr<const RegisteredStep>> steps() const;

  /// Answers `FM_ExprEnv_Evaluate`. None to begin with: evaluation is then refused.
  void setEvaluator(Evaluator evaluator);
  fmx::ErrorCode evaluate(const Environment& environment, std::u16string_view expression, Value& result) const;

  /// Receives script starts as they come. Without a hook they are kept until taken.
  void setScriptHook(ScriptHook hook);
  fmx::ErrorCode startScript(ScriptStart start);
  std::vector<ScriptStart> takeScriptStarts();

  Environment currentEnvironment() const;
  void setCurrentEnvironment(Environment environment);

  /// The callbacks that go into the record a plug-in is called with.
  static fmx::StartScript startScriptCallback() noexcept;
  static fmx::CurrentEnvironment currentEnvironmentCallback() noexcept;

 private:
  Registry();
  ~Registry();
  struct State;
  std::unique_ptr<State> m_state;
};

}  // namespace orlocal::host
