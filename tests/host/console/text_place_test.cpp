#include "host/console/text_place.h"

#include <gtest/gtest.h>

namespace orlocal::host {
namespace {

/// "Left 0 Mon": the function, the argument's number and what was typed of the text.
std::string placeAt(std::string_view beforeCursor) {
  const auto place = textPlaceAt(beforeCursor);
  return place ? place->function + " " + std::to_string(place->argument) + " " + place->typed : "none";
}

TEST(TextPlace, IsTheArgumentOfTheCallAround) {
  EXPECT_EQ(placeAt("Left ( \"Mon"), "Left 0 Mon");
  EXPECT_EQ(placeAt("Orlo_SaveItem( \"event\" ; \""), "Orlo_SaveItem 1 ");
  EXPECT_EQ(placeAt("Outer( 1 ; Inner( 2 ; 3 ) ; \"a b"), "Outer 2 a b");
}

TEST(TextPlace, IsNoneOutsideOfTexts) {
  EXPECT_EQ(placeAt(""), "none");
  EXPECT_EQ(placeAt("Left ( \"Mon\" ; "), "none");
}

TEST(TextPlace, MayStandInNoCall) {
  EXPECT_EQ(placeAt("1 & \"a"), " 0 a");
  EXPECT_EQ(placeAt("( \"a"), " 0 a");
  EXPECT_EQ(placeAt("Substitute ( x ; [ \"a\" ; \"b"), " 1 b");
}

TEST(TextPlace, TakesQuotesAndBracketsInTextsForWhatTheyAre) {
  EXPECT_EQ(placeAt("Left( \"a\\\"b;(\" ; \"c"), "Left 1 c");
  EXPECT_EQ(placeAt("Left( \"a\\\""), "Left 0 a\\\"");
}

TEST(TextPlace, IsTheLastValueOfAList) { EXPECT_EQ(placeAt("F( \"Work¶Ho"), "F 0 Ho"); }

}  // namespace
}  // namespace orlocal::host
