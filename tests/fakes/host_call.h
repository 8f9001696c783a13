#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "platform/host/data.h"

namespace orlocal::fakes {

/// A wall clock to pass as an argument.
struct WallClock {
  std::int16_t year, month, day, hour = 0, minute = 0, second = 0;
};

/// What a test passes for "no value at all" between other arguments: an empty text.
inline constexpr std::string_view kEmpty = "";

/// One call of an external function as a host makes it: arguments in order, then `call`, then look at the result.
class HostCall {
 public:
  HostCall() : m_arguments(hostCall<fmx::FM_DataVect_Constructor1>()) {}
  ~HostCall() { hostCall<fmx::FM_DataVect_Delete>(m_arguments); }
  HostCall(const HostCall&) = delete;
  HostCall& operator=(const HostCall&) = delete;

  void add(std::string_view text) {
    HostText hostText;
    hostText.assignUnicode(utf16FromUtf8(text).c_str());
    HostData data;
    setText(data.get(), hostText);
    push(data);
  }
  void add(const char* text) { add(std::string_view(text)); }
  void add(std::int32_t number) {
    HostNumber hostNumber;
    hostNumber.assign(number);
    HostData data;
    setNumber(data.get(), hostNumber);
    push(data);
  }
  void add(const WallClock& clock) {
    HostDateTime value;
    value.setDate(clock.year, clock.month, clock.day);
    value.setTime(clock.hour, clock.minute, clock.second);
    HostData data;
    setTimeStamp(data.get(), value);
    push(data);
  }

  fmx::ErrorCode call(fmx::ExternalFunction function) { return function(0, nullptr, m_arguments, m_result.get()); }

  const fmx::DataVect* arguments() const { return m_arguments; }
  fmx::Data* result() { return m_result.get(); }

  std::int32_t type() const { return hostCall<fmx::FM_Data_GetNativeType>(m_result.get()); }
  bool isEmpty() const { return hostCall<fmx::FM_Data_IsEmpty>(m_result.get()); }
  std::string text() const { return textOf(hostCall<fmx::FM_Data_GetAsText>(m_result.get())).value_or(""); }
  std::int32_t number() const { return numberOf(hostCall<fmx::FM_Data_GetAsNumber>(m_result.get())); }
  HostDateTimeParts date() const { return partsOf(hostCall<fmx::FM_Data_GetAsDate>(m_result.get())); }
  HostDateTimeParts timeStamp() const { return partsOf(hostCall<fmx::FM_Data_GetAsTimeStamp>(m_result.get())); }

  /// The result with its type, such as `number 0`, `text !!ERROR!!`, `date 2026-11-02` or `empty`.
  std::string shown() const;

 private:
  void push(const HostData& data) { hostCall<fmx::FM_DataVect_PushBack>(m_arguments, data.get()); }

  fmx::DataVect* m_arguments;
  HostData m_result;
};

/// The shown result of `function` called with these arguments.
template <class... Arguments>
std::string callWith(fmx::ExternalFunction function, const Arguments&... arguments) {
  HostCall call;
  (call.add(arguments), ...);
  const auto status = call.call(function);
  return status == 0 ? call.shown() : "host error " + std::to_string(status);
}

}  // namespace orlocal::fakes
