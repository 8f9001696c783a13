#include "store/icalendar/kept_lines.h"

#include <gmock/gmock.h>

namespace orlocal::store {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const char* const kKept =
    "STATUS:CANCELLED\n@LOCATION;LANGUAGE=en\nCategories;X-A=\":\":WORK,A\\,B\nLOCATION:here\n"
    "BEGIN:VALARM\nCATEGORIES:LOUD\nSTATUS:DEAD\nEND:VALARM\nCATEGORIES:LATE\n";

TEST(KeptLines, SayWhatAPropertysOwnLinesSay) {
  EXPECT_THAT(keptValues("CATEGORIES", kKept), ElementsAre("WORK,A\\,B", "LATE"));
  EXPECT_THAT(keptValues("status", kKept), ElementsAre("CANCELLED"));
  EXPECT_THAT(keptValues("GEO", kKept), IsEmpty());
  EXPECT_THAT(keptValues("STATUS", "STATUS"), IsEmpty()) << "no content line";
}

TEST(KeptLines, GoWithoutTheParametersOfAPropertyOrWithAllOfIt) {
  EXPECT_EQ(withoutParametersOf("LOCATION", "@LOCATION;LANGUAGE=en\nLOCATION:here\nGEO:1;2\n"),
            "LOCATION:here\nGEO:1;2\n");
  EXPECT_EQ(withoutLinesOf("location", "@LOCATION;LANGUAGE=en\nLOCATION:here\nGEO:1;2\n"), "GEO:1;2\n");
  EXPECT_EQ(withoutLinesOf("STATUS", "BEGIN:VALARM\nSTATUS:DEAD\nEND:VALARM\n"),
            "BEGIN:VALARM\nSTATUS:DEAD\nEND:VALARM\n");
}

TEST(KeptLines, OfAPropertyComeFromOthers) {
  const std::string other = "GEO:1;2\nCATEGORIES:NEW\nBEGIN:VALARM\nCATEGORIES:INNER\nEND:VALARM\n";
  EXPECT_THAT(keptValues("CATEGORIES", withLinesOf("CATEGORIES", kKept, other)), ElementsAre("NEW"));
  EXPECT_EQ(withLinesOf("CATEGORIES", "STATUS:DEAD\nCATEGORIES:OLD\n", ""), "STATUS:DEAD\n");
  EXPECT_EQ(withLinesOf("CATEGORIES", "", other), "CATEGORIES:NEW\n");
}

}  // namespace
}  // namespace orlocal::store
