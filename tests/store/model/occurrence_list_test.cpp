#include "store/model/occurrence_list.h"

#include <algorithm>
#include <random>
#include <tuple>

#include "store/store_fixture.h"

namespace orlocal::store {
namespace {

using std::chrono::days;
using std::chrono::microseconds;
using std::chrono::minutes;

Occurrence usual() { return {at("2026-11-02 09:00"), at("2026-11-02 10:00"), at("2026-11-02 09:00"), 12, 12}; }

void expectKept(const std::vector<Occurrence>& occurrences) {
  const OccurrenceList list(occurrences);
  ASSERT_EQ(list.size(), occurrences.size());
  for (std::size_t i = 0; i < list.size(); ++i) { EXPECT_EQ(list[i], occurrences[i]) << i; }
}

TEST(OccurrenceList, KeepsOccurrencesInTheirOrder) {
  Occurrence later = usual();
  later.item = later.event = 11;
  later.end = later.start;
  expectKept({usual(), later, usual()});
}

TEST(OccurrenceList, KeepsWhereTheRulePutAChangedOne) {
  Occurrence changed = usual();
  changed.originalStart -= minutes(30);
  Occurrence ofSeries = usual();
  ofSeries.event = 3;
  expectKept({usual(), changed, usual(), ofSeries});
}

TEST(OccurrenceList, KeepsWhatHardlyEverIs) {
  Occurrence long_ = usual();
  long_.end += days(365 * 200);
  Occurrence fraction = usual();
  fraction.end += microseconds(1);
  Occurrence startsInFraction = fraction;
  startsInFraction.start += microseconds(1);
  startsInFraction.originalStart = startsInFraction.start;
  Occurrence endsBefore = usual();
  endsBefore.end -= days(1);
  Occurrence farRow = usual();
  farRow.item = farRow.event = std::int64_t{1} << 40;
  Occurrence noRow = usual();
  noRow.item = noRow.event = 0;
  Occurrence lifetimeLater = usual(), lifetimeEarlier = usual();
  lifetimeLater.start = lifetimeLater.originalStart = lifetimeLater.end = lifetimeLater.start + days(365 * 100);
  lifetimeEarlier.start = lifetimeEarlier.originalStart = lifetimeEarlier.start - days(365 * 100);
  expectKept({long_, fraction, startsInFraction, endsBefore, farRow, noRow, lifetimeLater, lifetimeEarlier});
}

TEST(OccurrenceList, SortsByStartEndEventAndRow) {
  std::mt19937 random(5);
  const auto pick = [&](int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); };
  for (const int count : {0, 1, 2, 255, 256, 257, 258, 1'000, 20'000}) {
    for (const int spread : {0, 3, 100'000, 20'000'000}) {  // quarters of an hour: up to 570 years
      std::vector<Occurrence> expected;
      OccurrenceList list;
      for (int i = 0; i < count; ++i) {
        Occurrence each = usual();
        each.start = each.originalStart = each.start + minutes(15 * pick(0, spread));
        each.end = each.start + minutes(30 * pick(0, 3));
        each.item = each.event = pick(1, 1000);
        if (pick(0, 9) == 0) { each.event = pick(1, 1000); }
        if (pick(0, 99) == 0) { each.end += microseconds(pick(0, 5)); }
        expected.push_back(each);
        list.add(each);
      }
      std::sort(expected.begin(), expected.end(), [](const Occurrence& a, const Occurrence& b) {
        return std::tie(a.start, a.end, a.event, a.item) < std::tie(b.start, b.end, b.event, b.item);
      });
      list.sort();
      EXPECT_TRUE(list == expected) << count << " in " << spread;
    }
  }
}

}  // namespace
}  // namespace orlocal::store
