#include "host/plugin/update_script.h"

#include "base/translation.h"
#include "base/try.h"
#include "host/fmwrapper/call.h"
#include "host/fmwrapper/unicode.h"

namespace orlocal::host {

namespace {

constexpr const char* kSymbol = "Orlo_RegisterUpdateScript";
constexpr std::u16string_view kName = u"Orlo_RegisterUpdateScript";
constexpr std::string_view kNoError = "Success";

/// Why the last call failed; empty when it did not, or when the plug-in does not tell.
Result<std::string> lastError() {
  const auto function = Registry::instance().function(u"Orlo_GetLastError");
  if (!function) { return std::string(); }
  ORLOCAL_TRY(const Value reason, callFunction(*function, {}));
  return reason.utf8() == kNoError ? std::string() : reason.utf8();
}

}  // namespace

Status registerUpdateScript(const Plugin& plugin, std::string_view file, std::string_view script) {
  RegisteredFunction function;
  function.name = kName;
  function.minArgs = function.maxArgs = 2;
  function.function = reinterpret_cast<fmx::ExternalFunction>(plugin.symbol(kSymbol));
  if (function.function == nullptr) {
    return failure(ErrorCode::kUnsupported,
                   tr("{} has no {}, so it cannot tell of calendar changes.", plugin.file().string(), kSymbol));
  }
  ORLOCAL_CHECK(callFunction(function, {Value::ofUtf8(file), Value::ofUtf8(script)}));
  // The result stays empty even when the calendars cannot be followed; only the last error tells.
  ORLOCAL_TRY(const std::string reason, lastError());
  if (!reason.empty()) { return failure(ErrorCode::kRefused, tr("{} failed: {}", kSymbol, reason)); }
  return {};
}

}  // namespace orlocal::host
