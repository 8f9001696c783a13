#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

#include "base/result.h"
#include "host/fmwrapper/call.h"
#include "platform/host/fm_api.h"

namespace orlocal::host {

/// What the host says of itself when it starts a plug-in.
struct HostDescription {
  std::int16_t extensionVersion = 62;
  std::u16string versionText = u"Orlocal 3.0";  ///< start-up hands out its address, NUL-ended
  std::uint8_t applicationKind = 0;
};

/// A plug-in file in this process, talked to through its entry point only.
///
/// One thread, the main one. A failure names the file and says what to do. What the plug-in registers goes to the
/// process-wide Registry. The interface's functions are found in the `libFMWrapper.so` that this program has loaded
/// already. Destruction shuts a started plug-in down and lets its file go.
class Plugin {
 public:
  /// Strings that every plug-in answers.
  static constexpr std::uint8_t kNameString = 128;
  static constexpr std::uint8_t kSettingsString = 129;
  static constexpr std::uint8_t kOptionsString = 131;
  static constexpr std::uint8_t kHelpString = 132;

  /// Loads the file and finds its entry point; sends nothing yet, as strings may be asked before start-up.
  static Result<std::unique_ptr<Plugin>> open(const std::filesystem::path& file, HostDescription host = {});

  /// Loads the file and starts it.
  static Result<std::unique_ptr<Plugin>> load(const std::filesystem::path& file, HostDescription host = {});

  ~Plugin();
  Plugin(const Plugin&) = delete;
  Plugin& operator=(const Plugin&) = delete;

  const std::filesystem::path& file() const noexcept { return m_file; }

  /// Start-up; may be sent again. Gives the interface version that the plug-in speaks; an error when the plug-in says
  /// that it is not for this host, or answers no version.
  Result<std::int16_t> start();
  /// Shutdown; may be sent without start-up or twice. An exception that leaves the plug-in is the error.
  Status shutdown();
  /// `level` 0 is the ordinary idle time.
  Status idle(std::uint8_t level = 0);
  /// Any other message, with no parameters.
  Status send(std::uint8_t message);

  /// A string of the plug-in; "" for one that it does not have or that does not fit. `capacity` counts UTF-16 units
  /// with the terminator.
  Result<std::u16string> getString(std::uint8_t id, std::uint32_t capacity = 4096);

  /// The address of an exported symbol; null when there is none of that name. Valid as long as this.
  void* symbol(const char* name) const noexcept;

  /// The four characters that name the plug-in, from its options string; 0 when that is malformed.
  std::uint32_t pluginId();

  /// The record that the plug-in was last called with; it stays in place as long as the plug-in.
  const fmx::ExternCall& record() const noexcept { return *m_record; }

 private:
  Plugin(std::filesystem::path file, HostDescription host);
  Status enter(std::uint8_t message, std::uint8_t parm1, std::uintptr_t parm2, std::uintptr_t parm3,
               std::uintptr_t result);

  std::filesystem::path m_file;
  HostDescription m_host;
  void* m_library = nullptr;
  void (*m_entry)(fmx::ExternCall*) = nullptr;
  std::unique_ptr<fmx::ExternCall> m_record;
  bool m_started = false;
};

}  // namespace orlocal::host
