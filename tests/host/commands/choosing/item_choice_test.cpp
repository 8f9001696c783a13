#include "host/commands/choosing/item_choice.h"

#include "base/text.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/store_command_fixture.h"

namespace orlocal::host {
namespace {

using testing::AllOf;
using testing::HasSubstr;

class ChoosingItems : public StoreCommand {
 protected:
  void SetUp() override {
    imported(calendar(
        "Work", event("standup@x", "Standup",
                      "DTSTART;TZID=Europe/Berlin:20261102T090000\r\n"
                      "DTEND;TZID=Europe/Berlin:20261102T091500\r\n"
                      "RRULE:FREQ=DAILY\r\n") +
                    event("standup@x", "Long standup",
                          "RECURRENCE-ID;TZID=Europe/Berlin:20261104T090000\r\n"
                          "DTSTART;TZID=Europe/Berlin:20261105T140000\r\n"
                          "DTEND;TZID=Europe/Berlin:20261105T160000\r\n") +
                    event("lunch@x", "Lunch with Grace", "DTSTART:20261102T113000Z\r\nDTEND:20261102T123000Z\r\n") +
                    event("uebung@x", "Übung", "DTSTART;VALUE=DATE:20261103\r\n") +
                    todo("milk@x", "Buy milk", "DUE;VALUE=DATE:20261103\r\n")));
    imported(
        calendar("Home", event("lunch2@x", "lunch with Ada", "DTSTART:20261103T113000Z\r\nDTEND:20261103T123000Z\r\n") +
                             event("standup2@x", "Standup", "DTSTART:20261110T100000Z\r\nDTEND:20261110T110000Z\r\n")));
    auto opened = openUserStore();
    ASSERT_TRUE(opened);
    store = std::move(*opened);
  }
  Result<ChosenItem> chosen(const ItemWords& words) { return chooseItem(*store, store::Zone::ofUser(), words); }
  /// The UID of what is meant, or the code of the failure.
  std::string meant(const ItemWords& words) {
    const auto found = chosen(words);
    return found ? found->item->uid : found.error().code == ErrorCode::kRefused ? "several" : "none";
  }
  std::string refusal(const ItemWords& words) {
    const auto found = chosen(words);
    return found ? "" : found.error().message;
  }

  std::unique_ptr<store::CalendarStore> store;
};

TEST_F(ChoosingItems, AreNamedByAWholeIdentifierOrUid) {
  const auto item = chosen({.what = "lunch@x"});
  ASSERT_TRUE(item);
  EXPECT_EQ(item->item->title, "Lunch with Grace");
  EXPECT_EQ(item->calendar.title, "Work");
  EXPECT_EQ(meant({.what = item->item->itemIdentifier}), "lunch@x");
}

TEST_F(ChoosingItems, AreNamedByTheEndOfAnIdentifierInEitherCase) {
  const std::string end = shortIdentifier(*chosen({.what = "milk@x"})->item);
  EXPECT_EQ(end.size(), 8U);
  EXPECT_EQ(meant({.what = end}), "milk@x");
  EXPECT_EQ(meant({.what = caseFolded(end)}), "milk@x");
  EXPECT_EQ(meant({.what = "ing@x"}), "none");
  EXPECT_EQ(meant({.what = "milk@"}), "milk@x");
}

TEST_F(ChoosingItems, TheBestFitCounts) {
  struct Case {
    const char *what, *uid;
  };
  for (const Case& each : {Case{"Lunch with Grace", "lunch@x"},
                           {"LUNCH WITH ADA", "lunch2@x"},
                           {"buy", "milk@x"},
                           {"grace lunch", "lunch@x"},
                           {"übung", "uebung@x"},
                           {"ÜBUNG", "uebung@x"},
                           {"lunch", "several"},
                           {"Long standup", "standup@x"},
                           {"dinner", "none"},
                           {"", "none"}}) {
    EXPECT_EQ(meant({.what = each.what}), each.uid) << each.what;
  }
}

TEST_F(ChoosingItems, ADayACalendarAndAKindNarrowThem) {
  const store::LocalDay monday(2026, 11, 2), tuesday(2026, 11, 3), tenth(2026, 11, 10);
  EXPECT_EQ(meant({.what = "lunch", .day = tuesday}), "lunch2@x");
  EXPECT_EQ(meant({.what = "lunch", .calendars = {"Work"}}), "lunch@x");
  EXPECT_EQ(meant({.what = "Standup", .day = monday}), "standup@x");
  EXPECT_EQ(meant({.what = "Standup", .day = tenth}), "several");
  EXPECT_EQ(meant({.what = "Standup", .calendars = {"Home"}, .day = tenth}), "standup2@x");
  EXPECT_EQ(meant({.what = "Standup", .day = tenth, .time = "11:00"}), "standup2@x");
  EXPECT_EQ(meant({.what = "milk", .day = tuesday}), "milk@x");
  EXPECT_EQ(meant({.what = "milk", .day = monday}), "none");
  EXPECT_EQ(meant({.what = "milk", .kind = store::ItemKind::kEvent}), "none");
  EXPECT_EQ(meant({.what = "lunch", .calendars = {"Nowhere"}}), "none");
}

TEST_F(ChoosingItems, ADayNamesTheOccurrenceThatIsThereNow) {
  const auto moved = chosen({.what = "Long standup", .day = store::LocalDay(2026, 11, 5)});
  ASSERT_FALSE(moved) << "both the moved and the usual one are there";
  EXPECT_THAT(moved.error().message, HasSubstr("at 09:00, 14:00"));
  const auto named = chosen({.what = "Long standup", .day = store::LocalDay(2026, 11, 5), .time = "14:00"});
  ASSERT_TRUE(named);
  ASSERT_TRUE(named->occurrence);
  EXPECT_NE(named->occurrence->originalStart, named->occurrence->start);
  EXPECT_THAT(refusal({.what = "Long standup", .day = store::LocalDay(2026, 11, 4)}),
              AllOf(HasSubstr("\"Standup\" is not on Wed 4 Nov 2026"), HasSubstr("Mon 2 Nov 2026 09:00")));
}

TEST_F(ChoosingItems, TheIdentifierOfAChangedOccurrenceNamesIt) {
  std::string identifier;
  ASSERT_TRUE(store->forEachItem(chosen({.what = "standup@x"})->calendar.id,
                                 [&](const store::Item&, const std::vector<store::Item>& changed) -> Status {
                                   if (!changed.empty()) { identifier = changed.front().itemIdentifier; }
                                   return {};
                                 }));
  const auto named = chosen({.what = identifier});
  ASSERT_TRUE(named);
  EXPECT_EQ(named->item->uid, "standup@x");
  ASSERT_TRUE(named->occurrence);
  EXPECT_NE(named->occurrence->item, named->item->id);
}

TEST_F(ChoosingItems, RefusalsListWhatMayBeMeant) {
  EXPECT_THAT(refusal({.what = "lunch"}), AllOf(HasSubstr("\"lunch\" may be 2 things"),
                                                HasSubstr("\"Lunch with Grace\", Mon 2 Nov 2026 12:30, in \"Work\""),
                                                HasSubstr(shortIdentifier(*chosen({.what = "lunch2@x"})->item))));
  EXPECT_THAT(refusal({.what = "dinner"}), HasSubstr("no event or reminder \"dinner\""));
}

}  // namespace
}  // namespace orlocal::host
