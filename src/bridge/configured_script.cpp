#include "bridge/configured_script.h"

#include <exception>
#include <string>

#include "backend/error_codes.h"
#include "bridge/function_table.h"
#include "bridge/plugin_error.h"
#include "bridge/state.h"
#include "platform/host/data.h"
#include "platform/platform.h"
#include "platform/plugin_settings.h"

namespace orlocal {
namespace {

void registerScript(const PluginSettings::UpdateScript& script) {
  const HostLocale locale(fmx::kLocaleSystem);
  HostDataVect arguments;
  for (const auto& name : {script.file, script.script}) {
    HostText text;
    text.assignUnicode(name);
    const HostData value;
    setText(value.get(), text, locale.get());
    arguments.pushBack(value);
  }
  const HostData result;
  const fmx::ErrorCode status = Orlo_RegisterUpdateScript(0, nullptr, arguments.get(), result.get());
  if (status != 0 || error->getErrorNumber() != "0") {
    platform().log("The script \"" + script.script + "\" of \"" + script.file +
                   "\" will not be started when calendars change: " + error->getError());
  }
  ClearError();
  g_llasterror = 0;
}

}  // namespace

void registerConfiguredScript() {
  static bool registered = false;
  const auto& script = platform().settings().updateScript;
  if (!script || registered) { return; }
  try {
    registerScript(*script);
    registered = true;
  } catch (const std::exception& exception) {
    platform().log(std::string("The update script could not be handed over: ") + exception.what());
  }
}

}  // namespace orlocal
