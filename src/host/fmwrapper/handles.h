#pragma once

#include <cstdint>
#include <new>
#include <string>
#include <type_traits>
#include <vector>

#include "host/fmwrapper/export.h"
#include "host/fmwrapper/failing_calls.h"
#include "host/fmwrapper/registry.h"
#include "host/fmwrapper/value.h"
#include "platform/host/fm_api.h"

/// Starts the definition of a function of the interface.
#define FM_FUNCTION extern "C" ORLOCAL_HOST_API

namespace orlocal::host {

/// Four characters in reading order, the first in the highest byte.
struct FourCharacters {
  std::uint32_t code = 0;
};

/// The object that an opaque pointer of the interface points at. The pointers are cast, never wrapped: what a value
/// lends is the address of its own member.
template <class Opaque>
struct Behind;
template <>
struct Behind<fmx::QuadChar> : std::type_identity<FourCharacters> {};
template <>
struct Behind<fmx::Text> : std::type_identity<std::u16string> {};
template <>
struct Behind<fmx::Data> : std::type_identity<Value> {};
template <>
struct Behind<fmx::DataVect> : std::type_identity<std::vector<Value>> {};
template <>
struct Behind<fmx::FixPt> : std::type_identity<Number> {};
template <>
struct Behind<fmx::DateTime> : std::type_identity<DateTime> {};
template <>
struct Behind<fmx::Locale> : std::type_identity<Locale> {};
template <>
struct Behind<fmx::ExprEnv> : std::type_identity<Environment> {};
template <>
struct Behind<fmx::BinaryData> : std::type_identity<Binary> {};

/// Thrown inside a function of the interface for a null pointer, an index out of range and the like.
struct Misuse {};

template <class Opaque>
using Object = typename Behind<Opaque>::type;

template <class Opaque>
const Object<Opaque>& of(const Opaque* handle) {
  if (handle == nullptr) { throw Misuse{}; }
  return *reinterpret_cast<const Object<Opaque>*>(handle);
}

template <class Opaque>
Object<Opaque>& of(Opaque* handle) {
  if (handle == nullptr) { throw Misuse{}; }
  return *reinterpret_cast<Object<Opaque>*>(handle);
}

/// `self` of a member function, which the interface passes without a type.
template <class Opaque>
const Object<Opaque>& selfOf(const void* self) {
  return of(static_cast<const Opaque*>(self));
}

template <class Opaque>
Object<Opaque>& selfOf(void* self) {
  return of(static_cast<Opaque*>(self));
}

template <class Opaque>
Opaque* handleOf(Object<Opaque>& object) {
  return reinterpret_cast<Opaque*>(&object);
}

template <class Opaque>
const Opaque* handleOf(const Object<Opaque>& object) {
  return reinterpret_cast<const Opaque*>(&object);
}

template <class Opaque, class... Arguments>
Opaque* makeHandle(Arguments&&... arguments) {
  return reinterpret_cast<Opaque*>(new Object<Opaque>(std::forward<Arguments>(arguments)...));
}

/// Deleting nothing is fine, as it is everywhere.
template <class Opaque>
void deleteHandle(void* self) noexcept {
  delete static_cast<Object<Opaque>*>(self);
}

/// Codes of the exception record.
inline constexpr std::int32_t kOutOfMemory = 1;
inline constexpr std::int32_t kOtherFailure = 2;

/// Runs the body of a function of the interface. Whatever it throws becomes a code in the record; the value returned
/// then is the type's zero. The record is left alone when all is well.
template <class Body>
auto guarded(fmx::Exception* x, Body body) noexcept -> decltype(body()) {
  if (const std::int32_t planned = plannedFailure(); planned != 0) {
    if (x != nullptr) { x->code = planned; }
    return decltype(body())();
  }
  std::int32_t code = kOtherFailure;
  try {
    return body();
  } catch (const std::bad_alloc&) { code = kOutOfMemory; } catch (...) {
    // Every other failure has one code; there is nothing to say beyond it.
  }
  if (x != nullptr) { x->code = code; }
  return decltype(body())();
}

/// The part of a text that a position and a size name, both cut to what is there.
inline std::u16string_view partOf(std::u16string_view text, std::uint32_t position, std::uint32_t size) noexcept {
  return position >= text.size() ? std::u16string_view() : text.substr(position, size);
}

}  // namespace orlocal::host
