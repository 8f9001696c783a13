// Calls of every function, with what solutions may pass and more.

#include <fmt/format.h>

#include "host/check/check.h"
#include "host/check/odd_values.h"
#include "host/check/trial.h"
#include "host/fmwrapper/handles.h"
#include "host/fmwrapper/unicode.h"

namespace orlocal::host::check {
namespace {

using Arguments = std::vector<Value>;

/// Calls with the same value in every place.
void callWithEach(Trial& trial, const std::vector<OddValue>& values) {
  trial.forEachFunction([&](const RegisteredFunction& function) {
    for (const OddValue& odd : values) {
      trial.step(fmt::format("{} with {}", nameOf(function), odd.words));
      trial.call(function, Arguments(mostArguments(function), odd.value));
    }
  });
}

void withTheFewest(Trial& trial) {
  trial.forEachFunction([&](const RegisteredFunction& function) {
    trial.step(fmt::format("{} with {} empty arguments", nameOf(function), fewestArguments(function)));
    trial.call(function, Arguments(fewestArguments(function)));
  });
}

void withTheMost(Trial& trial) {
  trial.forEachFunction([&](const RegisteredFunction& function) {
    trial.step(fmt::format("{} with {} empty arguments", nameOf(function), mostArguments(function)));
    trial.call(function, Arguments(mostArguments(function)));
  });
}

void withEveryCount(Trial& trial) {
  trial.forEachFunction([&](const RegisteredFunction& function) {
    for (std::size_t count = fewestArguments(function); count <= mostArguments(function); ++count) {
      trial.step(fmt::format("{} with {} words", nameOf(function), count));
      trial.call(function, Arguments(count, Value::ofText(u"event")));
    }
  });
}

void withFewer(Trial& trial) {
  trial.forEachFunction([&](const RegisteredFunction& function) {
    for (std::size_t count = 0; count < fewestArguments(function); ++count) {
      trial.step(fmt::format("{} with {} arguments, fewer than it registered", nameOf(function), count));
      trial.call(function, Arguments(count, Value::ofText(u"event")));
    }
  });
}

void withMore(Trial& trial) {
  trial.forEachFunction([&](const RegisteredFunction& function) {
    for (const std::size_t count : {mostArguments(function) + 1, mostArguments(function) + 100, std::size_t{10'000}}) {
      trial.step(fmt::format("{} with {} arguments, more than it registered", nameOf(function), count));
      trial.call(function, Arguments(count, Value::ofText(u"event")));
    }
  });
}

void withTexts(Trial& trial) { callWithEach(trial, oddTexts()); }
void withNumbers(Trial& trial) { callWithEach(trial, oddNumbers()); }
void withDates(Trial& trial) { callWithEach(trial, oddDates()); }
void withEveryKind(Trial& trial) { callWithEach(trial, oddKinds()); }

void withLongTexts(Trial& trial) {
  constexpr std::size_t kLong = 5'000'000;  // units, which are 10 MB
  std::u16string lines;
  for (std::size_t i = 0; i < kLong / 10; ++i) { lines += u"event....\r"; }
  const std::vector<OddValue> values{{"a text of 10 MB", Value::ofText(std::u16string(kLong, u'x'))},
                                     {"a list of 500,000 lines", Value::ofText(lines)},
                                     {"10 MB of lone surrogates", Value::ofText(std::u16string(kLong, u'\xD800'))}};
  callWithEach(trial, values);
}

/// A known word in each place but one, and something odd there.
void withOneOddArgument(Trial& trial) {
  const auto odd = oddValues();
  trial.forEachFunction([&](const RegisteredFunction& function) {
    for (std::size_t place = 0; place < mostArguments(function); ++place) {
      for (const OddValue& each : odd) {
        Arguments arguments(mostArguments(function), Value::ofText(u"event"));
        arguments[place] = each.value;
        trial.step(fmt::format("{} with {} as argument {}", nameOf(function), each.words, place + 1));
        trial.call(function, arguments);
      }
    }
  });
}

void atRandom(Trial& trial) {
  constexpr int kCalls = 3'000;
  const auto odd = oddValues();
  const auto plugin = trial.started();
  if (plugin == nullptr) { return; }
  const Functions functions = trial.functions();
  if (functions.empty()) { return; }
  for (int i = 1; i <= kCalls; ++i) {
    const RegisteredFunction& function = *functions[trial.below(functions.size())];
    const std::size_t count =
        fewestArguments(function) + trial.below(mostArguments(function) - fewestArguments(function) + 1);
    Arguments arguments;
    std::string words;
    for (std::size_t place = 0; place < count; ++place) {
      const OddValue& each = odd[trial.below(odd.size())];
      arguments.push_back(each.value);
      words += (place == 0 ? " with " : ", ") + each.words;
    }
    trial.step(fmt::format("random call {}: {}{}", i, nameOf(function), words));
    trial.call(function, arguments);
  }
}

void leavesArgumentsAlone(Trial& trial) {
  const auto odd = oddValues();
  trial.forEachFunction([&](const RegisteredFunction& function) {
    for (const OddValue& each : odd) {
      const Arguments arguments(mostArguments(function), each.value);
      trial.step(fmt::format("{} with {}", nameOf(function), each.words));
      trial.call(function, arguments);
      for (const Value& argument : arguments) {
        trial.expect(argument.type() == each.value.type() && argument.asText() == each.value.asText(),
                     fmt::format("{} changes an argument, {}.", nameOf(function), each.words));
      }
    }
  });
}

void answersProperUnicode(Trial& trial) {
  const auto odd = oddTexts();
  trial.forEachFunction([&](const RegisteredFunction& function) {
    for (const OddValue& each : odd) {
      const bool wellFormed = toUtf16(toUtf8(each.value.asText())) == each.value.asText();
      if (!wellFormed) { continue; }
      trial.step(fmt::format("{} with {}", nameOf(function), each.words));
      const auto result = trial.call(function, Arguments(mostArguments(function), each.value));
      if (!result) { continue; }
      trial.expect(toUtf16(toUtf8(result->asText())) == result->asText(),
                   fmt::format("{} answers proper Unicode with what is none.", nameOf(function)));
    }
  });
}

/// The host hands out one result for several calls: what an earlier one left is no part of the next.
void answersAnew(Trial& trial) {
  trial.forEachFunction([&](const RegisteredFunction& function) {
    trial.step(fmt::format("{} twice", nameOf(function)));
    const Arguments arguments(fewestArguments(function), Value::ofText(u"no such thing"));
    const auto first = trial.call(function, arguments), second = trial.call(function, arguments);
    if (!first || !second) { return; }
    trial.expect(first->asText() == second->asText(),
                 fmt::format("{} answers \"{}\" and then \"{}\" to what cannot have changed anything.",
                             nameOf(function), toUtf8(first->asText()), toUtf8(second->asText())));
  });
}

void underAnotherNumber(Trial& trial) {
  trial.forEachFunction([&](const RegisteredFunction& function) {
    for (const std::int16_t id : {std::int16_t{0}, std::int16_t{-1}, std::int16_t{32'767}}) {
      RegisteredFunction other = function;
      other.key.id = id;
      trial.step(fmt::format("{} called as function {}", nameOf(function), id));
      trial.call(other, Arguments(fewestArguments(function)));
    }
  });
}

void inAnySession(Trial& trial) {
  const auto plugin = trial.started();
  if (plugin == nullptr) { return; }
  for (const std::uintptr_t session : {std::uintptr_t{0}, std::uintptr_t{1}, ~std::uintptr_t{0}}) {
    Registry::instance().setCurrentEnvironment({session, session});
    for (const auto& function : trial.functions()) {
      trial.step(fmt::format("{} in session {}", nameOf(*function), session));
      trial.call(*function, Arguments(fewestArguments(*function)));
    }
  }
}

void afterAnotherStart(Trial& trial) {
  const auto plugin = trial.started();
  if (plugin == nullptr) { return; }
  for (int round = 1; round <= 3; ++round) {
    for (const auto& function : trial.functions()) {
      trial.step(fmt::format("{} after start-up {}", nameOf(*function), round));
      trial.call(*function, Arguments(fewestArguments(*function), Value::ofText(u"event")));
    }
    if (const Status done = plugin->shutdown(); !done) { trial.fail(done.error().message); }
    if (const auto started = plugin->start(); !started) { trial.fail(started.error().message); }
  }
}

}  // namespace

std::vector<Check> callChecks() {
  return {
      {"call-fewest", "Each function can be called with the fewest arguments, empty ones.", Level::kBasic,
       withTheFewest},
      {"call-most", "Each function can be called with the most arguments, empty ones.", Level::kBasic, withTheMost},
      {"call-every-count", "Each function can be called with any count of arguments that it takes.", Level::kBasic,
       withEveryCount},
      {"call-too-few", "Fewer arguments than it takes do not break a function.", Level::kStrict, withFewer},
      {"call-too-many", "More arguments than it takes do not break a function.", Level::kStrict, withMore},
      {"call-texts", "Strange texts do not break a function.", Level::kBasic, withTexts},
      {"call-numbers", "Numbers of any size do not break a function.", Level::kBasic, withNumbers},
      {"call-dates", "Dates and times of any size do not break a function.", Level::kBasic, withDates},
      {"call-kinds", "Values of any type do not break a function.", Level::kBasic, withEveryKind},
      {"call-one-odd", "One strange argument among good ones does not break a function.", Level::kUsual,
       withOneOddArgument},
      {"call-long-texts", "Texts of 10 MB do not break a function.", Level::kUsual, withLongTexts},
      {"call-random", "Three thousand random calls do no harm.", Level::kUsual, atRandom},
      {"call-arguments-stay", "Functions leave their arguments as they are.", Level::kUsual, leavesArgumentsAlone},
      {"call-unicode", "Functions answer proper Unicode with proper Unicode.", Level::kUsual, answersProperUnicode},
      {"call-same-answer", "The same call without a chance to do anything has the same answer.", Level::kStrict,
       answersAnew},
      {"call-other-number", "A function may be called under another number.", Level::kStrict, underAnotherNumber},
      {"call-sessions", "Functions can be called in any session, and in none.", Level::kUsual, inAnySession},
      {"call-after-restart", "Functions work after shutdown and another start-up.", Level::kUsual, afterAnotherStart},
  };
}

}  // namespace orlocal::host::check
