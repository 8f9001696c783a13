#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "platform/host/call.h"
#include "platform/text.h"

namespace orlocal {

/// UTF-16 units: short texts on the stack, longer ones on the heap.
class UnitBuffer {
 public:
  explicit UnitBuffer(std::size_t size) {
    if (size > m_short.size()) { m_long = std::make_unique_for_overwrite<char16_t[]>(size); }
  }
  char16_t* data() { return m_long ? m_long.get() : m_short.data(); }

 private:
  std::array<char16_t, 256> m_short;
  std::unique_ptr<char16_t[]> m_long;
};

/// A text of the host that we own. Empty when made.
class HostText : public HostOwned<fmx::Text, &fmx::FM_Text_Delete> {
 public:
  HostText() : HostOwned(hostCall<fmx::FM_Text_Constructor1>()) {}

  /// NUL-ended bytes in the system's encoding.
  void assign(const char* bytes) { hostCall<fmx::FM_Text_Assign>(get(), bytes, fmx::kEncodingNative); }
  void assignUtf8(const char* bytes) { hostCall<fmx::FM_Text_Assign>(get(), bytes, fmx::kEncodingUtf8); }
  /// NUL-ended UTF-16.
  void assignUnicode(const char16_t* units) { hostCall<fmx::FM_Text_AssignUnicode>(get(), units); }
  /// UTF-8, up to its first NUL, by way of UTF-16.
  void assignUnicode(std::string_view text) {
    UnitBuffer units(text.size() + 1);
    unsigned char seen = 0;
    char16_t* end = units.data();
    for (const char c : text) {
      const auto byte = static_cast<unsigned char>(c);
      seen = static_cast<unsigned char>(seen | byte);
      *end++ = byte;
    }
    *end = u'\0';
    assignUnicode(seen < 0x80 ? units.data() : utf16FromUtf8(text).c_str());
  }
  /// All of `other`.
  void assign(const fmx::Text* other) { hostCall<fmx::FM_Text_SetText>(get(), other, 0U, fmx::kSizeEnd); }

  void uppercase() { hostCall<fmx::FM_Text_Uppercase>(get()); }
  bool operator==(std::u16string_view text) const {
    const auto size = hostCall<fmx::FM_Text_GetSize>(get());
    if (size != text.size()) { return false; }
    UnitBuffer units(size);
    hostCall<fmx::FM_Text_GetUnicode>(get(), units.data(), 0U, size);
    return std::u16string_view(units.data(), size) == text;
  }

  /// Deletes from the first `separator` to the end; leaves a text without one as it is.
  void cutAt(const HostText& separator) {
    const auto position = hostCall<fmx::FM_Text_Find>(get(), separator.get(), 0U);
    if (position != fmx::kSizeInvalid) { hostCall<fmx::FM_Text_DeleteText>(get(), position, fmx::kSizeEnd); }
  }
};

inline bool isEmpty(const fmx::Text* text) { return hostCall<fmx::FM_Text_GetSize>(text) == 0; }

/// The text as UTF-8, copied through UTF-16; none when it is empty.
inline OptionalText textOf(const fmx::Text* text) {
  OptionalText utf8;
  const auto size = hostCall<fmx::FM_Text_GetSize>(text);
  if (size == 0) { return utf8; }
  UnitBuffer units(size);
  hostCall<fmx::FM_Text_GetUnicode>(text, units.data(), 0U, size);
  const std::u16string_view all(units.data(), size);
  if (isAscii(all)) {
    utf8.emplace(all.begin(), all.end());
  } else {
    utf8 = utf8FromUtf16(all);
  }
  return utf8;
}

}  // namespace orlocal
