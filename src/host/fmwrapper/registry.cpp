#include "host/fmwrapper/registry.h"

#include <map>
#include <mutex>
#include <utility>

#include "host/fmwrapper/handles.h"
#include "host/fmwrapper/unicode.h"

namespace orlocal::host {

namespace {

/// Registrations of one kind by key, and their keys by folded name.
template <class Entry>
class Shelf {
 public:
  fmx::ErrorCode put(Entry entry) {
    auto shared = std::make_shared<const Entry>(std::move(entry));
    m_entries.insert_or_assign(shared->key, shared);
    nameAll();
    return 0;
  }

  fmx::ErrorCode remove(RegistrationKey key) {
    if (m_entries.erase(key) == 0) { return Registry::kRefused; }
    nameAll();
    return 0;
  }

  std::shared_ptr<const Entry> find(std::u16string_view name) const {
    const auto found = m_byName.find(foldCase(name));
    return found == m_byName.end() ? nullptr : found->second;
  }

  std::vector<std::shared_ptr<const Entry>> all() const {
    std::vector<std::shared_ptr<const Entry>> entries;
    entries.reserve(m_entries.size());
    for (const auto& [key, entry] : m_entries) { entries.push_back(entry); }
    return entries;
  }

 private:
  /// Plug-ins register tens of functions, so names are made anew each time; the first of several keeps a name.
  void nameAll() {
    m_byName.clear();
    for (const auto& [key, entry] : m_entries) { m_byName.emplace(foldCase(entry->name), entry); }
  }

  std::map<RegistrationKey, std::shared_ptr<const Entry>> m_entries;
  std::map<std::u16string, std::shared_ptr<const Entry>> m_byName;
};

fmx::ErrorCode startScriptForPlugin(const fmx::Text* file, const fmx::Text* script, std::uint8_t control,
                                    const fmx::Data* parameter) {
  try {
    ScriptStart start{of(file), of(script), control, std::nullopt};
    if (parameter != nullptr) { start.parameter = of(parameter); }
    return Registry::instance().startScript(std::move(start));
  } catch (...) {
    // No exception may enter a plug-in; a code is all that this callback can give.
    return Registry::kRefused;
  }
}

fmx::ErrorCode currentEnvironmentForPlugin(fmx::ExprEnv* environment) {
  if (environment == nullptr) { return Registry::kRefused; }
  of(environment) = Registry::instance().currentEnvironment();
  return 0;
}

}  // namespace

struct Registry::State {
  mutable std::mutex lock;
  Shelf<RegisteredFunction> functions;
  Shelf<RegisteredStep> steps;
  Evaluator evaluator;
  ScriptHook scriptHook;
  std::vector<ScriptStart> scriptStarts;
  Environment environment;
};

Registry::Registry() : m_state(std::make_unique<State>()) {}
Registry::~Registry() = default;

Registry& Registry::instance() {
  // Never destroyed: plug-ins that are unloaded while the process ends still unregister.
  static auto* registry = new Registry;
  return *registry;
}

fmx::ErrorCode Registry::registerFunction(RegisteredFunction function) {
  const bool possible = function.minArgs >= 0 && (function.maxArgs == -1 || function.maxArgs >= function.minArgs);
  if (!possible || function.name.empty() || function.function == nullptr) { return kRefused; }
  const std::lock_guard guard(m_state->lock);
  return m_state->functions.put(std::move(function));
}

fmx::ErrorCode Registry::registerStep(RegisteredStep step) {
  if (step.name.empty() || step.function == nullptr) { return kRefused; }
  const std::lock_guard guard(m_state->lock);
  return m_state->steps.put(std::move(step));
}

fmx::ErrorCode Registry::unregisterFunction(RegistrationKey key) {
  const std::lock_guard guard(m_state->lock);
  return m_state->functions.remove(key);
}

fmx::ErrorCode Registry::unregisterStep(RegistrationKey key) {
  const std::lock_guard guard(m_state->lock);
  return m_state->steps.remove(key);
}

std::shared_ptr<const RegisteredFunction> Registry::function(std::u16string_view name) const {
  const std::lock_guard guard(m_state->lock);
  return m_state->functions.find(name);
}

std::shared_ptr<const RegisteredStep> Registry::step(std::u16string_view name) const {
  const std::lock_guard guard(m_state->lock);
  return m_state->steps.find(name);
}

std::vector<std::shared_ptr<const RegisteredFunction>> Registry::functions() const {
  const std::lock_guard guard(m_state->lock);
  return m_state->functions.all();
}

std::vector<std::shared_ptr<const RegisteredStep>> Registry::steps() const {
  const std::lock_guard guard(m_state->lock);
  return m_state->steps.all();
}

void Registry::setEvaluator(Evaluator evaluator) {
  const std::lock_guard guard(m_state->lock);
  m_state->evaluator = std::move(evaluator);
}

fmx::ErrorCode Registry::evaluate(const Environment& environment, std::u16string_view expression, Value& result) const {
  // Copied out of the lock, as the calculation may call functions that register others.
  Evaluator evaluator;
  {
    const std::lock_guard guard(m_state->lock);
    evaluator = m_state->evaluator;
  }
  return evaluator ? evaluator(environment, expression, result) : kRefused;
}

void Registry::setScriptHook(ScriptHook hook) {
  const std::lock_guard guard(m_state->lock);
  m_state->scriptHook = std::move(hook);
}

fmx::ErrorCode Registry::startScript(ScriptStart start) {
  ScriptHook hook;
  {
    const std::lock_guard guard(m_state->lock);
    if (!m_state->scriptHook) {
      m_state->scriptStarts.push_back(std::move(start));
      return 0;
    }
    hook = m_state->scriptHook;
  }
  return hook(start);
}

std::vector<ScriptStart> Registry::takeScriptStarts() {
  const std::lock_guard guard(m_state->lock);
  return std::exchange(m_state->scriptStarts, {});
}

Environment Registry::currentEnvironment() const {
  const std::lock_guard guard(m_state->lock);
  return m_state->environment;
}

void Registry::setCurrentEnvironment(Environment environment) {
  const std::lock_guard guard(m_state->lock);
  m_state->environment = environment;
}

fmx::StartScript Registry::startScriptCallback() noexcept { return startScriptForPlugin; }
fmx::CurrentEnvironment Registry::currentEnvironmentCallback() noexcept { return currentEnvironmentForPlugin; }

}  // namespace orlocal::host
