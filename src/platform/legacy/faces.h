#pragma once

#include <memory>
#include <utility>

#include "platform/date.h"

namespace orlocal {

class Platform;

// The older platform's objects are faces: each shows an object of the current platform, and whoever asks for that gets
// it with `object()`. An object that another platform made has no face and counts as none.

/// What faces ask the system besides the calendar store. It outlives them.
struct Surroundings {
  Platform& platform;
  Date (*now)();
};

/// A face of `object`; null for null.
template <class Face, class Object, class... More>
std::shared_ptr<Face> faceOf(std::shared_ptr<Object> object, More&&... more) {
  return object ? std::make_shared<Face>(std::move(object), std::forward<More>(more)...) : nullptr;
}

/// What `shown` is a face of; null for null and for what is no such face.
template <class Face, class Interface>
auto behind(const std::shared_ptr<Interface>& shown) {
  const auto face = std::dynamic_pointer_cast<Face>(shown);
  return face ? face->object() : nullptr;
}

}  // namespace orlocal
