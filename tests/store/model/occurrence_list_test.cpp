#include "store/model/occurrence_list.h"

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
  expectKept({long_, fraction, startsInFraction, endsBefore, farRow, noRow});
}

}  // namespace
}  // namespace orlocal::store
