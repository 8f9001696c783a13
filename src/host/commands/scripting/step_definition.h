#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/result.h"

namespace orlocal::host {

/// One parameter of a script step, as its definition has it.
struct StepParameter {
  std::string type;  ///< "calc", "list", "bool" or "target"
  std::string label;
  std::string id;        ///< where its value stands in the argument vector; a target has none
  std::string datatype;  ///< of a calculation, as a rule "text"
  std::string standard;  ///< the value that is chosen to begin with
  bool shownInline = false;

  struct Choice {
    std::string id;
    std::string text;
  };
  std::vector<Choice> choices;  ///< of a list
};

/// Reads the XML definition of a script step. Elements and attributes are known in any case, as hosts know them.
Result<std::vector<StepParameter>> readStepDefinition(std::string_view xml);

}  // namespace orlocal::host
