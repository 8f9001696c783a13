#pragma once

#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>

#include "host/plugin/plugin.h"
#include "platform/host/fm_api.h"

namespace orlocal::bench {

/// One registered function with its arguments made ready, called straight through the C interface as a host does.
class Call {
 public:
  /// Arguments as texts; throws when nothing of that name is registered.
  Call(std::u16string_view function, std::initializer_list<std::u16string_view> arguments);
  Call(fmx::ExternalFunction function, std::initializer_list<std::u16string_view> arguments);
  ~Call();
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;

  /// Replaces the last argument by a number.
  void setLast(std::int32_t number);
  /// Replaces the arguments.
  void setTexts(std::initializer_list<std::u16string_view> arguments);

  void operator()() { m_function(0, m_environment, m_arguments, m_result); }
  /// Calls, and throws with the plug-in's reason when the result is the error sentinel.
  void checked();

  std::int32_t number() const;
  std::u16string text() const;

 private:
  fmx::ExternalFunction m_function;
  fmx::ExprEnv* m_environment;
  fmx::DataVect* m_arguments;
  fmx::Data* m_result;
};

/// What a function of the host's signature does to answer with a text.
void answerWith(std::u16string_view text, fmx::Data* result);

/// The plug-in, started in this process, with the store that the environment names.
std::unique_ptr<host::Plugin> startPlugin(const std::filesystem::path& file);

}  // namespace orlocal::bench
