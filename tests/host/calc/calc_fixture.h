#pragma once

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "host/calc/calc_failure.h"
#include "host/calc/session.h"
#include "host/calc/text_tools.h"

namespace orlocal::host::calc {

/// Functions that a test makes up.
class FakeLibrary : public FunctionLibrary {
 public:
  using Body = std::function<Result<Value>(std::span<const Value>)>;

  void add(Signature signature, Body body) { m_functions.emplace_back(std::move(signature), std::move(body)); }

  std::vector<Signature> signatures() const override {
    std::vector<Signature> result;
    for (const auto& [signature, body] : m_functions) { result.push_back(signature); }
    return result;
  }

  Result<Value> call(std::string_view name, std::span<const Value> arguments) override {
    for (const auto& [signature, body] : m_functions) {
      if (signature.name == name) { return body(arguments); }
    }
    return failure(ErrorCode::kNotFound, "no such function");
  }

 private:
  std::vector<std::pair<Signature, Body>> m_functions;
};

/// A session whose results are read as text, returns shown as `¶`.
class CalcTest : public ::testing::Test {
 protected:
  Outcome outcome(std::string_view calculation) {
    Result<Outcome> result = session.evaluate(calculation);
    if (result) { return std::move(*result); }
    ADD_FAILURE() << describe(calculation, result.error());
    return {};
  }

  std::string eval(std::string_view calculation) {
    std::string text;
    for (const char c : outcome(calculation).value.utf8()) { c == '\r' ? text += "¶" : text += c; }
    return text;
  }

  fmx::NativeType typeOf(std::string_view calculation) { return outcome(calculation).value.type(); }

  /// The message of a calculation that cannot be read, with its place in front.
  std::string errorOf(std::string_view calculation) {
    const Result<Outcome> result = session.evaluate(calculation);
    if (result) { return "no error"; }
    const std::string described = describe(calculation, result.error());
    return described.substr(0, described.find('\n'));
  }

  FakeLibrary library;
  Session session{library};
};

}  // namespace orlocal::host::calc
