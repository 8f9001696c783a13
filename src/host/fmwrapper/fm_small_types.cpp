// QuadChar, Locale and BinaryData.
#include <functional>

#include "host/fmwrapper/handles.h"

namespace fmx {

using namespace orlocal::host;

namespace {

std::uint32_t codeOf(char c0, char c1, char c2, char c3) {
  const auto byte = [](char c) { return std::uint32_t{static_cast<unsigned char>(c)}; };
  return byte(c0) << 24U | byte(c1) << 16U | byte(c2) << 8U | byte(c3);
}

std::uint8_t characterAt(const FourCharacters& self, std::int32_t i) {
  if (i < 0 || i > 3) { throw Misuse{}; }
  return static_cast<std::uint8_t>(self.code >> (8U * static_cast<unsigned>(3 - i)));
}

/// Compares in reading order.
template <class Compare>
bool compared(const void* self, const QuadChar* value, Exception* x, Compare compare) noexcept {
  return guarded(x, [&] { return compare(selfOf<QuadChar>(self).code, of(value).code); });
}

}  // namespace

FM_FUNCTION QuadChar* FM_QuadChar_Constructor1(Exception* x) {
  return guarded(x, [] { return makeHandle<QuadChar>(); });
}
FM_FUNCTION QuadChar* FM_QuadChar_Constructor2(char c0, char c1, char c2, char c3, Exception* x) {
  return guarded(x, [&] { return makeHandle<QuadChar>(FourCharacters{codeOf(c0, c1, c2, c3)}); });
}
FM_FUNCTION QuadChar* FM_QuadChar_Constructor3(const QuadChar* value, Exception* x) {
  return guarded(x, [&] { return makeHandle<QuadChar>(of(value)); });
}
FM_FUNCTION const QuadChar* FM_QuadChar_operatorAS(void* self, const QuadChar* value, Exception* x) {
  return guarded(x, [&]() -> const QuadChar* {
    selfOf<QuadChar>(self) = of(value);
    return static_cast<const QuadChar*>(self);
  });
}
FM_FUNCTION std::uint8_t FM_QuadChar_operatorAR(void* self, std::int32_t i, Exception* x) {
  return guarded(x, [&] { return characterAt(selfOf<QuadChar>(self), i); });
}
FM_FUNCTION std::uint8_t FM_QuadChar_operatorCAR(const void* self, std::int32_t i, Exception* x) {
  return guarded(x, [&] { return characterAt(selfOf<QuadChar>(self), i); });
}
FM_FUNCTION bool FM_QuadChar_operatorEQ(const void* self, const QuadChar* value, Exception* x) {
  return compared(self, value, x, std::equal_to{});
}
FM_FUNCTION bool FM_QuadChar_operatorNE(const void* self, const QuadChar* value, Exception* x) {
  return compared(self, value, x, std::not_equal_to{});
}
FM_FUNCTION bool FM_QuadChar_operatorLT(const void* self, const QuadChar* value, Exception* x) {
  return compared(self, value, x, std::less{});
}
FM_FUNCTION bool FM_QuadChar_operatorLE(const void* self, const QuadChar* value, Exception* x) {
  return compared(self, value, x, std::less_equal{});
}
FM_FUNCTION bool FM_QuadChar_operatorGT(const void* self, const QuadChar* value, Exception* x) {
  return compared(self, value, x, std::greater{});
}
FM_FUNCTION bool FM_QuadChar_operatorGE(const void* self, const QuadChar* value, Exception* x) {
  return compared(self, value, x, std::greater_equal{});
}
FM_FUNCTION std::uint32_t FM_QuadChar_GetMacType(const void* self, Exception* x) {
  return guarded(x, [&] { return selfOf<QuadChar>(self).code; });
}
FM_FUNCTION void FM_QuadChar_SetMacType(void* self, std::uint32_t value, Exception* x) {
  guarded(x, [&] { selfOf<QuadChar>(self).code = value; });
}
FM_FUNCTION void FM_QuadChar_Delete(void* self, Exception*) { deleteHandle<QuadChar>(self); }

// fmx::Locale is the interface's name; the object behind it is named in full.
FM_FUNCTION fmx::Locale* FM_Locale_Constructor1(std::int32_t inputType, Exception* x) {
  return guarded(x, [&] { return makeHandle<fmx::Locale>(orlocal::host::Locale{inputType}); });
}
FM_FUNCTION fmx::Locale* FM_Locale_Constructor2(const fmx::Locale* copyConstruct, Exception* x) {
  return guarded(x, [&] { return makeHandle<fmx::Locale>(of(copyConstruct)); });
}
FM_FUNCTION fmx::Locale* FM_Locale_operatorAS(void* self, const fmx::Locale* rhs, Exception* x) {
  return guarded(x, [&] {
    selfOf<fmx::Locale>(self) = of(rhs);
    return static_cast<fmx::Locale*>(self);
  });
}
FM_FUNCTION void FM_Locale_Delete(void* self, Exception*) { deleteHandle<fmx::Locale>(self); }

FM_FUNCTION BinaryData* FM_BinaryData_Constructor1(Exception* x) {
  return guarded(x, [] { return makeHandle<BinaryData>(); });
}
FM_FUNCTION std::int32_t FM_BinaryData_GetCount(const void* self, Exception* x) {
  return guarded(x, [&] {
    selfOf<BinaryData>(self);
    return std::int32_t{0};
  });
}
FM_FUNCTION void FM_BinaryData_Delete(void* self, Exception*) { deleteHandle<BinaryData>(self); }

}  // namespace fmx
