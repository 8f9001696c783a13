#include <algorithm>
#include <functional>
#include <set>

#include <gmock/gmock.h>

#include "store/store_fixture.h"

namespace orlocal::store {
namespace {

using Frequency = RecurrenceRule::Frequency;

struct SeriesCase {
  const char* name;
  CalendarTime start, end;
  RecurrenceRule rule;
  const char* from;  ///< range that is compared, Berlin
  const char* to;
};

RecurrenceRule made(Frequency frequency, const std::function<void(RecurrenceRule&)>& refine) {
  RecurrenceRule result;
  result.frequency = frequency;
  refine(result);
  return result;
}

std::vector<SeriesCase> cases() {
  return {
      {"daily across the clock change", berlin("2026-10-15 02:30"), berlin("2026-10-15 03:15"),
       made(Frequency::kDaily, [](auto&) {}), "2026-10-01 00:00", "2026-11-20 00:00"},
      {"daily into the gap", berlin("2026-03-20 02:30"), berlin("2026-03-20 03:00"),
       made(Frequency::kDaily, [](auto& r) { r.count = 20; }), "2026-03-01 00:00", "2026-05-01 00:00"},
      {"every other day, counted", berlin("2026-03-20 09:00"), berlin("2026-03-20 10:00"),
       made(Frequency::kDaily, [](auto& r) { r.interval = 2, r.count = 15; }), "2026-03-01 00:00", "2026-06-01 00:00"},
      {"weekly on several days", berlin("2026-09-28 09:00"), berlin("2026-09-28 10:00"),
       made(Frequency::kWeekly,
            [](auto& r) {
              r.byDay = {{0, 1}, {0, 3}, {0, 5}};
            }),
       "2026-09-01 00:00", "2026-12-01 00:00"},
      {"every other week on several days, counted", berlin("2026-09-30 09:00"), berlin("2026-09-30 10:00"),
       made(Frequency::kWeekly,
            [](auto& r) {
              r.interval = 2, r.count = 17, r.byDay = {{0, 1}, {0, 3}, {0, 0}};
            }),
       "2026-09-01 00:00", "2027-03-01 00:00"},
      {"weekly until a moment", berlin("2026-09-28 09:00"), berlin("2026-09-28 10:00"),
       made(Frequency::kWeekly, [](auto& r) { r.until = utc("2027-01-04 08:00"); }), "2026-09-01 00:00",
       "2027-06-01 00:00"},
      {"counted with a start beside the rule", berlin("2026-09-30 09:00"), berlin("2026-09-30 10:00"),
       made(Frequency::kWeekly,
            [](auto& r) {
              r.count = 9, r.byDay = {{0, 1}};
            }),
       "2026-09-01 00:00", "2027-06-01 00:00"},
      {"monthly by day", berlin("2026-01-31 18:00"), berlin("2026-01-31 19:30"),
       made(Frequency::kMonthly, [](auto& r) { r.byMonthDay = {31}; }), "2026-01-01 00:00", "2029-01-01 00:00"},
      {"second Tuesday", berlin("2026-01-13 18:00"), berlin("2026-01-13 19:30"),
       made(Frequency::kMonthly,
            [](auto& r) {
              r.byDay = {{2, 2}};
            }),
       "2026-01-01 00:00", "2028-01-01 00:00"},
      {"last working day, counted", berlin("2026-01-30 18:00"), berlin("2026-01-30 19:30"),
       made(Frequency::kMonthly,
            [](auto& r) {
              r.count = 14, r.byDay = {{0, 1}, {0, 2}, {0, 3}, {0, 4}, {0, 5}}, r.bySetPosition = {-1};
            }),
       "2026-01-01 00:00", "2028-01-01 00:00"},
      {"yearly", berlin("2016-11-02 18:00"), berlin("2016-11-02 19:30"), made(Frequency::kYearly, [](auto&) {}),
       "2016-01-01 00:00", "2040-01-01 00:00"},
      {"yearly whole day, counted", day("2016-02-29"), day("2016-03-01"),
       made(Frequency::kYearly, [](auto& r) { r.count = 9; }), "2016-01-01 00:00", "2060-01-01 00:00"},
      {"daily whole days until a date", day("2026-10-15"), day("2026-10-17"),
       made(Frequency::kDaily, [](auto& r) { r.until = day("2026-11-20"), r.interval = 3; }), "2026-10-01 00:00",
       "2027-01-01 00:00"},
      {"weekly whole day, endless", day("2026-10-15"), day("2026-10-16"), made(Frequency::kWeekly, [](auto&) {}),
       "2026-10-01 00:00", "2027-02-01 00:00"},
      {"floating", floating("2026-10-15 07:00"), floating("2026-10-15 07:10"),
       made(Frequency::kDaily, [](auto& r) { r.count = 25; }), "2026-10-01 00:00", "2027-02-01 00:00"},
      {"in another zone",
       {CalendarTime::Kind::kZoned, local("2026-10-20 20:00"), "America/New_York"},
       {CalendarTime::Kind::kZoned, local("2026-10-20 21:00"), "America/New_York"},
       made(Frequency::kDaily, [](auto& r) { r.count = 25; }),
       "2026-10-01 00:00",
       "2027-02-01 00:00"},
      {"in UTC until a moment", utc("2026-10-15 07:00"), utc("2026-10-15 07:10"),
       made(Frequency::kDaily, [](auto& r) { r.until = utc("2026-11-10 07:00"); }), "2026-10-01 00:00",
       "2027-02-01 00:00"},
  };
}

/// One occurrence as a user sees it.
struct Seen {
  Moment start, end;
  std::string title;

