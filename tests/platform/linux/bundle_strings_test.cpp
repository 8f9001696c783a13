#include "platform/linux/bundle_strings.h"

#include <cstdlib>
#include <fstream>
#include <iterator>

#include <gtest/gtest.h>
#include <unistd.h>

#include "platform/linux/strings_table.h"
#include "platform/text.h"

namespace orlocal {
namespace {

namespace fs = std::filesystem;

std::string contentsOf(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

class StringsFile : public testing::Test {
 protected:
  static std::string valueOf(std::string_view text, std::string_view key) {
    const auto table = parseStringsTable(text);
    const auto found = table.find(key);
    return found == table.end() ? "none" : utf8FromUtf16(found->second);
  }
};

TEST_F(StringsFile, HoldsKeysAndValues) {
  const auto table = parseStringsTable("\"Orlo 1\" = \"one\";\n\"Orlo 2\"=\"two\"  ;\"Orlo 3\"\n=\n\"three\"\n;");
  ASSERT_EQ(table.size(), 3U);
  EXPECT_EQ(table.at("Orlo 1"), u"one");
  EXPECT_EQ(table.at("Orlo 2"), u"two");
  EXPECT_EQ(table.at("Orlo 3"), u"three");
}

TEST_F(StringsFile, MayHoldCommentsOfBothKinds) {
  EXPECT_EQ(valueOf("/* \"a\" = \"no\"; */ // \"a\" = \"no\";\n\"a\" /* x */ = \"yes\"; // end", "a"), "yes");
}

TEST_F(StringsFile, MayHoldEscapes) {
  EXPECT_EQ(valueOf(R"("a" = "\"x\" \\ \n\t\r \U00e4\u00DF";)", "a"), "\"x\" \\ \n\t\r äß");
}

TEST_F(StringsFile, IsUtf8WithOrWithoutAMark) {
  EXPECT_EQ(valueOf("\xEF\xBB\xBF\"a\" = \"Grüße 🗓\";", "a"), "Grüße 🗓");
}

TEST_F(StringsFile, KeepsTheFirstOfTwoValues) { EXPECT_EQ(valueOf("\"a\"=\"1\";\n\"a\"=\"2\";", "a"), "1"); }

TEST_F(StringsFile, LosesNoMoreThanTheLineOfAMistake) {
  EXPECT_EQ(valueOf("a = b;\n\"a\" = \"1\";", "a"), "1");
  EXPECT_EQ(valueOf("\"x\" \"y\";\n\"a\" = \"1\";", "a"), "1");
  EXPECT_EQ(valueOf("\"x\" = \"\\q\";\n\"a\" = \"1\";", "a"), "1");
  EXPECT_EQ(valueOf("\"x\" = \"\\U12\n\"a\" = \"1\";", "x"), "none");
  EXPECT_EQ(valueOf("\"x\" = \"never ends", "x"), "none");
  EXPECT_EQ(valueOf("/* never ends", "x"), "none");
  EXPECT_EQ(valueOf("\"x\" = \"\\", "x"), "none");
}

class Bundle : public testing::Test {
 protected:
  Bundle() : folder(fs::temp_directory_path() / ("orlocal_strings_" + std::to_string(::getpid()))) {
    fs::remove_all(folder);
  }
  ~Bundle() override { fs::remove_all(folder); }

  void add(const std::string& language, const std::string& text, const std::string& table = "Orlo") {
    fs::create_directories(folder / (language + ".lproj"));
    std::ofstream(folder / (language + ".lproj") / (table + ".strings"), std::ios::binary) << text;
  }
  std::string shown(std::vector<std::string> languages, std::string_view key = "Orlo 128",
                    std::string_view table = "Orlo") {
    const auto value = makeBundleStrings(folder, std::move(languages))->localizedString(0, key, table);
    return value ? utf8FromUtf16(*value) : "none";
  }

  fs::path folder;
};

TEST_F(Bundle, HasTheEnglishTableBuiltIn) {
  EXPECT_EQ(shown({"en"}), "Orlocal");
  EXPECT_EQ(shown({"en"}, "Orlo 1"), "Orlo1nnYYnn");
}

TEST_F(Bundle, PrefersAnEnglishFileToTheBuiltInTable) {
  add("en", "\"Orlo 128\" = \"changed\";");
  EXPECT_EQ(shown({"en"}), "changed");
}

TEST_F(Bundle, StopsAtEnglishBeforeLaterLanguages) {
  add("de", "\"Orlo 128\" = \"deutsch\";");
  EXPECT_EQ(shown({"en", "de", "en"}), "Orlocal");
}

TEST_F(Bundle, IsFoundBesideTheProgram) {
  // The test's program has no translations beside it, so whatever the language, English shows.
  EXPECT_EQ(makeBundleStrings()->localizedString(0, "Orlo 128", "Orlo"), u"Orlocal");
}

class ShippedTable : public testing::TestWithParam<const char*> {
 protected:
  StringsTable table = parseStringsTable(
      contentsOf(fs::path(ORLOCAL_RESOURCES) / (std::string(GetParam()) + ".lproj") / "Orlo.strings"));

  std::string valueOf(int number) const {
    const auto found = table.find("Orlo " + std::to_string(number));
    return found == table.end() ? "" : utf8FromUtf16(found->second);
  }
};

INSTANTIATE_TEST_SUITE_P(Languages, ShippedTable,
                         testing::Values("de", "en", "es", "fr", "it", "ja", "nl", "pt", "sv", "zh_CN"),
                         [](const auto& parameter) { return std::string(parameter.param); });

TEST_P(ShippedTable, HasTheKeysOfTheEnglishOne) {
  for (const auto& [key, value] : parseStringsTable(builtInStrings())) {
    EXPECT_TRUE(table.contains(key)) << key;
    EXPECT_FALSE(value.empty()) << key;
  }
  EXPECT_EQ(table.size(), parseStringsTable(builtInStrings()).size());
}

TEST_P(ShippedTable, AnswersWhatAHostAsksFor) {
  EXPECT_EQ(valueOf(1), "Orlo1nnYYnn");
  EXPECT_EQ(valueOf(128), "Orlocal");
  EXPECT_NE(valueOf(129), "");
  EXPECT_NE(valueOf(132), "");
}

TEST_P(ShippedTable, NamesEveryFunctionAsEnglishDoes) {
  const auto english = parseStringsTable(builtInStrings());
  for (int id = 151; id <= 168; ++id) {
    const auto nameIn = [](const std::string& prototype) { return prototype.substr(0, prototype.find('(')); };
    const std::string name = nameIn(valueOf(id));
    EXPECT_TRUE(name.starts_with("Orlo_")) << id;
    EXPECT_EQ(name.find(' '), std::string::npos) << id;
    EXPECT_EQ(name, nameIn(utf8FromUtf16(english.at("Orlo " + std::to_string(id)))));
  }
}

TEST_P(ShippedTable, DescribesEveryFunctionWithWordsABarAndAText) {
  for (int id = 151; id <= 168; ++id) {
    const std::string description = valueOf(id + 200);
    const auto bar = description.find(" | ");
    ASSERT_NE(bar, std::string::npos) << id;
    EXPECT_GT(bar, 0U) << id;
    EXPECT_TRUE(description.ends_with('.') || description.ends_with("。")) << id;
    EXPECT_LT(utf16FromUtf8(description).size(), 1023U) << id;
  }
}

TEST(BuiltInTable, IsTheEnglishFile) {
  EXPECT_EQ(builtInStrings(), contentsOf(fs::path(ORLOCAL_RESOURCES) / "en.lproj" / "Orlo.strings"));
}

}  // namespace
}  // namespace orlocal
