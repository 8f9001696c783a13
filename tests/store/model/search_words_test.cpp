#include "store/model/search_words.h"

#include <gmock/gmock.h>

namespace orlocal::store {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

std::vector<std::string> split(std::string_view text) {
  std::vector<std::string> words;
  for (const FoldedWord& word : wordsOf(text)) { words.push_back(word.text); }
  return words;
}

bool finds(std::string_view terms, std::string_view text) { return SearchTerms(terms).placeIn(text).has_value(); }

TEST(SearchWords, AreSplitAtWhatIsNoLetterOrDigit) {
  EXPECT_THAT(split("Team-Meeting, room 4b (new)"), ElementsAre("team", "meeting", "room", "4b", "new"));
  EXPECT_THAT(split("  "), ElementsAre());
  EXPECT_THAT(split("ada@example.org"), ElementsAre("ada", "example", "org"));
}

TEST(SearchWords, AreComparedWithoutCaseAndAccents) {
  EXPECT_EQ(split("Zürich"), split("ZU\u0308RICH"));
  EXPECT_EQ(split("Zürich"), split("zurich"));
  EXPECT_EQ(split("Straße"), split("STRASSE"));
  EXPECT_EQ(split("Ἀθῆναι"), split("αθηναι"));
  EXPECT_EQ(split("Чёрный"), split("черный"));
  EXPECT_EQ(split("ﬁnal Ｆｕｌｌ"), split("final full"));
}

TEST(SearchWords, OfScriptsWithoutBlanksAreTheirLetters) {
  EXPECT_THAT(split("東京で会議"), ElementsAre("東", "京", "で", "会", "議"));
  EXPECT_THAT(split("会議room"), ElementsAre("会", "議", "room"));
  EXPECT_NE(split("か"), split("が"));
  EXPECT_THAT(split("회의 준비"), ElementsAre("회의", "준비"));
}

TEST(SearchWords, KnowWhereTheyStood) {
  const auto words = wordsOf("In Zürich");
  ASSERT_EQ(words.size(), 2U);
  EXPECT_EQ(words[1].begin, 3U);
  EXPECT_EQ(words[1].end, 10U);
}

TEST(SearchWords, ArePicturesToo) { EXPECT_TRUE(finds("🎂", "Ada 🎂 40")); }

struct FoundCase {
  const char* terms;
  const char* text;
  bool found;
};

TEST(SearchTermsInAText, AreFoundAsTheHeaderSays) {
  constexpr FoundCase kCases[] = {
      {"meet", "Team meeting", true},
      {"eet", "Team meeting", false},
      {"\"team meet\"", "Team meeting", true},
      {"\"meeting team\"", "Team meeting", false},
      {"\"te meeting\"", "Team meeting", false},
      {"e-mail", "Write an E-Mail", true},
      {"e-mail", "mail e", false},
      {"example.org", "ada@example.org", true},
      {"京で", "東京で会議", true},
      {"京会", "東京で会議", false},
      {"\"unfinished", "unfinished", true},
  };
  for (const FoundCase& each : kCases) { EXPECT_EQ(finds(each.terms, each.text), each.found) << each.terms; }
}

TEST(SearchTermsInAText, MayBeNone) {
  EXPECT_TRUE(SearchTerms("").empty());
  EXPECT_TRUE(SearchTerms(" -- \"\" ").empty());
  EXPECT_FALSE(SearchTerms("a").empty());
}

TEST(SearchTermsInAnItem, AreAllInOneFieldOrInSeveral) {
  Item item;
  item.title = "Review";
  item.location = "Room 4";
  Attendee& grace = item.attendees.emplace_back();
  grace.address = "MAILTO:grace@example.org";
  grace.name = "Grace Hopper";
  EXPECT_TRUE(SearchTerms("review").in(item)->allInTitle);
  const auto both = SearchTerms("review hopper").in(item);
  ASSERT_TRUE(both);
  EXPECT_THAT(both->fields, ElementsAre(SearchField::kTitle, SearchField::kPeople));
  EXPECT_FALSE(both->allInTitle);
  EXPECT_TRUE(SearchTerms("grace@ex").in(item));
  EXPECT_FALSE(SearchTerms("mailto").in(item));
  EXPECT_FALSE(SearchTerms("review nobody").in(item));
}

TEST(IndexedWords, HaveEachWordOnceAndNoMoreOfALongOneThanIsTyped) {
  Item item;
  item.title = "b a B";
  item.notes = std::string(1'000, 'x') + " a";
  EXPECT_EQ(indexedWords(item), "a b " + std::string(60, 'x'));
  EXPECT_THAT(SearchTerms(std::string(70, 'x')).expression(), HasSubstr("\"" + std::string(60, 'x') + "\"*"));
}

}  // namespace
}  // namespace orlocal::store