  friend auto operator<=>(const Seen&, const Seen&) = default;
  friend std::ostream& operator<<(std::ostream& out, const Seen& seen) {
    return out << shown(seen.start) << ".." << shown(seen.end) << " " << seen.title;
  }
};

/// Each case with exceptions and changed occurrences before and after the place of the change, held against what a user
/// saw before.
class Spans : public StoreTest, public testing::WithParamInterface<std::size_t> {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    what = cases()[GetParam()];
    Item series = event("original", what.start, what.end);
    series.recurrence.rules = {what.rule};
    series = saved(series);
    seriesId = series.id;
    // From behind, so that the places in front keep their numbers.
    const auto all = occurrences(at(what.from), at(what.to));
    ASSERT_GE(all.size(), 8u) << what.name;
    originals = all.size();
    ASSERT_TRUE(store->removeEvent(read(seriesId), all[6], Span::kThis));
    change(all[5], 90 * 60, "changed late");
    ASSERT_TRUE(store->removeEvent(read(seriesId), all[2], Span::kThis));
    change(all[1], 45 * 60, "changed early");
    before = seen();
    ASSERT_EQ(before.size(), originals - 2);
  }

  /// Moves an occurrence (whole days: by days instead of these seconds) and gives it a title.
  void change(const Occurrence& occurrence, int seconds, const std::string& title) {
    Item edited = openedAt(occurrence);
    move(edited, seconds);
    edited.title = title;
    const auto status = saveEvent(*store, edited, occurrence, Span::kThis);
    ASSERT_TRUE(status) << status.error().message;
  }
  static void move(Item& item, int seconds) {
    const int step = item.allDay() ? seconds / 2700 * 86'400 : seconds;
    item.start->local += step;
    item.end->local += step;
  }
  Item openedAt(const Occurrence& occurrence) {
    Item item = read(occurrence.item);
    if (item.series) { return item; }
    const auto place = [&](CalendarTime& time, Moment moment) {
      const Zone zone = time.kind == CalendarTime::Kind::kZoned ? *Zone::named(time.zone)
                        : time.kind == CalendarTime::Kind::kUtc ? Zone()
                                                                : berlinZone();
      time.local = zone.toLocal(moment);
    };
    place(*item.start, occurrence.start);
    place(*item.end, occurrence.end);
    return item;
  }

