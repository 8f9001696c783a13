#include "host/plugin/plugin.h"

#include <algorithm>
#include <exception>
#include <system_error>
#include <utility>
#include <vector>

#include <dlfcn.h>

#include "base/try.h"
#include "host/fmwrapper/registry.h"
#include "host/fmwrapper/unicode.h"

namespace orlocal::host {

namespace {

constexpr const char* kEntryName = "FMExternCallProc";

Failed pluginFailure(ErrorCode code, const std::filesystem::path& file, const std::string& sentence) {
  return failure(code, file.string() + " " + sentence);
}

/// Where the object that holds `address` is mapped; null when none does.
void* objectOf(const void* address) {
  Dl_info info{};
  return dladdr(address, &info) != 0 ? info.dli_fbase : nullptr;
}

/// A function pointer as the address that the loader knows.
template <class Function>
const void* addressOf(Function* function) {
  return reinterpret_cast<const void*>(function);
}

/// Takes out of the registry what points into an object.
void forgetEntriesOf(const void* object) {
  Registry& registry = Registry::instance();
  for (const auto& function : registry.functions()) {
    if (objectOf(addressOf(function->function)) == object) { registry.unregisterFunction(function->key); }
  }
  for (const auto& step : registry.steps()) {
    if (objectOf(addressOf(step->function)) == object) { registry.unregisterStep(step->key); }
  }
}

}  // namespace

Plugin::Plugin(std::filesystem::path file, HostDescription host)
    : m_file(std::move(file)), m_host(std::move(host)), m_record(std::make_unique<fmx::ExternCall>()) {}

Result<std::unique_ptr<Plugin>> Plugin::open(const std::filesystem::path& file, HostDescription host) {
  std::error_code error;
  if (!std::filesystem::exists(file, error)) {
    return pluginFailure(ErrorCode::kNotFound, file, "does not exist; name the plug-in's file with --plugin.");
  }
  if (std::filesystem::is_directory(file, error)) {
    return pluginFailure(ErrorCode::kInvalid, file, "is a folder; a plug-in is a single file here.");
  }
  std::unique_ptr<Plugin> plugin(new Plugin(file, std::move(host)));
  // With its folder named, so that the loader does not search its own places.
  const auto path = std::filesystem::absolute(file, error);
  plugin->m_library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (plugin->m_library == nullptr) {
    const char* reason = dlerror();
    return pluginFailure(ErrorCode::kUnsupported, file,
                         "cannot be loaded: " + std::string(reason != nullptr ? reason : "no reason given") +
                             ". Check that it was built for this system and that the libraries it names are there.");
  }
  plugin->m_entry = reinterpret_cast<void (*)(fmx::ExternCall*)>(dlsym(plugin->m_library, kEntryName));
  if (plugin->m_entry == nullptr) {
    dlclose(plugin->m_library);
    return pluginFailure(
        ErrorCode::kUnsupported, file,
        "has no entry point " + std::string(kEntryName) + ", so it is not a plug-in; name another file.");
  }
  return plugin;
}

Result<std::unique_ptr<Plugin>> Plugin::load(const std::filesystem::path& file, HostDescription host) {
  ORLOCAL_TRY(auto plugin, open(file, std::move(host)));
  ORLOCAL_CHECK(plugin->start());
  return plugin;
}

Plugin::~Plugin() {
  if (m_entry == nullptr) { return; }
  // Nobody is left to tell when shutdown fails.
  if (m_started) { static_cast<void>(shutdown()); }
  forgetEntriesOf(objectOf(addressOf(m_entry)));
}

Status Plugin::enter(std::uint8_t message, std::uint8_t parm1, std::uintptr_t parm2, std::uintptr_t parm3,
                     std::uintptr_t result) {
  *m_record = fmx::ExternCall{.extnVersion = m_host.extensionVersion,
                              .unusedID = -1,
                              .entryPoint = m_entry,
                              .unusedFlag = 0,
                              .whichCall = message,
                              .unsafeCalls = 0,
                              .parm1 = parm1,
                              .parm2 = parm2,
                              .parm3 = parm3,
                              .instanceID = reinterpret_cast<std::uintptr_t>(m_library),
                              .result = result,
                              .unused = 0,
                              .cStartScript = Registry::startScriptCallback(),
                              .cCurrentEnv = Registry::currentEnvironmentCallback()};
  const auto failed = [&](const std::string& what) {
    return pluginFailure(ErrorCode::kIo, m_file,
                         "failed at the host's message " + std::to_string(message) + " with " + what + ".");
  };
  try {
    m_entry(m_record.get());
    return {};
  } catch (const std::exception& exception) {
    return failed(std::string("an exception: ") + exception.what());
  } catch (...) { return failed("an exception of an unknown kind"); }
}

Result<std::int16_t> Plugin::start() {
  const auto text = reinterpret_cast<std::uintptr_t>(m_host.versionText.c_str());
  ORLOCAL_CHECK(enter(fmx::kCallStartUp, m_host.applicationKind, text, 0, 0));
  const auto reply = static_cast<std::intptr_t>(m_record->result);
  if (reply == -1) {
    return pluginFailure(ErrorCode::kUnsupported, m_file,
                         "is not for a host of extension version " + std::to_string(m_host.extensionVersion) +
                             "; announce another one with --host-version.");
  }
  if (reply <= 0 || reply > INT16_MAX) {
    return pluginFailure(ErrorCode::kUnsupported, m_file,
                         "answered start-up with " + std::to_string(reply) + ", which is no interface version.");
  }
  m_started = true;
  return static_cast<std::int16_t>(reply);
}

Status Plugin::shutdown() {
  m_started = false;
  return send(fmx::kCallShutdown);
}

Status Plugin::idle(std::uint8_t level) {
  return enter(fmx::kCallIdle, level, Registry::instance().currentEnvironment().sessionId, 0, 0);
}

Status Plugin::send(std::uint8_t message) { return enter(message, 0, 0, 0, 0); }

Result<std::u16string> Plugin::getString(std::uint8_t id, std::uint32_t capacity) {
  // Zeroed, so that a string which is not written reads as empty; one unit more ends a string that lacks its
  // terminator.
  std::vector<char16_t> buffer(std::size_t{capacity} + 1);
  const auto address = reinterpret_cast<std::uintptr_t>(buffer.data());
  ORLOCAL_CHECK(enter(fmx::kCallGetString, id, 0, capacity, address));
  return std::u16string(buffer.data());
}

void* Plugin::symbol(const char* name) const noexcept { return dlsym(m_library, name); }

std::uint32_t Plugin::pluginId() {
  constexpr std::size_t kOptionsLength = 11;
  const auto options = getString(kOptionsString);
  if (!options || options->size() != kOptionsLength) { return 0; }
  if (std::any_of(options->begin(), options->begin() + 4, [](char16_t unit) { return unit > 0xFF; })) { return 0; }
  std::uint32_t id = 0;
  for (std::size_t at = 0; at < 4; ++at) { id = id << 8U | (*options)[at]; }
  return id;
}

}  // namespace orlocal::host
