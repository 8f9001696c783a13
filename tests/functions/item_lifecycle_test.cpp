#include "functions/functions_fixture.h"

namespace orlocal {
namespace {

class ItemLifecycle : public OnBothBackEnds {};
ORLO_ON_BOTH_BACK_ENDS(ItemLifecycle);

TEST_P(ItemLifecycle, MakesAnItemOfTheTypeAsItWasTyped) {
  EXPECT_EQ(callWith(&Orlo_NewItem, "Event"), kWorked);
  EXPECT_EQ(told(), only("newItem(\"Event\")"));
}

TEST_P(ItemLifecycle, SavesWithTypeAndSpan) {
  EXPECT_EQ(callWith(&Orlo_SaveItem, "EVENT", "This"), kWorked);
  EXPECT_EQ(told(), only("saveItem(\"EVENT\", \"This\")"));
}

TEST_P(ItemLifecycle, SavesWithoutASpan) {
  callWith(&Orlo_SaveItem, "event");
  callWith(&Orlo_SaveItem, "event", kEmpty);
  EXPECT_EQ(told(), (std::vector<std::string>(2, "saveItem(\"event\", nil)")));
}

TEST_P(ItemLifecycle, RemovesByIdentifierOccurrenceAndSpan) {
  EXPECT_EQ(callWith(&Orlo_RemoveItem, "Event", "U", WallClock{2026, 12, 1, 9}, "Future"), kWorked);
  EXPECT_EQ(told(), only("removeItem(\"Event\", \"U\", 2026-12-01 08:00:00 +0000, \"Future\")"));
}

TEST_P(ItemLifecycle, RemovesWithoutWhatIsEmptyOrMissing) {
  callWith(&Orlo_RemoveItem, "event", "U", kEmpty, "this");
  callWith(&Orlo_RemoveItem, "event", "U");
  callWith(&Orlo_RemoveItem, "event", kEmpty);
  EXPECT_EQ(told(), (std::vector<std::string>{"removeItem(\"event\", \"U\", nil, \"this\")",
                                              "removeItem(\"event\", \"U\", nil, nil)",
                                              "removeItem(\"event\", nil, nil, nil)"}));
}

TEST_P(ItemLifecycle, LosesTheOccurrenceInZonesOfHalfHours) {
  useZone(-(3 * 3600 + 1800));
  callWith(&Orlo_RemoveItem, "event", "U", WallClock{2026, 12, 1, 9}, "this");
  EXPECT_EQ(told(), only("removeItem(\"event\", \"U\", nil, \"this\")"));
}

TEST_P(ItemLifecycle, DoesNothingWithoutAType) {
  g_llasterror = 9001;
  EXPECT_EQ(callWith(&Orlo_NewItem, kEmpty), kLeftAlone);
  EXPECT_EQ(callWith(&Orlo_SaveItem, kEmpty, "this"), kLeftAlone);
  EXPECT_EQ(callWith(&Orlo_RemoveItem, kEmpty, "U"), kLeftAlone);
  EXPECT_EQ(told(), kNoMessage);
  EXPECT_EQ(lastError(), "text Success");
}

TEST_P(ItemLifecycle, IsTheSentinelAfterAFailure) {
  notes().failure = 9042;
  EXPECT_EQ(callWith(&Orlo_NewItem, "x"), kFailed);
  EXPECT_EQ(lastError(), "text Invalid type specified in parameter.");
  notes().failure = 9053;
  EXPECT_EQ(callWith(&Orlo_SaveItem, "event", "x"), kFailed);
  EXPECT_EQ(lastError(), "text An invalid span value was passed. Valid values are 'this', 'future', or 'all'.");
  notes().failure = 9037;
  EXPECT_EQ(callWith(&Orlo_RemoveItem, "event", "U"), kFailed);
  EXPECT_EQ(lastError(), "text A span must be specified.");
}

TEST_P(ItemLifecycle, LooksAtTheCodeAndNotAtTheAnswer) {
  notes().number = -1;
  EXPECT_EQ(callWith(&Orlo_NewItem, "event"), kWorked);
  EXPECT_EQ(callWith(&Orlo_SaveItem, "event"), kWorked);
  EXPECT_EQ(callWith(&Orlo_RemoveItem, "event", "U"), kWorked);
}

TEST_F(FunctionTest, ResetsTheErrorTextOfTheLegacyBackEndOnly) {
  callWith(&Orlo_NewItem, "event");
  EXPECT_EQ(told(), only("newItem(\"event\")"));
  use(BackEnd::kLegacy);
  callWith(&Orlo_NewItem, "event");
  EXPECT_EQ(legacy.resets, 1);
}

}  // namespace
}  // namespace orlocal
