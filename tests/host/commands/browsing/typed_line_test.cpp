#include "host/commands/browsing/typed_line.h"

#include <gtest/gtest.h>

namespace orlocal::host {
namespace {

using Name = BrowseKey::Name;

TEST(TypedLine, TakesCharactersWhereTheCursorIs) {
  TypedLine line("Lnch");
  for (int i = 0; i < 3; ++i) { line.press({Name::kLeft}); }
  line.press(BrowseKey::of("u"));
  EXPECT_EQ(line.text(), "Lunch");
  EXPECT_EQ(line.beforeCursor(), "Lu");
}

TEST(TypedLine, RemovesWholeCharactersOnBothSides) {
  TypedLine line("a評é");
  line.press({Name::kBackspace});
  EXPECT_EQ(line.text(), "a評");
  line.press({Name::kLeft});
  line.press({Name::kDelete});
  EXPECT_EQ(line.text(), "a");
}

TEST(TypedLine, StaysWithinItsEnds) {
  TypedLine line;
  for (const Name key : {Name::kLeft, Name::kRight, Name::kBackspace, Name::kDelete, Name::kHome, Name::kEnd}) {
    line.press({key});
  }
  line.press(BrowseKey::of("x"));
  line.press({Name::kHome});
  EXPECT_EQ(line.beforeCursor(), "");
  line.press({Name::kRight});
  line.press({Name::kRight});
  EXPECT_EQ(line.beforeCursor(), "x");
}

}  // namespace
}  // namespace orlocal::host
