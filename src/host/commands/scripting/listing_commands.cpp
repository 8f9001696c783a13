#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "base/text.h"
#include "base/try.h"
#include "host/calc/rendering.h"
#include "host/commands/command_line/json_text.h"
#include "host/commands/command_line/trouble.h"
#include "host/commands/scripting/plugin_host.h"
#include "host/commands/scripting/scripting_commands.h"
#include "host/commands/scripting/step_definition.h"
#include "host/fmwrapper/registry.h"
#include "host/fmwrapper/unicode.h"

namespace orlocal::host {

namespace {

using OrderedJson = nlohmann::ordered_json;

/// A description: words for type-ahead, a bar, the text. Without a bar all of it is the text.
struct Description {
  std::string words;
  std::string text;
};

Description descriptionOf(std::u16string_view description) {
  const std::string whole = toUtf8(description);
  const std::size_t bar = whole.find('|');
  const auto part = [&](std::size_t from, std::size_t size = std::string::npos) {
    return std::string(trimmed(std::string_view(whole).substr(from, size), " "));
  };
  if (bar == std::string::npos) { return {"", part(0)}; }
  return {part(0, bar), part(bar + 1)};
}

/// The four characters that name a plug-in.
std::string pluginName(std::uint32_t id) {
  std::string name;
  for (int shift = 24; shift >= 0; shift -= 8) {
    name += static_cast<char>((id >> static_cast<unsigned>(shift)) & 0xFFU);
  }
  return name;
}

OrderedJson entryOf(const RegistrationKey& key, const std::u16string& name, const std::u16string& description,
                    std::uint32_t flags) {
  const Description parts = descriptionOf(description);
  return {{"plugin", pluginName(key.pluginId)}, {"id", key.id},  {"name", toUtf8(name)}, {"description", parts.text},
          {"typeAhead", parts.words},           {"flags", flags}};
}

void listFunctions(CommandContext& context) {
  const auto functions = Registry::instance().functions();
  if (context.options.json) {
    OrderedJson list = OrderedJson::array();
    for (const auto& function : functions) {
      OrderedJson entry = entryOf(function->key, function->name, function->description, function->flags);
      entry["prototype"] = toUtf8(function->prototype);
      entry["minimumArguments"] = function->minArgs;
      entry["maximumArguments"] = function->maxArgs;
      list.push_back(std::move(entry));
    }
    return printJson(list, context.streams.out);
  }
  for (const auto& function : functions) {
    context.streams.out << fmt::format("{}\n    {}\n", calc::harmless(toUtf8(function->prototype)),
                                       calc::harmless(descriptionOf(function->description).text));
  }
}

std::string describeParameter(const StepParameter& parameter) {
  std::string line = parameter.type;
  if (!parameter.id.empty()) { line += " " + parameter.id; }
  line += ": " + parameter.label;
  for (const StepParameter::Choice& choice : parameter.choices) {
    line += fmt::format("{}{} {}", &choice == &parameter.choices.front() ? " (" : ", ", choice.id, choice.text);
  }
  return parameter.choices.empty() ? line : line + ")";
}

OrderedJson parametersOf(const std::vector<StepParameter>& parameters) {
  OrderedJson list = OrderedJson::array();
  for (const StepParameter& parameter : parameters) {
    OrderedJson choices = OrderedJson::array();
    for (const StepParameter::Choice& choice : parameter.choices) {
      choices.push_back({{"id", choice.id}, {"text", choice.text}});
    }
    list.push_back({{"type", parameter.type},
                    {"label", parameter.label},
                    {"id", parameter.id},
                    {"datatype", parameter.datatype},
                    {"default", parameter.standard},
                    {"showInline", parameter.shownInline},
                    {"values", choices}});
  }
  return list;
}

/// False when a definition cannot be read.
bool listSteps(CommandContext& context) {
  bool readable = true;
  OrderedJson list = OrderedJson::array();
  for (const auto& step : Registry::instance().steps()) {
    const auto parameters = readStepDefinition(toUtf8(step->definition));
    if (!parameters) {
      tellTrouble(context.streams.err, toUtf8(step->name) + ": " + parameters.error().message);
      readable = false;
      continue;
    }
    if (context.options.json) {
      OrderedJson entry = entryOf(step->key, step->name, step->description, step->flags);
      entry["parameters"] = parametersOf(*parameters);
      list.push_back(std::move(entry));
      continue;
    }
    context.streams.out << fmt::format("{}\n    {}\n", calc::harmless(toUtf8(step->name)),
                                       calc::harmless(descriptionOf(step->description).text));
    for (const StepParameter& parameter : *parameters) {
      context.streams.out << fmt::format("      {}\n", calc::harmless(describeParameter(parameter)));
    }
  }
  if (context.options.json) { printJson(list, context.streams.out); }
  return readable;
}

template <class List>
Result<ExitStatus> withPlugin(CommandContext& context, List list) {
  ORLOCAL_TRY(const auto workbench, Workbench::open(context, Workbench::Need::kPlugin));
  return list() ? ExitStatus::kDone : ExitStatus::kFailed;
}

}  // namespace

void registerListingCommands(CommandLine& line) {
  const auto functions = [](CommandContext& context) {
    return withPlugin(context, [&] {
      listFunctions(context);
      return true;
    });
  };
  line.add("functions", "List the functions that the plug-in registers.", functions)
      .footer("  orlocal functions --json");
  const auto steps = [](CommandContext& context) { return withPlugin(context, [&] { return listSteps(context); }); };
  line.add("steps", "List the script steps that the plug-in registers, with their parameters.", steps)
      .footer("  orlocal steps");
}

}  // namespace orlocal::host
