// Text. Positions and sizes count UTF-16 units and are cut to what is there.
#include <algorithm>
#include <cstring>
#include <functional>
#include <limits>

#include "base/utf.h"
#include "host/fmwrapper/handles.h"
#include "host/fmwrapper/unicode.h"

namespace fmx {

using namespace orlocal::host;

namespace {

bool isUtf8(std::int32_t encoding) { return encoding == kEncodingNative || encoding == kEncodingUtf8; }

void assignBytes(std::u16string& self, std::string_view bytes, std::int32_t encoding) {
  if (isUtf8(encoding)) {
    self = toUtf16(bytes);
  } else if (encoding == kEncodingIso8859_1) {
    self.resize(bytes.size());
    std::transform(bytes.begin(), bytes.end(), self.begin(), [](char c) { return static_cast<unsigned char>(c); });
  } else {
    throw Misuse{};
  }
}

/// ISO 8859-1 of as many characters as fit; a question mark for each that it lacks.
std::size_t encodeLatin(std::u16string_view units, char* buffer, std::size_t room) {
  std::size_t written = 0;
  for (std::size_t at = 0; at < units.size() && written < room;) {
    const char32_t point = orlocal::nextCodePoint(units, at);
    buffer[written++] = point <= 0xFF ? static_cast<char>(static_cast<unsigned char>(point)) : '?';
  }
  return written;
}

std::size_t encode(std::u16string_view units, char* buffer, std::size_t room, std::int32_t encoding) {
  if (buffer == nullptr) { throw Misuse{}; }
  if (isUtf8(encoding)) { return encodeUtf8(units, buffer, room); }
  if (encoding == kEncodingIso8859_1) { return encodeLatin(units, buffer, room); }
  throw Misuse{};
}

/// A place in a text as the interface reports it.
std::uint32_t positionOf(std::size_t place) {
  return place == kNotFound ? kSizeInvalid : static_cast<std::uint32_t>(place);
}

const std::u16string& changeableView(const void* self) { return selfOf<Text>(self); }

template <class Compare>
bool compared(const void* self, const Text* that, Exception* x, Compare compare) noexcept {
  return guarded(x, [&] { return compare(selfOf<Text>(self), of(that)); });
}

/// A text that is declared const and is changed all the same; plug-ins rely on both.
void changeConst(const void* self, std::u16string (*change)(std::u16string_view)) {
  const_cast<std::u16string&>(changeableView(self)) = change(changeableView(self));
}

}  // namespace

FM_FUNCTION Text* FM_Text_Constructor1(Exception* x) {
  return guarded(x, [] { return makeHandle<Text>(); });
}
FM_FUNCTION std::uint32_t FM_Text_GetSize(const void* self, Exception* x) {
  return guarded(x, [&] { return static_cast<std::uint32_t>(selfOf<Text>(self).size()); });
}
FM_FUNCTION void FM_Text_Assign(void* self, const char* s, std::int32_t encoding, Exception* x) {
  guarded(x, [&] {
    if (s == nullptr) { throw Misuse{}; }
    assignBytes(selfOf<Text>(self), s, encoding);
  });
}
FM_FUNCTION void FM_Text_GetBytes(const void* self, char* buffer, std::uint32_t buffersize, std::uint32_t position,
                                  std::uint32_t size, std::int32_t encoding, Exception* x) {
  guarded(x, [&] {
    const std::u16string& text = selfOf<Text>(self);
    if (buffersize == 0) { return; }
    buffer[encode(partOf(text, position, size), buffer, buffersize - 1, encoding)] = '\0';
  });
}
FM_FUNCTION std::uint32_t FM_Text_GetBytesEx(const void* self, char* buffer, std::uint32_t buffersize,
                                             std::uint32_t position, std::uint32_t size, std::int32_t encoding,
                                             Exception* x) {
  return guarded(x, [&] {
    const std::u16string& text = selfOf<Text>(self);
    return static_cast<std::uint32_t>(encode(partOf(text, position, size), buffer, buffersize, encoding));
  });
}
FM_FUNCTION void FM_Text_AssignUnicode(void* self, const char16_t* s, Exception* x) {
  guarded(x, [&] {
    if (s == nullptr) { throw Misuse{}; }
    selfOf<Text>(self).assign(s);
  });
}
FM_FUNCTION void FM_Text_AssignWithLength(void* self, const char* s, std::uint32_t strlength, std::int32_t encoding,
                                          Exception* x) {
  guarded(x, [&] {
    if (s == nullptr && strlength != 0) { throw Misuse{}; }
    assignBytes(selfOf<Text>(self), std::string_view(s, strlength), encoding);
  });
}
FM_FUNCTION void FM_Text_AssignUnicodeWithLength(void* self, const char16_t* s, std::uint32_t strlength, Exception* x) {
  guarded(x, [&] {
    if (s == nullptr && strlength != 0) { throw Misuse{}; }
    selfOf<Text>(self).assign(std::u16string_view(s, strlength));
  });
}
FM_FUNCTION void FM_Text_GetUnicode(const void* self, char16_t* s, std::uint32_t position, std::uint32_t size,
                                    Exception* x) {
  guarded(x, [&] {
    const std::u16string_view part = partOf(selfOf<Text>(self), position, size);
    if (part.empty()) { return; }
    if (s == nullptr) { throw Misuse{}; }
    std::memcpy(s, part.data(), part.size() * sizeof(char16_t));
  });
}
FM_FUNCTION void FM_Text_SetText(void* self, const Text* other, std::uint32_t position, std::uint32_t size,
                                 Exception* x) {
  // A text may be set to, and appended with, a part of itself: assign and append keep such a part safe.
  guarded(x, [&] { selfOf<Text>(self).assign(partOf(of(other), position, size)); });
}
FM_FUNCTION void FM_Text_AppendText(void* self, const Text* other, std::uint32_t position, std::uint32_t size,
                                    Exception* x) {
  guarded(x, [&] { selfOf<Text>(self).append(partOf(of(other), position, size)); });
}
FM_FUNCTION void FM_Text_InsertText(void* self, const Text* other, std::uint32_t position, Exception* x) {
  guarded(x, [&] {
    std::u16string& text = selfOf<Text>(self);
    text.insert(std::min<std::size_t>(position, text.size()), of(other));
  });
}
FM_FUNCTION void FM_Text_DeleteText(void* self, std::uint32_t positionToDelete, std::uint32_t sizeToDelete,
                                    Exception* x) {
  guarded(x, [&] {
    std::u16string& text = selfOf<Text>(self);
    if (positionToDelete < text.size()) { text.erase(positionToDelete, sizeToDelete); }
  });
}
FM_FUNCTION std::uint32_t FM_Text_Find(const void* self, const Text* other, std::uint32_t position, Exception* x) {
  return guarded(x, [&] {
    const std::u16string& what = of(other);
    const std::u16string& text = selfOf<Text>(self);
    return what.empty() ? kSizeInvalid : positionOf(text.find(what, position));
  });
}
FM_FUNCTION std::uint32_t FM_Text_FindPrev(const void* self, const Text* other, std::uint32_t position, Exception* x) {
  return guarded(x, [&] {
    const std::u16string& what = of(other);
    const std::u16string& text = selfOf<Text>(self);
    return what.empty() ? kSizeInvalid : positionOf(text.rfind(what, position));
  });
}
FM_FUNCTION std::uint32_t FM_Text_FindIgnoringCase(const void* self, const Text* other, std::uint32_t position,
                                                   Exception* x) {
  return guarded(x, [&] { return positionOf(findIgnoringCase(selfOf<Text>(self), of(other), position)); });
}
FM_FUNCTION std::uint32_t FM_Text_FindPrevIgnoringCase(const void* self, const Text* other, std::uint32_t position,
                                                       Exception* x) {
  return guarded(x, [&] { return positionOf(findIgnoringCase(selfOf<Text>(self), of(other), position, -1)); });
}
FM_FUNCTION void FM_Text_Uppercase(const void* self, Exception* x) {
  guarded(x, [&] { changeConst(self, toUpper); });
}
FM_FUNCTION void FM_Text_Lowercase(const void* self, Exception* x) {
  guarded(x, [&] { changeConst(self, toLower); });
}
FM_FUNCTION bool FM_Text_operatorEQ(const void* self, const Text* that, Exception* x) {
  return compared(self, that, x, std::equal_to{});
}
FM_FUNCTION bool FM_Text_operatorNE(const void* self, const Text* that, Exception* x) {
  return compared(self, that, x, std::not_equal_to{});
}
FM_FUNCTION bool FM_Text_operatorLT(const void* self, const Text* that, Exception* x) {
  return compared(self, that, x, std::less{});
}
FM_FUNCTION bool FM_Text_operatorLE(const void* self, const Text* that, Exception* x) {
  return compared(self, that, x, std::less_equal{});
}
FM_FUNCTION bool FM_Text_operatorGT(const void* self, const Text* that, Exception* x) {
  return compared(self, that, x, std::greater{});
}
FM_FUNCTION bool FM_Text_operatorGE(const void* self, const Text* that, Exception* x) {
  return compared(self, that, x, std::greater_equal{});
}
FM_FUNCTION void FM_Text_Delete(void* self, Exception*) { deleteHandle<Text>(self); }

}  // namespace fmx
