#include "host/console/language_help.h"

#include <gtest/gtest.h>

#include "host/calc/builtins.h"
#include "host/calc/session.h"

namespace orlocal::host {
namespace {

class NoFunctions : public calc::FunctionLibrary {
 public:
  std::vector<calc::Signature> signatures() const override { return {}; }
  Result<Value> call(std::string_view, std::span<const Value>) override { return Value{}; }
};

TEST(LanguageHelp, StandsForEveryFunctionAndWordOfGet) {
  for (const calc::Builtin* function : calc::allBuiltins()) {
    EXPECT_NE(languageHelpOn(function->name), nullptr) << function->name;
  }
  for (const calc::GetEntry& entry : calc::allGets()) { EXPECT_NE(languageHelpOn(entry.name), nullptr) << entry.name; }
  EXPECT_EQ(languageHelp().size(), calc::allBuiltins().size() + calc::allGets().size());
}

TEST(LanguageHelp, HasExamplesThatComeToWhatItSays) {
  NoFunctions none;
  calc::Session session(none);
  for (const LanguageHelp& row : languageHelp()) {
    const auto outcome = session.evaluate(row.example);
    ASSERT_TRUE(outcome) << row.name;
    EXPECT_NE(row.example.find(row.name), std::string_view::npos) << row.name;
    EXPECT_TRUE(outcome->value.isValid()) << row.name;
    if (!row.result.empty()) { EXPECT_EQ(outcome->value.utf8(), row.result) << row.name; }
  }
}

TEST(LanguageHelp, IsFoundInAnyCase) {
  ASSERT_NE(languageHelpOn("LEFT"), nullptr);
  EXPECT_EQ(languageHelpOn("LEFT")->name, "Left");
  EXPECT_EQ(languageHelpOn("nonsense"), nullptr);
}

}  // namespace
}  // namespace orlocal::host
