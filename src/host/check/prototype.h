#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace orlocal::host::check {

/// A function's prototype as users read it: "Name( first ; second {; third} )".
struct Prototype {
  std::string name;
  std::vector<std::string> required, optional;
  bool isWellFormed = true;
  bool endsOpen = false;  ///< "…": any number
};
Prototype readPrototype(std::string_view text);

}  // namespace orlocal::host::check
