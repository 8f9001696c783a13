#pragma once

#include <cstdint>

#include "platform/host/text.h"
#include "platform/host/values.h"

namespace orlocal {

/// A value of the host that we own, such as a script's parameter. Empty when made.
class HostData : public HostOwned<fmx::Data, &fmx::FM_Data_Delete> {
 public:
  HostData() : HostOwned(hostCall<fmx::FM_Data_Constructor1>()) {}
};

/// Arguments for a call of our own. Empty when made.
class HostDataVect : public HostOwned<fmx::DataVect, &fmx::FM_DataVect_Delete> {
 public:
  HostDataVect() : HostOwned(hostCall<fmx::FM_DataVect_Constructor1>()) {}
  /// Puts a copy behind the others.
  void pushBack(const HostData& value) { hostCall<fmx::FM_DataVect_PushBack>(get(), value.get()); }
};

/// The arguments of a call; the host's.
class HostArguments {
 public:
  explicit HostArguments(const fmx::DataVect* values)
      : m_values(values), m_size(hostCall<fmx::FM_DataVect_Size>(values)) {}

  std::uint32_t size() const { return m_size; }

  // Borrowed from the arguments. `position` is below `size()`.
  const fmx::Text* textAt(std::uint32_t position) const {
    return hostCall<fmx::FM_DataVect_AtAsText>(m_values, position);
  }
  const fmx::FixPt* numberAt(std::uint32_t position) const {
    return hostCall<fmx::FM_DataVect_AtAsNumber>(m_values, position);
  }
  const fmx::DateTime* timeStampAt(std::uint32_t position) const {
    return hostCall<fmx::FM_DataVect_AtAsTimeStamp>(m_values, position);
  }
  const fmx::Locale* localeAt(std::uint32_t position) const {
    return hostCall<fmx::FM_Data_GetLocale>(hostCall<fmx::FM_DataVect_At>(m_values, position));
  }

 private:
  const fmx::DataVect* m_values;
  std::uint32_t m_size;
};

// What a function stores into a value of the host, mostly its result.

inline void setText(fmx::Data* data, const HostText& text, const fmx::Locale* locale) {
  hostCall<fmx::FM_Data_SetAsText>(data, text.get(), locale, fmx::kText);
}
/// With the value's own locale.
inline void setText(fmx::Data* data, const HostText& text) {
  setText(data, text, hostCall<fmx::FM_Data_GetLocale>(data));
}
inline void setNumber(fmx::Data* data, const HostNumber& number) {
  hostCall<fmx::FM_Data_SetAsNumber>(data, number.get(), fmx::kNumber);
}
inline void setDate(fmx::Data* data, const HostDateTime& value) {
  hostCall<fmx::FM_Data_SetAsDate>(data, value.get(), fmx::kDate);
}
inline void setTimeStamp(fmx::Data* data, const HostDateTime& value) {
  hostCall<fmx::FM_Data_SetAsTimeStamp>(data, value.get(), fmx::kTimeStamp);
}

}  // namespace orlocal
