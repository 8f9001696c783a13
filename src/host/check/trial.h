#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "host/fmwrapper/registry.h"
#include "host/plugin/plugin.h"

namespace orlocal::host::check {

using Functions = std::vector<std::shared_ptr<const RegisteredFunction>>;
using Steps = std::vector<std::shared_ptr<const RegisteredStep>>;

/// A check at work, in a process of its own: what it may use, and what it has found.
///
/// A check goes on after a failure as far as that makes sense; the first few are told.
class Trial {
 public:
  struct Setting {
    std::filesystem::path plugin;
    std::filesystem::path folder;  ///< empty, and the check's own; home folder and store lie there
    std::uint64_t seed = 1;
  };
  using Tell = std::function<void(std::string_view)>;

  /// `tell` hears of each step, so that a crash or a hang has a place.
  Trial(Setting setting, Tell tell)
      : m_setting(std::move(setting)), m_tell(std::move(tell)), m_random(m_setting.seed) {}

  const std::filesystem::path& plugin() const { return m_setting.plugin; }
  const std::filesystem::path& folder() const { return m_setting.folder; }
  std::mt19937_64& random() { return m_random; }
  /// One of 0 to `count` - 1.
  std::size_t below(std::size_t count) { return static_cast<std::size_t>(m_random() % count); }

  /// What is being done.
  void step(const std::string& what) { m_tell(what); }
  void fail(std::string why);
  /// Fails with the sentence unless it holds; gives whether it does.
  bool expect(bool holds, std::string_view sentence);
  /// Does not apply to this plug-in or this machine.
  void skip(std::string why) { m_skipped = std::move(why); }

  bool failed() const { return !m_failures.empty(); }
  const std::vector<std::string>& failures() const { return m_failures; }
  const std::optional<std::string>& skipped() const { return m_skipped; }

  /// Null, and failed, when it cannot be.
  std::unique_ptr<Plugin> opened(HostDescription host = {});
  std::unique_ptr<Plugin> opened(const std::filesystem::path& file, HostDescription host = {});
  std::unique_ptr<Plugin> started(HostDescription host = {});

  /// What is registered now; fails without a function.
  Functions functions();
  static Steps steps() { return Registry::instance().steps(); }

  /// Starts the plug-in and hands over each of its functions.
  void forEachFunction(const std::function<void(const RegisteredFunction&)>& use);

  /// Calls it whatever its argument counts are; fails when an exception leaves it. Gives the result, null then.
  std::optional<Value> call(const RegisteredFunction& function, const std::vector<Value>& arguments);

 private:
  Setting m_setting;
  Tell m_tell;
  std::mt19937_64 m_random;
  std::vector<std::string> m_failures;
  std::optional<std::string> m_skipped;
};

/// Names of functions and steps are the same in capitals and small letters (ASCII's).
std::string smallLetters(std::string text);

std::size_t fewestArguments(const RegisteredFunction& function);
/// A dozen, or the fewest if they are more, of one that takes any number.
std::size_t mostArguments(const RegisteredFunction& function);

/// "Orlo_GetProperty (155)" for messages.
std::string nameOf(const RegisteredFunction& function);

}  // namespace orlocal::host::check
