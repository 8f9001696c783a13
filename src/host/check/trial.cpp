#include "host/check/trial.h"

#include <algorithm>
#include <exception>

#include <fmt/format.h>

#include "base/text.h"
#include "host/fmwrapper/handles.h"
#include "host/fmwrapper/unicode.h"

namespace orlocal::host::check {

void Trial::fail(std::string why) {
  constexpr std::size_t kTold = 3;
  if (m_failures.size() < kTold) { m_failures.push_back(std::move(why)); }
}

bool Trial::expect(bool holds, std::string_view sentence) {
  if (!holds) { fail(std::string(sentence)); }
  return holds;
}

std::unique_ptr<Plugin> Trial::opened(const std::filesystem::path& file, HostDescription host) {
  auto plugin = Plugin::open(file, std::move(host));
  if (!plugin) {
    fail(plugin.error().message);
    return nullptr;
  }
  return *std::move(plugin);
}

std::unique_ptr<Plugin> Trial::opened(HostDescription host) { return opened(m_setting.plugin, std::move(host)); }

std::unique_ptr<Plugin> Trial::started(HostDescription host) {
  auto plugin = opened(std::move(host));
  if (plugin == nullptr) { return nullptr; }
  if (const auto version = plugin->start(); !version) {
    fail(version.error().message);
    return nullptr;
  }
  return plugin;
}

Functions Trial::functions() {
  auto functions = Registry::instance().functions();
  expect(!functions.empty(), "it registered no function.");
  return functions;
}

void Trial::forEachFunction(const std::function<void(const RegisteredFunction&)>& use) {
  const auto plugin = started();
  if (plugin == nullptr) { return; }
  for (const auto& function : functions()) { use(*function); }
}

std::optional<Value> Trial::call(const RegisteredFunction& function, const std::vector<Value>& arguments) {
  Value result;
  const Environment environment = Registry::instance().currentEnvironment();
  try {
    function.function(function.key.id, handleOf<fmx::ExprEnv>(environment), handleOf<fmx::DataVect>(arguments),
                      handleOf<fmx::Data>(result));
    return result;
  } catch (const std::exception& exception) {
    fail(fmt::format("an exception left {} with {} arguments: {}.", nameOf(function), arguments.size(),
                     exception.what()));
  } catch (...) {
    fail(fmt::format("an exception of an unknown kind left {} with {} arguments.", nameOf(function), arguments.size()));
  }
  return std::nullopt;
}

std::string smallLetters(std::string text) {
  for (char& c : text) { c = asciiLower(c); }
  return text;
}

std::size_t fewestArguments(const RegisteredFunction& function) { return static_cast<std::size_t>(function.minArgs); }

std::size_t mostArguments(const RegisteredFunction& function) {
  constexpr std::size_t kAny = 12;
  return function.maxArgs < 0 ? std::max(kAny, fewestArguments(function)) : static_cast<std::size_t>(function.maxArgs);
}

std::string nameOf(const RegisteredFunction& function) {
  return fmt::format("{} ({})", toUtf8(function.name), function.key.id);
}

}  // namespace orlocal::host::check
