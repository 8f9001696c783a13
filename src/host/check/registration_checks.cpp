// What is registered, against itself.
#include <algorithm>
#include <cstdlib>
#include <map>
#include <set>

#include <fmt/format.h>

#include "base/text.h"
#include "host/check/check.h"
#include "host/check/prototype.h"
#include "host/check/raw_call.h"
#include "host/check/trial.h"
#include "host/fmwrapper/unicode.h"

namespace orlocal::host::check {
namespace {

void registersFunctions(Trial& trial) {
  trial.forEachFunction([](const RegisteredFunction&) {});
}

void usesItsOwnId(Trial& trial) {
  const auto plugin = trial.started();
  if (plugin == nullptr) { return; }
  const std::uint32_t id = plugin->pluginId();
  for (const auto& function : trial.functions()) {
    trial.expect(function->key.pluginId == id,
                 fmt::format("{} is registered under another ID than the one in its options.", nameOf(*function)));
  }
}

void namesApart(Trial& trial) {
  std::map<std::string, std::int16_t> seen;
  trial.forEachFunction([&](const RegisteredFunction& function) {
    std::string folded = smallLetters(toUtf8(function.name));
    const auto [at, isNew] = seen.emplace(std::move(folded), function.key.id);
    trial.expect(isNew, fmt::format("{} is called as function {} is.", nameOf(function), at->second));
  });
}

void namesThatCalculationsTake(Trial& trial) {
  trial.forEachFunction([&](const RegisteredFunction& function) {
    const std::string name = toUtf8(function.name);
    trial.expect(!name.empty() && name.find_first_of(" +-*/^&=<>≠(),;[]{}\"':.$\t\n") == std::string::npos,
                 fmt::format("\"{}\" holds what calculations have for operators.", name));
    trial.expect(name.empty() || name.front() < '0' || name.front() > '9',
                 fmt::format("\"{}\" begins with a digit.", name));
    trial.expect(function.name.size() <= 100, fmt::format("\"{}\" is longer than 100 characters.", name));
  });
}

void namesWithAPrefix(Trial& trial) {
  std::set<std::string> prefixes;
  trial.forEachFunction([&](const RegisteredFunction& function) {
    const std::string name = toUtf8(function.name);
    const std::size_t end = name.find('_');
    trial.expect(end != std::string::npos && end > 0,
                 fmt::format("{} has no prefix that keeps it apart from other plug-ins' functions.", name));
    prefixes.insert(name.substr(0, end));
  });
  trial.expect(trial.failed() || prefixes.size() == 1, "its functions have several prefixes.");
}

void boundsThatMakeSense(Trial& trial) {
  trial.forEachFunction([&](const RegisteredFunction& function) {
    trial.expect(function.minArgs >= 0 && (function.maxArgs == -1 || function.maxArgs >= function.minArgs),
                 fmt::format("{} takes {} to {} arguments.", nameOf(function), function.minArgs, function.maxArgs));
  });
}

void prototypesThatNameTheFunction(Trial& trial) {
  trial.forEachFunction([&](const RegisteredFunction& function) {
    const Prototype prototype = readPrototype(toUtf8(function.prototype));
    trial.expect(prototype.isWellFormed,
                 fmt::format("the prototype of {} has brackets that do not match.", nameOf(function)));
    trial.expect(prototype.name == toUtf8(function.name),
                 fmt::format("the prototype of {} is of \"{}\".", nameOf(function), prototype.name));
  });
}

void prototypesThatFitTheBounds(Trial& trial) {
  trial.forEachFunction([&](const RegisteredFunction& function) {
    const Prototype prototype = readPrototype(toUtf8(function.prototype));
    const std::size_t all = prototype.required.size() + prototype.optional.size();
    trial.expect(prototype.required.size() == static_cast<std::size_t>(function.minArgs),
                 fmt::format("the prototype of {} has {} arguments that must be there, and it is registered with {}.",
                             nameOf(function), prototype.required.size(), function.minArgs));
    const bool fits = function.maxArgs == -1 ? prototype.endsOpen : all == static_cast<std::size_t>(function.maxArgs);
    trial.expect(fits,
                 fmt::format("the prototype of {} has {} arguments in all, and it is registered with {} at the most.",
                             nameOf(function), all, function.maxArgs));
  });
}

void argumentsApart(Trial& trial) {
  trial.forEachFunction([&](const RegisteredFunction& function) {
    const Prototype prototype = readPrototype(toUtf8(function.prototype));
    std::set<std::string> names(prototype.required.begin(), prototype.required.end());
    names.insert(prototype.optional.begin(), prototype.optional.end());
    trial.expect(names.size() == prototype.required.size() + prototype.optional.size(),
                 fmt::format("the prototype of {} names two arguments alike.", nameOf(function)));
  });
}

void descriptionsForPeople(Trial& trial) {
  trial.forEachFunction([&](const RegisteredFunction& function) {
    const std::string text = toUtf8(function.description);
    const std::size_t bar = text.find('|');
    trial.expect(
        bar != std::string::npos && !trimmed(text.substr(0, bar)).empty() && !trimmed(text.substr(bar + 1)).empty(),
        fmt::format("the description of {} is not words, a bar and a text.", nameOf(function)));
  });
}

void textsThatFit(Trial& trial) {
  constexpr std::size_t kMost = 1'023;
  trial.forEachFunction([&](const RegisteredFunction& function) {
    for (const auto& [text, what] :
         {std::pair(&function.prototype, "prototype"), std::pair(&function.description, "description")}) {
      trial.expect(text->size() <= kMost,
                   fmt::format("the {} of {} is longer than {} units.", what, nameOf(function), kMost));
      trial.expect(toUtf16(toUtf8(*text)) == *text,
                   fmt::format("the {} of {} is no proper Unicode.", what, nameOf(function)));
    }
  });
}

void flagsThatHostsKnow(Trial& trial) {
  constexpr std::uint32_t kKnown = 0xFF6FU, kPlatforms = 0x000EU;
  trial.forEachFunction([&](const RegisteredFunction& function) {
    trial.expect((function.flags & ~kKnown) == 0,
                 fmt::format("{} has flags {:#x}, some of which no host knows.", nameOf(function), function.flags));
    trial.expect(
        (function.flags & kPlatforms) == 0 || (function.flags & 0x0008U) != 0 || (function.flags & 0x0001U) != 0,
        fmt::format("{} has flags {:#x}, which keep it off servers.", nameOf(function), function.flags));
  });
}

/// What must not change with the language: everything that solutions have written down.
void sameInEveryLanguage(Trial& trial) {
  const auto plugin = trial.started();
  if (plugin == nullptr) { return; }
  struct Shape {
    std::u16string name;
    std::int16_t id, minArgs, maxArgs;
    bool operator==(const Shape&) const = default;
  };
  const auto shapes = [] {
    std::vector<Shape> all;
    for (const auto& function : Registry::instance().functions()) {
      all.push_back({function->name, function->key.id, function->minArgs, function->maxArgs});
    }
    return all;
  };
  const auto first = shapes();
  for (const char* language :
       {"C", "de_DE.UTF-8", "fr_FR.UTF-8", "ja_JP.UTF-8", "zh_CN.UTF-8", "tlh", "../../etc", "x\xFF"}) {
    trial.step(fmt::format("starting in the language {}", language));
    for (const char* name : {"LANGUAGE", "LC_ALL", "LANG"}) { ::setenv(name, language, 1); }
    if (const Status done = plugin->shutdown(); !done) { trial.fail(done.error().message); }
    if (const auto started = plugin->start(); !started) { trial.fail(started.error().message); }
    trial.expect(shapes() == first, fmt::format("it registers other functions in the language {}.", language));
  }
}

}  // namespace

std::vector<Check> registrationChecks() {
  return {
      {"function-any", "It registers functions.", Level::kUsual, registersFunctions},
      {"function-plugin-id", "Functions are registered under the ID of its options.", Level::kBasic, usesItsOwnId},
      {"function-names-differ", "No two functions are called alike.", Level::kBasic, namesApart},
      {"function-names", "Functions have names that calculations can hold.", Level::kBasic, namesThatCalculationsTake},
      {"function-prefix", "Functions share a prefix of their own.", Level::kStrict, namesWithAPrefix},
      {"function-bounds", "Functions take from none to so many arguments.", Level::kBasic, boundsThatMakeSense},
      {"function-prototypes", "Prototypes name their functions.", Level::kUsual, prototypesThatNameTheFunction},
      {"function-prototype-bounds", "Prototypes have as many arguments as functions take.", Level::kUsual,
       prototypesThatFitTheBounds},
      {"function-argument-names", "No prototype names two arguments alike.", Level::kStrict, argumentsApart},
      {"function-descriptions", "Functions are described by words, a bar and a text.", Level::kStrict,
       descriptionsForPeople},
      {"function-texts", "Prototypes and descriptions are proper Unicode and not too long.", Level::kUsual,
       textsThatFit},
      {"function-flags", "Functions have flags that hosts know, and run on servers.", Level::kUsual,
       flagsThatHostsKnow},
      {"function-languages", "Names, IDs and arguments are the same in every language.", Level::kUsual,
       sameInEveryLanguage},
  };
}

}  // namespace orlocal::host::check
