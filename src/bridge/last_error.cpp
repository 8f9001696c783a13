#include "backend/error_codes.h"
#include "backend/legacy/ical_functions.h"
#include "bridge/conversions.h"
#include "bridge/function_table.h"
#include "bridge/plugin_error.h"
#include "bridge/state.h"
#include "platform/host/data.h"

namespace orlocal {

// Outside the call frame: it must not clear what it is asked to report.
fmx::ErrorCode Orlo_GetLastError(std::int16_t, const fmx::ExprEnv*, const fmx::DataVect* values, fmx::Data* result) {
  HostNumber number;
  HostText text;
  const HostArguments arguments(values);
  const OptionalText form = textArgument(arguments, 0);
  if (form && lowercase(*form) != "text") {
    number.assign(static_cast<std::int32_t>(g_llasterror));
    setNumber(result, number);
    return 0;
  }
  // Only the older back end is asked for words of its own; under the other its reason stays unsaid.
  const OptionalText reason = g_sharedFunctions != nullptr ? g_sharedFunctions->getLastErrorString() : std::nullopt;
  if (reason) {
    text.assignUnicode(std::string_view(*reason));
  } else if (error != nullptr) {
    text.assign(error->getError().c_str());
  }
  setText(result, text);
  return 0;
}

}  // namespace orlocal
