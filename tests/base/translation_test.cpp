#include "base/translation.h"

#include <map>
#include <string>

#include <gtest/gtest.h>

namespace orlocal {
namespace {

/// What it holds, and English for the rest.
class SmallCatalogue final : public Catalogue {
 public:
  const char* message(const char* english) const override {
    const auto found = m_messages.find(english);
    return found != m_messages.end() ? found->second : english;
  }
  const char* message(const char* one, const char* many, std::size_t count) const override {
    return message(count == 1 ? one : many);
  }

 private:
  std::map<std::string, const char*> m_messages{{"There is no calendar \"{}\".", "Kein Kalender \"{}\"."},
                                                {"{} of {}", "von {1} sind es {0}"},
                                                {"{} of them", "{} von {}"},
                                                {"{} is here", "{:d} ist da"},
                                                {"{} is there", "{ ist da"},
                                                {"{} went", "alle gingen"},
                                                {"one day", "ein Tag"},
                                                {"{} days", "{} Tage"},
                                                {"", "Content-Type: text/plain"}};
};

class Translations : public testing::Test {
 protected:
  void SetUp() override { useCatalogue(&m_catalogue); }
  void TearDown() override { useCatalogue(nullptr); }

 private:
  SmallCatalogue m_catalogue;
};

TEST(WithoutCatalogue, MessagesAreEnglish) {
  EXPECT_EQ(tr("There is no calendar \"{}\".", "Work"), "There is no calendar \"Work\".");
  EXPECT_EQ(trn("one day", "{} days", 1, 1), "one day");
  EXPECT_EQ(trn("one day", "{} days", 0, 0), "0 days");
  EXPECT_EQ(translated("title"), "title");
}

TEST_F(Translations, TakeTheArgumentsOfTheEnglish) {
  EXPECT_EQ(tr("There is no calendar \"{}\".", "Arbeit"), "Kein Kalender \"Arbeit\".");
}

TEST_F(Translations, MayHaveTheArgumentsInAnotherOrder) { EXPECT_EQ(tr("{} of {}", 2, 3), "von 3 sind es 2"); }

TEST_F(Translations, ChooseByNumber) {
  EXPECT_EQ(trn("one day", "{} days", 1, 1), "ein Tag");
  EXPECT_EQ(trn("one day", "{} days", 2, 2), "2 Tage");
}

TEST_F(Translations, GiveWayToEnglishWherePlaceholdersDontFit) {
  EXPECT_EQ(tr("{} of them", 2), "2 of them") << "more placeholders than arguments";
  EXPECT_EQ(tr("{} is here", "Ada"), "Ada is here") << "a placeholder for another type";
  EXPECT_EQ(tr("{} is there", "Ada"), "Ada is there") << "a placeholder that is not closed";
}

TEST_F(Translations, MayLeaveArgumentsOut) { EXPECT_EQ(tr("{} went", 3), "alle gingen"); }

TEST_F(Translations, OfWhatTheyLackAreEnglish) { EXPECT_EQ(tr("It is over."), "It is over."); }

TEST_F(Translations, OfNothingAreNothing) { EXPECT_EQ(translated(""), ""); }

TEST_F(Translations, OfTablesAreMadeWhenTheyAreShown) {
  constexpr const char* kRow = translatable("one day");
  EXPECT_EQ(translated(kRow), "ein Tag");
}

}  // namespace
}  // namespace orlocal
