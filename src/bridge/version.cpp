#include <string_view>

#include "backend/error_codes.h"
#include "bridge/function_table.h"
#include "bridge/plugin_error.h"
#include "platform/host/data.h"

namespace orlocal {
namespace {

constexpr const char* kVersion = "3.0.0.1";
constexpr const char* kNameAndVersion = "Orlocal 3.0.0.1";
constexpr std::u16string_view kShort = u"SHORT";

/// `scratch` serves for the upper-cased copy.
bool asksForShortForm(const fmx::Text* argument, HostText& scratch) {
  scratch.assign(argument);
  scratch.uppercase();
  return scratch == kShort;
}

}  // namespace

fmx::ErrorCode Orlo_Version(std::int16_t, const fmx::ExprEnv*, const fmx::DataVect* values, fmx::Data* result) {
  const HostArguments arguments(values);
  ClearError();
  g_llasterror = 0;
  HostText version;
  if (arguments.size() == 0) {
    version.assign(kVersion);
    const HostLocale systemLocale(fmx::kLocaleSystem);
    setText(result, version, systemLocale.get());
  } else {
    version.assign(asksForShortForm(arguments.textAt(0), version) ? kVersion : kNameAndVersion);
    setText(result, version, arguments.localeAt(0));
  }
  return 0;
}

}  // namespace orlocal
