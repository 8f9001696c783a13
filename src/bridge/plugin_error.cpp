#include "bridge/plugin_error.h"

#include "backend/value_texts.h"
#include "bridge/error_messages.h"
#include "bridge/state.h"

namespace orlocal {

void orlo_PluginError::clearError() {
  errorID = 0;
  sysID = 0;
  extendedError.reset();
  strError.reset();
}

std::string orlo_PluginError::getError() const {
  // A clear error says "Success", the message of code 0 is "SUCCESS": callers know both spellings.
  if (!strError) { return errorID != 0 ? kErrorText : "Success"; }
  std::string text(*strError);
  if (extendedError) { text.append(" ").append(*extendedError); }
  return text;
}

std::string orlo_PluginError::getErrorNumber() const { return std::to_string(errorID); }

void orlo_PluginError::setError(std::int32_t code, std::int32_t sysError, const OptionalText& extDesc) {
  clearError();
  errorID = code;
  sysID = sysError;
  extendedError = extDesc;
  strError = messageFor(code);
}

void ClearError() {
  if (error != nullptr) { error->clearError(); }
}

}  // namespace orlocal
