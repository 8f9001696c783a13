#pragma once

#include <string_view>

#include "backend/property_value.h"
#include "platform/text.h"

namespace orlocal {

// The rows of an object's tables of properties; `rowFor` finds them by their word. Both back ends have a table of what
// can be read and one of what can be set for each kind of object.

/// A property that can be read of `Asked`: an object, say, or a pointer that may be null.
template <class... Asked>
struct PropertyGetter {
  std::string_view word;
  OptionalText (*read)(Asked...);
};

/// A property that can be set. `Result` is what the call then gives its caller, where that depends on the value.
template <class Object, class Result = void>
struct PropertySetter {
  std::string_view word;
  Result (*set)(Object& object, const PropertyValue& value);
};

}  // namespace orlocal
