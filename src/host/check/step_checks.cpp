// Script steps and their definitions.
#include <algorithm>
#include <map>
#include <set>

#include <fmt/format.h>
#include <pugixml.hpp>

#include "base/text.h"
#include "host/check/check.h"
#include "host/check/trial.h"
#include "host/fmwrapper/unicode.h"

namespace orlocal::host::check {
namespace {

std::string nameOf(const RegisteredStep& step) { return fmt::format("step {} ({})", toUtf8(step.name), step.key.id); }

/// Starts the plug-in and looks at each step. Without one there is nothing to say.
template <class Look>
void forEachStep(Trial& trial, Look look) {
  const auto plugin = trial.started();
  if (plugin == nullptr) { return; }
  const Steps steps = Trial::steps();
  if (steps.empty()) { trial.skip("it registers no script step"); }
  for (const auto& step : steps) { look(*step); }
}

/// Spellings in capitals and in small letters are the same to hosts.
bool isCalled(const pugi::xml_node& node, std::string_view name) { return equalsNoCase(node.name(), name); }

std::string attribute(const pugi::xml_node& node, std::string_view name) {
  for (const pugi::xml_attribute& each : node.attributes()) {
    if (equalsNoCase(each.name(), name)) { return each.value(); }
  }
  return "";
}

/// Looks at the definition of each step that can be read.
template <class Look>
void forEachDefinition(Trial& trial, Look look) {
  forEachStep(trial, [&](const RegisteredStep& step) {
    pugi::xml_document document;
    if (document.load_string(toUtf8(step.definition).c_str())) { look(step, document.document_element()); }
  });
}

void areXml(Trial& trial) {
  forEachStep(trial, [&](const RegisteredStep& step) {
    pugi::xml_document document;
    const auto read = document.load_string(toUtf8(step.definition).c_str());
    if (!trial.expect(static_cast<bool>(read), fmt::format("the definition of {} is no XML: {} at {}.", nameOf(step),
                                                           read.description(), read.offset))) {
      return;
    }
    trial.expect(isCalled(document.document_element(), "PluginStep"),
                 fmt::format("the definition of {} is a \"{}\" and no PluginStep.", nameOf(step),
                             document.document_element().name()));
  });
}

void haveKnownParameters(Trial& trial) {
  forEachDefinition(trial, [&](const RegisteredStep& step, const pugi::xml_node& root) {
    std::size_t parameters = 0, targets = 0;
    for (const pugi::xml_node& node : root.children()) {
      if (!trial.expect(isCalled(node, "Parameter"),
                        fmt::format("{} has an element \"{}\".", nameOf(step), node.name()))) {
        continue;
      }
      const std::string type = smallLetters(attribute(node, "type"));
      const bool known = type == "calc" || type == "list" || type == "bool" || type == "target";
      trial.expect(known, fmt::format("{} has a parameter of type \"{}\".", nameOf(step), type));
      ++(type == "target" ? targets : parameters);
    }
    trial.expect(parameters <= 10, fmt::format("{} has {} parameters, and hosts take ten.", nameOf(step), parameters));
    trial.expect(targets <= 1, fmt::format("{} has {} targets, and hosts take one.", nameOf(step), targets));
  });
}

void numberParametersFromZero(Trial& trial) {
  forEachDefinition(trial, [&](const RegisteredStep& step, const pugi::xml_node& root) {
    std::set<std::string> ids;
    std::size_t parameters = 0;
    for (const pugi::xml_node& node : root.children()) {
      if (equalsNoCase(attribute(node, "type"), "target")) { continue; }
      ids.insert(attribute(node, "id"));
      ++parameters;
    }
    trial.expect(ids.size() == parameters, fmt::format("{} gives two parameters one ID.", nameOf(step)));
    for (std::size_t id = 0; id < parameters; ++id) {
      trial.expect(ids.contains(std::to_string(id)),
                   fmt::format("{} has {} parameters and none with the ID {}.", nameOf(step), parameters, id));
    }
  });
}

void labelParameters(Trial& trial) {
  forEachDefinition(trial, [&](const RegisteredStep& step, const pugi::xml_node& root) {
    std::set<std::string> labels;
    for (const pugi::xml_node& node : root.children()) {
      const std::string label = attribute(node, "label");
      trial.expect(!label.empty(), fmt::format("{} has a parameter without a label.", nameOf(step)));
      trial.expect(labels.insert(label).second, fmt::format("{} has two parameters \"{}\".", nameOf(step), label));
    }
  });
}

void haveListsOfValues(Trial& trial) {
  forEachDefinition(trial, [&](const RegisteredStep& step, const pugi::xml_node& root) {
    for (const pugi::xml_node& node : root.children()) {
      if (!equalsNoCase(attribute(node, "type"), "list")) { continue; }
      std::set<std::string> ids;
      for (const pugi::xml_node& value : node.children()) {
        trial.expect(
            ids.insert(attribute(value, "id")).second,
            fmt::format("the list \"{}\" of {} gives two values one ID.", attribute(node, "label"), nameOf(step)));
        trial.expect(*value.text().get() != '\0', fmt::format("the list \"{}\" of {} has a value without words.",
                                                              attribute(node, "label"), nameOf(step)));
      }
      trial.expect(!ids.empty(),
                   fmt::format("the list \"{}\" of {} has no values.", attribute(node, "label"), nameOf(step)));
    }
  });
}

/// A step that is also a function: it passes what that takes.
void fitTheirFunctions(Trial& trial) {
  std::map<std::int16_t, std::shared_ptr<const RegisteredFunction>> functions;
  forEachDefinition(trial, [&](const RegisteredStep& step, const pugi::xml_node& root) {
    if (functions.empty()) {
      for (const auto& function : Registry::instance().functions()) { functions.emplace(function->key.id, function); }
    }
    const auto found = functions.find(step.key.id);
    if (found == functions.end() || found->second->name != step.name || found->second->maxArgs < 0) { return; }
    const auto parameters =
        std::count_if(root.children().begin(), root.children().end(),
                      [](const pugi::xml_node& node) { return !equalsNoCase(attribute(node, "type"), "target"); });
    trial.expect(parameters == found->second->maxArgs, fmt::format("{} has {} parameters, and its function takes {}.",
                                                                   nameOf(step), parameters, found->second->maxArgs));
  });
}

void nameApart(Trial& trial) {
  std::set<std::string> names;
  forEachStep(trial, [&](const RegisteredStep& step) {
    trial.expect(!step.name.empty(), fmt::format("step {} has no name.", step.key.id));
    trial.expect(names.insert(smallLetters(toUtf8(step.name))).second,
                 fmt::format("{} is called as another one.", nameOf(step)));
    trial.expect(step.function != nullptr, fmt::format("{} has no function.", nameOf(step)));
  });
}

}  // namespace

std::vector<Check> stepChecks() {
  return {
      {"step-names", "Script steps have names of their own, and functions.", Level::kBasic, nameApart},
      {"step-xml", "Definitions of script steps are XML with a PluginStep.", Level::kBasic, areXml},
      {"step-parameters", "Script steps have at most ten known parameters and one target.", Level::kBasic,
       haveKnownParameters},
      {"step-parameter-ids", "Parameters of script steps are numbered from 0.", Level::kUsual,
       numberParametersFromZero},
      {"step-labels", "Parameters of script steps have labels of their own.", Level::kUsual, labelParameters},
      {"step-lists", "Lists of script steps have values with IDs and words.", Level::kUsual, haveListsOfValues},
      {"step-functions", "Script steps pass as many values as their functions take.", Level::kStrict,
       fitTheirFunctions},
  };
}

}  // namespace orlocal::host::check
