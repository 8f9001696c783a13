#include "host/commands/scripting/transcript.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orlocal::host {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

Transcript transcriptOf(std::string_view text, bool markdown = false) {
  auto transcript = parseTranscript(text, markdown);
  if (transcript) { return std::move(*transcript); }
  ADD_FAILURE() << transcript.error().place.value_or(0) << ": " << transcript.error().message;
  return {};
}

std::string errorOf(std::string_view text) {
  const auto transcript = parseTranscript(text, false);
  return transcript ? "no error"
                    : std::to_string(transcript.error().place.value_or(0)) + ": " + transcript.error().message;
}

TEST(TranscriptTest, PairsCalculationsWithWhatTheyPrint) {
  const Transcript transcript = transcriptOf("> 1 + 1\n2\n> List ( 1 ; 2 )\n1\n2\n");
  ASSERT_EQ(transcript.examples.size(), 2U);
  EXPECT_EQ(transcript.examples[0].calculation, "1 + 1");
  EXPECT_THAT(transcript.examples[0].expected, ElementsAre("2"));
  EXPECT_EQ(transcript.examples[1].line, 3U);
  EXPECT_THAT(transcript.examples[1].expected, ElementsAre("1", "2"));
}

TEST(TranscriptTest, GoesOnWithACalculationWhileABracketIsOpen) {
  const Transcript transcript = transcriptOf("> List ( 1 ;\n  2 )\n1\n2\n");
  EXPECT_EQ(transcript.examples[0].calculation, "List ( 1 ;\n  2 )");
  EXPECT_THAT(transcript.examples[0].expected, ElementsAre("1", "2"));
}

TEST(TranscriptTest, EndsWhatIsExpectedAtAComment) {
  const Transcript transcript = transcriptOf("> 1\n1\n# note\n\n> 2\n2\n");
  EXPECT_THAT(transcript.examples[0].expected, ElementsAre("1"));
}

TEST(TranscriptTest, ReadsRegistrationsWithWhatTheyPrint) {
  const Transcript transcript = transcriptOf("@register Solution \"Calendar changed\"\n! reason\n");
  ASSERT_EQ(transcript.examples.size(), 1U);
  EXPECT_EQ(transcript.examples[0].kind, Example::Kind::kRegister);
  EXPECT_EQ(transcript.examples[0].calculation, "@register Solution \"Calendar changed\"");
  EXPECT_THAT(transcript.examples[0].words, ElementsAre("Solution", "Calendar changed"));
  EXPECT_THAT(transcript.examples[0].expected, ElementsAre("! reason"));
}

TEST(TranscriptTest, ReadsWhatAnotherProcessDoesAnywhere) {
  const Transcript transcript = transcriptOf("> 1\n1\n@outside eval '1 & \"x\"' it's\n! script F / S: New A\n> 2\n2\n");
  ASSERT_EQ(transcript.examples.size(), 3U);
  EXPECT_EQ(transcript.examples[1].kind, Example::Kind::kOutside);
  EXPECT_EQ(transcript.examples[1].line, 3U);
  EXPECT_THAT(transcript.examples[1].words, ElementsAre("eval", "1 & \"x\"", "it's"));
  EXPECT_THAT(transcript.examples[1].expected, ElementsAre("! script F / S: New A"));
}

TEST(TranscriptTest, ReadsWhatIsTypedAndWhatItPrints) {
  const Transcript transcript =
      transcriptOf("$ orlocal new \"Lunch with Ann\" --dry-run\nMon\n\n[2]\n$ orlocal undo\n$5\n");
  ASSERT_EQ(transcript.examples.size(), 2U);
  EXPECT_EQ(transcript.examples[0].kind, Example::Kind::kTyped);
  EXPECT_EQ(transcript.examples[0].calculation, "$ orlocal new \"Lunch with Ann\" --dry-run");
  EXPECT_THAT(transcript.examples[0].words, ElementsAre("new", "Lunch with Ann", "--dry-run"));
  EXPECT_THAT(transcript.examples[0].expected, ElementsAre("Mon", "", "[2]"));
  EXPECT_EQ(transcript.examples[1].line, 5U);
  EXPECT_THAT(transcript.examples[1].expected, ElementsAre("$5"));
}

