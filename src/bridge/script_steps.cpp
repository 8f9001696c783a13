#include "bridge/script_steps.h"

#include <array>
#include <string_view>

namespace orlocal {
namespace {

enum class Shown : bool { kInDialog, kInline };

/// A parameter of a step: a calculation, or a choice between `choices`. Its ID is its position.
struct StepParameter {
  std::string_view label;  ///< empty past the last one
  Shown shown = Shown::kInline;
  std::array<std::string_view, 3> choices{};  ///< none for a calculation
};

struct StepDefinition {
  std::int32_t id;
  std::array<StepParameter, 7> parameters;
};

constexpr StepParameter optional(std::string_view label) { return {label, Shown::kInDialog, {}}; }

constexpr StepDefinition kSteps[] = {
    {151, {{{"Version Type", Shown::kInline, {"Please Select", "Short", "Long"}}}}},
    {152, {{{"Type"}}}},
    {153, {{{"Type"}, {"Index"}}}},
    {154, {{{"Type"}, {"UID"}, optional("Occurrence (Optional)")}}},
    {155, {{{"Type"}, {"Property"}, optional("Sub-Property (Optional)")}}},
    {156, {{{"Start Date"}, {"End Date"}, {"Calendars"}, {"UID"}}}},
    {157, {{{"Calendars"}, {"Type"}, {"Date"}}}},
    {158, {{{"Title"}}}},
    {159, {{{"Type"}, {"Property"}, {"Value"}}}},
    {160, {{{"Type (Optional)", Shown::kInline, {"Please Select", "Text", "Number"}}}}},
    {161, {{{"Type"}, optional("Time Span (Optional)")}}},
    {162,
     {{{"Type"},
       {"Interval"},
       {"Days of the Week"},
       {"Days of the Month"},
       {"Months of the Year"},
       {"End Date"},
       {"End Count"}}}},
    {163, {{{"Type"}, {"Absolute Trigger"}, {"Action"}, {"Email Address"}, {"Relative Trigger"}, {"Sound Name"}}}},
    {164, {{{"Type"}, {"Index"}}}},
    {165, {}},
    {166, {{{"Type"}}}},
    {167, {{{"Type"}, {"UID"}, {"Occurrence Date"}, {"Date Span"}}}},
    {168, {{{"Type"}}}},
};

constexpr std::string_view kTarget = R"(<parameter type="target" label="Results" showinline="true"/>)";

void append(std::string& xml, const StepParameter& parameter, std::size_t id) {
  const std::string_view shown = parameter.shown == Shown::kInline ? "true" : "false";
  const auto attribute = [&xml](std::string_view name, std::string_view value) {
    xml.append(" ").append(name).append("=\"").append(value).append("\"");
  };
  const bool isList = !parameter.choices.front().empty();
  xml += "<parameter";
  attribute("type", isList ? "list" : "calc");
  attribute("showinline", shown);
  attribute("label", parameter.label);
  if (isList) {
    attribute("default", "0");
  } else {
    attribute("datatype", "text");
  }
  attribute("ID", std::to_string(id));
  if (!isList) {
    xml += "/>";
    return;
  }
  xml += ">";
  for (std::size_t value = 0; value < parameter.choices.size(); ++value) {
    xml += "<value";
    attribute("ID", std::to_string(value));
    xml.append(">").append(parameter.choices[value]).append("</value>");
  }
  xml += "</parameter>";
}

}  // namespace

std::string scriptStepDefinition(std::int32_t functionId) {
  for (const auto& step : kSteps) {
    if (step.id != functionId) { continue; }
    std::string xml("<pluginstep>");
    xml += kTarget;
    for (std::size_t id = 0; id < step.parameters.size() && !step.parameters[id].label.empty(); ++id) {
      append(xml, step.parameters[id], id);
    }
    return xml + "</pluginstep>";
  }
  return {};
}

void GetXMLDefinition(std::int32_t functionId, HostText& definition) {
  const std::string xml = scriptStepDefinition(functionId);
  if (xml.empty()) {
    definition.assign("");
  } else {
    definition.assignUtf8(xml.c_str());
  }
}

}  // namespace orlocal