  std::vector<Seen> seen() {
    std::vector<Seen> list;
    for (const Occurrence& occurrence : occurrences(at(what.from), at(what.to))) {
      list.push_back({occurrence.start, occurrence.end, *read(occurrence.item).title});
    }
    return list;
  }
  std::vector<Occurrence> places() { return occurrences(at(what.from), at(what.to)); }

  /// The occurrences from the one at `index` on by where the rule put them, as a set of places in the list.
  std::set<std::size_t> fromPlace(std::size_t index) {
    const auto all = places();
    std::set<std::size_t> result;
    for (std::size_t i = 0; i < all.size(); ++i) {
      if (all[i].originalStart >= all[index].originalStart) { result.insert(i); }
    }
    return result;
  }

  SeriesCase what;
  ItemId seriesId = 0;
  std::size_t originals = 0;
  std::vector<Seen> before;
  /// The list is: 0, 1 (changed), 3, 4, 5 (changed), 7… of the rule's own.
  static constexpr std::size_t kMiddle = 3;
};

TEST_P(Spans, ChangesTheFieldsOfOneOccurrence) {
  const auto all = places();
  Item edited = openedAt(all[kMiddle]);
  edited.title = "edited";
  ASSERT_TRUE(saveEvent(*store, edited, all[kMiddle], Span::kThis));
  auto expected = before;
  expected[kMiddle].title = "edited";
  EXPECT_EQ(seen(), expected);
  EXPECT_EQ(read(edited.id).identifier, read(seriesId).identifier);
}

TEST_P(Spans, MovesOneOccurrence) {
  const auto all = places();
  change(all[kMiddle], 45 * 60, "moved");
  auto expected = before;
  auto now = seen();
  const auto found = std::find_if(now.begin(), now.end(), [](const Seen& s) { return s.title == "moved"; });
  ASSERT_NE(found, now.end());
  EXPECT_NE(found->start, before[kMiddle].start);
  now.erase(found);
  expected.erase(expected.begin() + kMiddle);
  EXPECT_EQ(now, expected);
}

TEST_P(Spans, ChangesThisAndTheLaterOccurrences) {
  const auto all = places();
  const auto later = fromPlace(kMiddle);
  const std::string leftIdentifier = read(seriesId).identifier;
  Item edited = openedAt(all[kMiddle]);
  edited.title = "edited";
  const auto status = saveEvent(*store, edited, all[kMiddle], Span::kFuture);
  ASSERT_TRUE(status) << status.error().message;
  auto expected = before;
  for (const std::size_t i : later) {
    if (expected[i].title == "original") { expected[i].title = "edited"; }
  }
  EXPECT_EQ(seen(), expected);
  EXPECT_EQ(read(seriesId).identifier, leftIdentifier);
  EXPECT_NE(edited.identifier, leftIdentifier);
  EXPECT_NE(edited.uid, read(seriesId).uid);
  for (const std::size_t i : later) { EXPECT_EQ(read(places()[i].item).identifier, edited.identifier); }
}

TEST_P(Spans, MovesThisAndTheLaterOccurrences) {
  const auto all = places();
  const auto later = fromPlace(kMiddle);
  Item edited = openedAt(all[kMiddle]);
  move(edited, 90 * 60);
  const auto status = saveEvent(*store, edited, all[kMiddle], Span::kFuture);
  ASSERT_TRUE(status) << status.error().message;
  const auto now = seen();
  // Days of the month and leap days do not all have a neighbour to move to; those rules are looked at on the left only.
  const bool movesDays = what.start.kind == CalendarTime::Kind::kDate;
  std::vector<Seen> expected, found;
  for (std::size_t i = 0; i < before.size(); ++i) {
    if (!later.contains(i)) { expected.push_back(before[i]); }
  }
  for (const Seen& one : now) {
    if (std::find(expected.begin(), expected.end(), one) != expected.end()) { found.push_back(one); }
  }
  EXPECT_EQ(found, expected);
  if (movesDays || std::string(what.name).find("gap") != std::string::npos) { return; }
  for (const std::size_t i : later) {
    Seen moved = before[i];
    if (moved.title == "original") {
      const Zone zone = what.start.kind == CalendarTime::Kind::kZoned ? *Zone::named(what.start.zone)
                        : what.start.kind == CalendarTime::Kind::kUtc ? Zone()
                                                                      : berlinZone();
      const auto length = moved.end - moved.start;
      moved.start = zone.toMoment(zone.toLocal(moved.start) + 90 * 60);
      moved.end = moved.start + length;
    }
    expected.push_back(moved);
  }
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(now, expected);
}

TEST_P(Spans, RemovesOneOccurrence) {
  ASSERT_TRUE(store->removeEvent(read(places()[kMiddle].item), places()[kMiddle], Span::kThis));
  auto expected = before;
  expected.erase(expected.begin() + kMiddle);
  EXPECT_EQ(seen(), expected);
}

TEST_P(Spans, RemovesAChangedOccurrence) {
  const auto all = places();
  const auto index = static_cast<std::size_t>(
      std::find_if(before.begin(), before.end(), [](const Seen& s) { return s.title == "changed early"; }) -
      before.begin());
  ASSERT_TRUE(store->removeEvent(read(all[index].item), all[index], Span::kThis));
  auto expected = before;
  expected.erase(expected.begin() + static_cast<std::ptrdiff_t>(index));
  EXPECT_EQ(seen(), expected);
}

TEST_P(Spans, RemovesThisAndTheLaterOccurrences) {
  const auto later = fromPlace(kMiddle);
  ASSERT_TRUE(store->removeEvent(read(seriesId), places()[kMiddle], Span::kFuture));
  std::vector<Seen> expected;
  for (std::size_t i = 0; i < before.size(); ++i) {
    if (!later.contains(i)) { expected.push_back(before[i]); }
  }
  EXPECT_EQ(seen(), expected);
}

TEST_P(Spans, ChangesTheWholeSeriesFromItsFirstOccurrenceOn) {
  const auto all = places();
  Item edited = openedAt(all[0]);
  edited.title = "edited";
  ASSERT_TRUE(saveEvent(*store, edited, all[0], Span::kFuture));
  auto expected = before;
  for (Seen& one : expected) {
    if (one.title == "original") { one.title = "edited"; }
  }
  EXPECT_EQ(seen(), expected);
  EXPECT_EQ(edited.id, seriesId);
  EXPECT_EQ(read(seriesId).start, what.start);
  EXPECT_EQ(read(seriesId).end, what.end);
}

TEST_P(Spans, RemovesTheWholeSeriesFromItsFirstOccurrenceOn) {
  ASSERT_TRUE(store->removeEvent(read(seriesId), places()[0], Span::kFuture));
  EXPECT_TRUE(seen().empty());
  EXPECT_EQ(*store->item(seriesId), nullptr);
}

TEST_P(Spans, LeavesTheSameOccurrencesWhenItIsSplitTwice) {
  for (const std::size_t index : {std::size_t{4}, std::size_t{2}}) {
    const auto all = places();
    Item edited = openedAt(all[index]);
    if (edited.series) { continue; }
    edited.notes = "split";
    ASSERT_TRUE(saveEvent(*store, edited, all[index], Span::kFuture));
    EXPECT_EQ(seen(), before);
  }
}

TEST_P(Spans, ShowsAnotherProcessTheSame) {
  const auto all = places();
  auto other = opened();
  EXPECT_EQ(*other->occurrences(range(at(what.from), at(what.to))), all);
  Item edited = openedAt(all[kMiddle]);
  edited.title = "edited";
  ASSERT_TRUE(saveEvent(*store, edited, all[kMiddle], Span::kFuture));
  EXPECT_EQ(*other->occurrences(range(at(what.from), at(what.to))), places());
}

INSTANTIATE_TEST_SUITE_P(Series, Spans, testing::Range<std::size_t>(0, cases().size()), [](const auto& series) {
  std::string name = cases()[series.param].name;
  std::replace_if(
      name.begin(), name.end(), [](char c) { return std::isalnum(static_cast<unsigned char>(c)) == 0; }, '_');
  return name;
});

}  // namespace
}  // namespace orlocal::store
