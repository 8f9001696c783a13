#include "host/plugin/update_script.h"

#include "host/fmwrapper/call.h"
#include "host/fmwrapper/unicode.h"

namespace orlocal::host {

namespace {

constexpr const char* kSymbol = "Orlo_RegisterUpdateScript";
constexpr std::u16string_view kName = u"Orlo_RegisterUpdateScript";
constexpr std::string_view kNoError = "Success";

/// Why the last call failed; empty when it did not, or when the plug-in does not tell.
PluginResult<std::string> lastError() {
  const auto function = Registry::instance().function(u"Orlo_GetLastError");
  if (!function) return std::string();
  const CallResult reason = callFunction(*function, {});
  if (!reason) return tl::unexpected(reason.error());
  return reason->utf8() == kNoError ? std::string() : reason->utf8();
}

}  // namespace

PluginResult<void> registerUpdateScript(const Plugin& plugin, std::string_view file, std::string_view script) {
  RegisteredFunction function;
  function.name = kName;
  function.minArgs = function.maxArgs = 2;
  function.function = reinterpret_cast<fmx::ExternalFunction>(plugin.symbol(kSymbol));
  if (function.function == nullptr) {
    return tl::unexpected(plugin.file().string() + " has no " + kSymbol + ", so it cannot tell of calendar changes.");
  }
  const CallResult called = callFunction(function, {Value::ofUtf8(file), Value::ofUtf8(script)});
  if (!called) return tl::unexpected(called.error());
  // The result stays empty even when the calendars cannot be followed; only the last error tells.
  const auto reason = lastError();
  if (!reason) return tl::unexpected(reason.error());
  if (!reason->empty()) return tl::unexpected(std::string(kSymbol) + " failed: " + *reason);
  return {};
}

}  // namespace orlocal::host
