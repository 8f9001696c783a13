#include "host/calc/builtins.h"

#include <algorithm>
#include <vector>

#include "base/text.h"

namespace orlocal::host::calc {

std::span<const Builtin* const> allBuiltins() {
  static const std::vector<const Builtin*> kAll = [] {
    std::vector<const Builtin*> all;
    for (const auto table :
         {textFunctions(), listFunctions(), numberFunctions(), dateFunctions(), logicalFunctions()}) {
      for (const Builtin& function : table) { all.push_back(&function); }
    }
    std::ranges::sort(all, {}, &Builtin::name);
    return all;
  }();
  return kAll;
}

const Builtin* findBuiltin(std::string_view name) {
  for (const Builtin* function : allBuiltins()) {
    if (equalsNoCase(function->name, name)) { return function; }
  }
  return nullptr;
}

const GetEntry* findGet(std::string_view name) {
  for (const GetEntry& entry : allGets()) {
    if (equalsNoCase(entry.name, name)) { return &entry; }
  }
  return nullptr;
}

}  // namespace orlocal::host::calc
