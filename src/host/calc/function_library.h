#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/result.h"
#include "host/fmwrapper/value.h"

namespace orlocal::host::calc {

/// A function as people see it when they write a calculation.
struct Signature {
  std::string name;
  std::string prototype;    ///< such as `Left ( text ; numberOfCharacters )`
  std::string description;  ///< one line, may be empty
  int minimum = 0;
  int maximum = 0;  ///< -1: any number
};

/// Functions that the language gets from outside: those that plug-ins registered.
///
/// Names are compared without case. The library may change between calculations, never during one.
class FunctionLibrary {
 public:
  virtual ~FunctionLibrary() = default;

  virtual std::vector<Signature> signatures() const = 0;

  /// Calls a function that `signatures` lists, with a number of arguments that it takes. A failure says why; the
  /// calculation goes on with `?` in the call's place.
  virtual Result<Value> call(std::string_view name, std::span<const Value> arguments) = 0;
};

}  // namespace orlocal::host::calc
