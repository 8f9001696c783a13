#include "notify/script_host.h"

#include <chrono>
#include <memory>

#include "bridge/plugin_error.h"
#include "host/fmwrapper/value.h"

namespace orlocal::test {
namespace {

ScriptHost* g_host = nullptr;

std::string textOrEmpty(const fmx::Text* text) { return textOf(text).value_or(""); }

}  // namespace

ScriptHost::ScriptHost() : m_platform(std::make_shared<fakes::FakePlatform>()) {
  g_host = this;
  m_record.cStartScript = &startScript;
  gFMX_ExternCallPtr = &m_record;
  // The thread's loop outlives the test; the pointer only borrows it.
  m_platform->m_runLoop = std::shared_ptr<RunLoop>(std::shared_ptr<RunLoop>(), &currentThreadRunLoop());
  m_platform->m_notificationCenter =
      std::make_shared<LinuxNotificationCenter>([this](bool listen) { listening.push_back(listen); });
  setPlatform(m_platform);
  static orlo_PluginError s_error;
  s_error.clearError();
  error = &s_error;
  g_llasterror = 0;
  g_sharedFunctions = nullptr;
}

ScriptHost::~ScriptHost() {
  delete listener;
  listener = nullptr;
  setPlatform(nullptr);
  error = nullptr;
  gFMX_ExternCallPtr = nullptr;
  g_host = nullptr;
}

fmx::ErrorCode ScriptHost::startScript(const fmx::Text* file, const fmx::Text* script, std::uint8_t control,
                                       const fmx::Data* parameter) {
  fmx::Exception x;
  g_host->started.push_back({textOrEmpty(file), textOrEmpty(script), textOrEmpty(fmx::FM_Data_GetAsText(parameter, &x)),
                             control, std::this_thread::get_id()});
  if (g_host->duringStart) { g_host->duringStart(); }
  return g_host->answer;
}

void ScriptHost::waitForStarts(std::size_t count) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (started.size() < count && std::chrono::steady_clock::now() < deadline) {
    loop().runFor(std::chrono::milliseconds(5));
  }
}

std::vector<std::string> ScriptHost::parameters() const {
  std::vector<std::string> all;
  for (const auto& start : started) { all.push_back(start.parameter); }
  return all;
}

std::shared_ptr<const Notification> changed(std::vector<std::string> inserted, std::vector<std::string> updated,
                                            std::vector<std::string> deleted) {
  auto notification = std::make_shared<Notification>();
  notification->name = kCalEventsChangedExternallyNotification;
  const auto put = [&](std::string_view key, std::vector<std::string>& records) {
    if (!records.empty()) { notification->userInfo.emplace(key, std::move(records)); }
  };
  put(kCalInsertedRecordsKey, inserted);
  put(kCalUpdatedRecordsKey, updated);
  put(kCalDeletedRecordsKey, deleted);
  return notification;
}

Registration registerScript(const std::vector<std::string>& arguments) {
  fmx::Exception x;
  fmx::ExprEnv* environment = fmx::FM_ExprEnv_Constructor1(&x);
  fmx::DataVect* values = fmx::FM_DataVect_Constructor1(&x);
  for (const auto& argument : arguments) {
    const HostText text;
    const std::u16string units = utf16FromUtf8(argument);
    hostCall<fmx::FM_Text_AssignUnicodeWithLength>(text.get(), units.data(), static_cast<std::uint32_t>(units.size()));
    const HostData data;
    setText(data.get(), text);
    fmx::FM_DataVect_PushBack(values, data.get(), &x);
  }
  const HostData result;
  const auto release = [&] {
    fmx::FM_DataVect_Delete(values, &x);
    fmx::FM_ExprEnv_Delete(environment, &x);
  };
  Registration registration;
  try {
    registration.status = Orlo_RegisterUpdateScript(0, environment, values, result.get());
  } catch (...) {
    release();
    throw;
  }
  registration.result = textOrEmpty(fmx::FM_Data_GetAsText(result.get(), &x));
  release();
  return registration;
}

}  // namespace orlocal::test
