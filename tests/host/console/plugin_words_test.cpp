#include "host/console/plugin_words.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "backend/keywords.h"

namespace orlocal::host {
namespace {

using ::testing::IsEmpty;

/// The plug-in's own tables, as they are written: rows that begin with a word in quotes.
class PluginsOwnTables : public ::testing::Test {
 protected:
  static std::string textOf(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }

  static std::set<std::string> wordsOfRows(const std::filesystem::path& folder) {
    const std::regex row(R"re(\{"([a-z]+)",)re");
    std::set<std::string> words;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
      // No function takes colours by name.
      if (entry.path().extension() != ".cpp" || entry.path().filename() == "colors.cpp") { continue; }
      const std::string text = textOf(entry.path());
      for (std::sregex_iterator at(text.begin(), text.end(), row), end; at != end; ++at) { words.insert((*at)[1]); }
    }
    return words;
  }
};

TEST_F(PluginsOwnTables, HaveNoWordThatTheConsoleDoesNotKnow) {
  std::set<std::string> known;
  for (const PluginWord& word : pluginWords()) { known.emplace(word.word); }
  // Other spellings of words that are offered, and attributes that no function asks for.
  const std::set<std::string> unoffered{"incompleted", "complete", "role"};
  for (const char* folder : {"", "eventkit"}) {
    const auto words = wordsOfRows(std::filesystem::path(ORLOCAL_SOURCES) / "backend" / folder);
    EXPECT_GT(words.size(), 10U);
    for (const std::string& word : words) {
      EXPECT_TRUE(known.contains(word) || unoffered.contains(word)) << folder << ": " << word;
    }
  }
}

TEST_F(PluginsOwnTables, HaveEachWordThatTheConsoleOffers) {
  std::string sources;
  for (const char* folder : {"backend", "backend/eventkit", "functions", "bridge"}) {
    for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(ORLOCAL_SOURCES) / folder)) {
      if (entry.is_regular_file()) { sources += textOf(entry.path()); }
    }
  }
  for (const PluginWord& word : pluginWords()) {
    // Any other form of an answer than "text" is the number.
    if (word.word == "number") { continue; }
    EXPECT_NE(sources.find('"' + std::string(word.word) + '"'), std::string::npos) << word.word;
  }
}

TEST_F(PluginsOwnTables, TakeTheWordsForWhatTheConsoleSaysTheyAre) {
  for (const PluginWord& row : pluginWords()) {
    const OptionalText word{std::string(row.word)};
    switch (row.kind) {
      case WordKind::kType:
        EXPECT_TRUE(itemKindNamed(word)) << row.word;
        break;
      case WordKind::kSpan:
        EXPECT_TRUE(spanNamed(word)) << row.word;
        break;
      case WordKind::kRecurrence:
        EXPECT_TRUE(recurrenceFrequencyNamed(word)) << row.word;
        break;
      case WordKind::kAction:
        EXPECT_TRUE(alarmActionNamed(word)) << row.word;
        break;
      case WordKind::kPriority:
        EXPECT_TRUE(priorityNamed(word)) << row.word;
        break;
      default:
        break;
    }
  }
}

TEST_F(PluginsOwnTables, NameEachFunctionThatHasAnExample) {
  const std::string strings = textOf(std::filesystem::path(ORLOCAL_RESOURCES) / "en.lproj" / "Orlo.strings");
  const std::regex prototype(R"re(= "(Orlo_\w+)[("])re");
  std::size_t functions = 0;
  for (std::sregex_iterator at(strings.begin(), strings.end(), prototype), end; at != end; ++at) {
    ++functions;
    EXPECT_THAT(std::string(exampleOf((*at)[1].str())), testing::HasSubstr((*at)[1].str()));
  }
  EXPECT_EQ(functions, 18U);
}

TEST(PluginWords, AreKnownByFunctionAndArgument) {
  EXPECT_THAT(kindsFor("orlo_saveitem", 1), testing::ElementsAre(WordKind::kSpan));
  EXPECT_THAT(kindsFor("Orlo_SaveItem", 2), IsEmpty());
  EXPECT_THAT(kindsFor("Left", 0), IsEmpty());
}

}  // namespace
}  // namespace orlocal::host
