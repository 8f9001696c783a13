#include "host/plugin/plugin.h"

#include <algorithm>
#include <exception>
#include <system_error>
#include <utility>
#include <vector>

#include <dlfcn.h>

#include "base/translation.h"
#include "base/try.h"
#include "host/fmwrapper/registry.h"
#include "host/fmwrapper/unicode.h"

namespace orlocal::host {

namespace {

constexpr const char* kEntryName = "FMExternCallProc";

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
    return failure(ErrorCode::kNotFound,
                   tr("{} does not exist; name the plug-in's file with --plugin.", file.string()));
  }
  if (std::filesystem::is_directory(file, error)) {
    return failure(ErrorCode::kInvalid, tr("{} is a folder; a plug-in is a single file here.", file.string()));
  }
  std::unique_ptr<Plugin> plugin(new Plugin(file, std::move(host)));
  // With its folder named, so that the loader does not search its own places.
  const auto path = std::filesystem::absolute(file, error);
  plugin->m_library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (plugin->m_library == nullptr) {
    const char* reason = dlerror();
    return failure(
        ErrorCode::kUnsupported,
        tr("{} cannot be loaded: {}. Check that it was built for this system and that the libraries it names "
           "are there.",
           file.string(), reason != nullptr ? reason : tr("no reason given")));
  }
  plugin->m_entry = reinterpret_cast<void (*)(fmx::ExternCall*)>(dlsym(plugin->m_library, kEntryName));
  if (plugin->m_entry == nullptr) {
    dlclose(plugin->m_library);
    return failure(ErrorCode::kUnsupported, tr("{} has no entry point {}, so it is not a plug-in; name another file.",
                                               file.string(), kEntryName));
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
    return failure(ErrorCode::kIo, tr("{} failed at the host's message {} with {}.", m_file.string(), message, what));
  };
  try {
    m_entry(m_record.get());
    return {};
  } catch (const std::exception& exception) { return failed(tr("an exception: {}", exception.what())); } catch (...) {
    return failed(tr("an exception of an unknown kind"));
  }
}

Result<std::int16_t> Plugin::start() {
  const auto text = reinterpret_cast<std::uintptr_t>(m_host.versionText.c_str());
  ORLOCAL_CHECK(enter(fmx::kCallStartUp, m_host.applicationKind, text, 0, 0));
  const auto reply = static_cast<std::intptr_t>(m_record->result);
  if (reply == -1) {
    return failure(ErrorCode::kUnsupported,
                   tr("{} is not for a host of extension version {}; announce another one with --host-version.",
                      m_file.string(), m_host.extensionVersion));
  }
  if (reply <= 0 || reply > INT16_MAX) {
    return failure(ErrorCode::kUnsupported,
                   tr("{} answered start-up with {}, which is no interface version.", m_file.string(), reply));
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