TEST(TranscriptTest, RefusesStepsThatLackWords) {
  EXPECT_EQ(errorOf("@register Solution\n"), "1: @register takes a file and a script");
  EXPECT_EQ(errorOf("$ ls\n"), "1: what is typed begins with orlocal");
  EXPECT_EQ(errorOf("$ orlocal search \"x\n"), "1: a quote is not closed");
  EXPECT_EQ(errorOf("> 1\n1\n@outside\n"), "3: @outside needs a command");
  EXPECT_EQ(errorOf("@outside eval '1\n"), "1: a quote is not closed");
}

TEST(TranscriptTest, RefusesSettingsAfterTheFirstStep) {
  EXPECT_EQ(errorOf("@register F S\n@timezone UTC\n"), "2: settings stand before the first calculation");
}

TEST(TranscriptTest, ReadsSettings) {
  const TranscriptSettings settings =
      transcriptOf(
          "@store fresh\n@plugin none\n@system-minor 7\n@timezone Europe/Berlin\n@now 2026-11-02T08:00:00Z\n"
          "@host-version 56\n@language de\n@import examples/work.ics --calendar \"At work\"\n"
          "@import-contacts people.vcf\n> 1\n1\n")
          .settings;
  EXPECT_EQ(settings.store, "fresh");
  EXPECT_EQ(settings.plugin, "none");
  EXPECT_EQ(settings.systemMinor, "7");
  EXPECT_EQ(settings.timezone, "Europe/Berlin");
  EXPECT_EQ(settings.now, "2026-11-02T08:00:00Z");
  EXPECT_EQ(settings.hostVersion, 56);
  EXPECT_EQ(settings.language, "de");
  ASSERT_EQ(settings.preparations.size(), 2U);
  EXPECT_EQ(settings.preparations[0].command, "import");
  EXPECT_THAT(settings.preparations[0].words, ElementsAre("examples/work.ics", "--calendar", "At work"));
  EXPECT_EQ(settings.preparations[1].command, "import-contacts");
}

TEST(TranscriptTest, ReadsOnlyMarkedBlocksOfMarkdown) {
  const Transcript transcript = transcriptOf(
      "# Title\n> quoted\n```transcript\n> 1\n1\n```\ntext\n```\n> 2\n```\n```transcript\n> 3\n3\n```\n", true);
  ASSERT_EQ(transcript.examples.size(), 2U);
  EXPECT_EQ(transcript.examples[0].calculation, "1");
  EXPECT_EQ(transcript.examples[0].line, 4U);
  EXPECT_THAT(transcript.examples[0].expected, ElementsAre("1"));
  EXPECT_EQ(transcript.examples[1].calculation, "3");
}

TEST(TranscriptTest, SaysWhatIsWrongAndWhere) {
  EXPECT_EQ(errorOf("hello\n"), "1: this line belongs to no calculation; one begins with > or $");
  EXPECT_EQ(errorOf("> 1\n1\n@store fresh\n"), "3: settings stand before the first calculation");
  EXPECT_EQ(errorOf("@nonsense 1\n"), "1: @nonsense is no setting");
  EXPECT_EQ(errorOf("@store\n"), "1: @store takes one word");
  EXPECT_EQ(errorOf("@store a b\n"), "1: @store takes one word");
  EXPECT_EQ(errorOf("@host-version new\n"), "1: new is no number");
  EXPECT_EQ(errorOf("@import\n"), "1: @import needs a file");
  EXPECT_EQ(errorOf("@store \"a\n"), "1: a quote is not closed");
}

}  // namespace
}  // namespace orlocal::host
