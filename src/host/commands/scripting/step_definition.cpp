#include "host/commands/scripting/step_definition.h"

#include <fmt/format.h>
#include <pugixml.hpp>

#include "base/text.h"
#include "base/translation.h"

namespace orlocal::host {

namespace {

std::string attribute(const pugi::xml_node& element, std::string_view name) {
  for (const pugi::xml_attribute& candidate : element.attributes()) {
    if (equalsNoCase(candidate.name(), name)) { return candidate.value(); }
  }
  return {};
}

bool isNamed(const pugi::xml_node& element, std::string_view name) { return equalsNoCase(element.name(), name); }

StepParameter readParameter(const pugi::xml_node& element) {
  StepParameter parameter{.type = attribute(element, "type"),
                          .label = attribute(element, "label"),
                          .id = attribute(element, "id"),
                          .datatype = attribute(element, "datatype"),
                          .standard = attribute(element, "default"),
                          .shownInline = equalsNoCase(attribute(element, "showinline"), "true"),
                          .choices = {}};
  for (const pugi::xml_node& value : element.children()) {
    if (isNamed(value, "value")) { parameter.choices.push_back({attribute(value, "id"), value.child_value()}); }
  }
  return parameter;
}

}  // namespace

Result<std::vector<StepParameter>> readStepDefinition(std::string_view xml) {
  pugi::xml_document document;
  const pugi::xml_parse_result read =
      document.load_buffer(xml.data(), xml.size(), pugi::parse_default, pugi::encoding_utf8);
  if (!read) {
    return failure(ErrorCode::kInvalid, tr("the definition is no XML: {} at byte {}", read.description(), read.offset));
  }
  const pugi::xml_node root = document.document_element();
  if (!isNamed(root, "pluginstep")) {
    return failure(ErrorCode::kInvalid, tr("the definition begins with {}, not with pluginstep", root.name()));
  }
  std::vector<StepParameter> parameters;
  for (const pugi::xml_node& element : root.children()) {
    if (isNamed(element, "parameter")) { parameters.push_back(readParameter(element)); }
  }
  return parameters;
}

}  // namespace orlocal::host
