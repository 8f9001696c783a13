#include <atomic>
#include <cstdlib>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include <fmt/format.h>
#include <pthread.h>

#include "store/export.h"
#include "store/import.h"
#include "store/store_fixture.h"

namespace {

/// What is asked of memory by threads other than the one that runs the tests.
struct OtherThreads {
  std::atomic<bool> watched{false}, seen{false}, getNone{false};
  std::thread::id own;

  void ask() {
    if (!watched || std::this_thread::get_id() == own) { return; }
    seen = true;
    if (getNone) { throw std::bad_alloc(); }
  }
};
OtherThreads g_otherThreads;

}  // namespace

void* operator new(std::size_t size) {
  g_otherThreads.ask();
  if (void* memory = std::malloc(size == 0 ? 1 : size)) { return memory; }
  throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return std::malloc(size == 0 ? 1 : size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace orlocal::store {
namespace {

/// So many that several threads have something to read.
constexpr int kMany = 5'000;

ImportOptions withWorkers(unsigned workers) {
  ImportOptions options;
  options.workers = workers;
  return options;
}

std::string calendarOf(const std::string& items) {
  return "BEGIN:VCALENDAR\nX-WR-CALNAME:Many\n" + items +
         "BEGIN:VTIMEZONE\nTZID:Own clock\nBEGIN:STANDARD\nDTSTART:19700101T000000\nTZOFFSETFROM:+0517\n"
         "TZOFFSETTO:+0517\nEND:STANDARD\nEND:VTIMEZONE\nEND:VCALENDAR\n";
}

std::string eventOf(int number, const std::string& lines, const std::string& start = ";TZID=Europe/Berlin") {
  const std::string begin = start.empty() ? "" : fmt::format("DTSTART{}:202611{:02}T090000\n", start, 1 + number % 28);
  return fmt::format("BEGIN:VEVENT\nUID:{}\nSUMMARY:Number {}\n{}{}END:VEVENT\n", number, number, begin, lines);
}

/// Each thing that hangs on what stands before it in the file, now and then among events that do not.
std::string itemNumber(int i) {
  if (i % 997 == 996) { return eventOf(i, "", fmt::format(";TZID=Nowhere {}", i % 2)); }
  if (i % 811 == 810 && i > kMany / 2) { return eventOf(i, "", ";TZID=Own clock"); }
  if (i % 607 == 606) { return eventOf(i, "", ""); }
  if (i % 503 == 502) { return eventOf(i, "RRULE:FREQ=MINUTELY;INTERVAL=20\n"); }
  if (i % 401 == 400) { return eventOf(i, "RRULE:FREQ=YEARLY;BYMONTH=2;BYMONTHDAY=30\n"); }
  if (i % 59 == 58) { return eventOf(i, "RRULE:RSCALE=HEBREW;FREQ=YEARLY;BYMONTH=5;BYMONTHDAY=8\n"); }
  if (i % 211 == 210) {
    return eventOf(i - 1, "RECURRENCE-ID:20261111T080000Z\n") + eventOf(i, "RECURRENCE-ID:not a date\n");
  }
  if (i % 7 == 3) { return eventOf(i, "RRULE:FREQ=WEEKLY;COUNT=5\nPRIORITY:99\n"); }
  return eventOf(i, i % 5 == 0 ? "DURATION:PT1H\n" : "LOCATION:Hall\n");
}

class ImportWorkers : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    g_otherThreads.own = std::this_thread::get_id();
    g_otherThreads.seen = false;
    g_otherThreads.watched = true;
  }
  void TearDown() override {
    g_otherThreads.getNone = false;
    g_otherThreads.watched = false;
    StoreTest::TearDown();
  }

  static std::string manyItems() {
    std::string items;
    for (int i = 0; i < kMany; ++i) { items += itemNumber(i); }
    return calendarOf(items);
  }
  static std::string contentOf(CalendarStore& from) {
    std::string text;
    EXPECT_TRUE(
        exportCalendars(from, from.calendars(CalendarKind::kEvents).value(), [&](std::string_view piece) -> Status {
          text += piece;
          return {};
        }));
    return text;
  }
  /// What several make of the text, each number of them in a store of its own, is what one makes of it.
  void expectTheSame(const std::string& text, const std::vector<unsigned>& numbers) {
    const auto alone = importCalendarText(*store, text, "many.ics").value();
    for (const unsigned workers : numbers) {
      StoreOptions options;
      options.file = folder / fmt::format("by-{}.db", workers);
      const auto other = CalendarStore::open(options).value();
      const auto together = importCalendarText(*other, text, "many.ics", withWorkers(workers)).value();
      EXPECT_EQ(together.added, alone.added);
      EXPECT_EQ(together.problems, alone.problems);
      EXPECT_EQ(together.warnings, alone.warnings);
      EXPECT_TRUE(contentOf(*other) == contentOf(*store)) << workers << " workers";
    }
  }
};

TEST_F(ImportWorkers, BringAndReportWhatOneDoes) {
  expectTheSame(manyItems(), {2, 3, 8});
  EXPECT_TRUE(g_otherThreads.seen);
}

TEST_F(ImportWorkers, ReportAsManyWarningsAsOneDoes) {
  std::string items;
  for (int i = 0; i < 6'000; ++i) { items += eventOf(i, "PRIORITY:99\nSEQUENCE:none\n"); }
  expectTheSame(calendarOf(items), {4});
}

TEST_F(ImportWorkers, FindChangedItemsAgain) {
  ASSERT_TRUE(importCalendarText(*store, manyItems(), "many.ics", withWorkers(4)));
  const auto again = importCalendarText(*store, manyItems(), "many.ics", withWorkers(4)).value();
  EXPECT_EQ(again.added + again.updated, 0U);
}

TEST_F(ImportWorkers, AreNoneUnlessAskedFor) {
  ASSERT_TRUE(importCalendarText(*store, manyItems(), "many.ics"));
  EXPECT_FALSE(g_otherThreads.seen);
}

TEST_F(ImportWorkers, LetTheCallerKnowThatMemoryRanOut) {
  const std::string before = contentOf(*store), text = manyItems();
  g_otherThreads.getNone = true;
  EXPECT_THROW((void)importCalendarText(*store, text, "many.ics", withWorkers(4)), std::bad_alloc);
  g_otherThreads.getNone = false;
  EXPECT_EQ(contentOf(*store), before);
  EXPECT_TRUE(importCalendarText(*store, text, "many.ics", withWorkers(4)));
}

/// While it lives, threads ask for more memory than there are addresses for, so that none starts.
class NoThreads {
 public:
  NoThreads() {
    pthread_attr_init(&m_attributes);
    pthread_getattr_default_np(&m_attributes);
    pthread_attr_getstacksize(&m_attributes, &m_usual);
    setStack(std::size_t{1} << 47);
  }
  ~NoThreads() {
    setStack(m_usual);
    pthread_attr_destroy(&m_attributes);
  }
  NoThreads(const NoThreads&) = delete;
  NoThreads& operator=(const NoThreads&) = delete;

 private:
  void setStack(std::size_t size) {
    pthread_attr_setstacksize(&m_attributes, size);
    pthread_setattr_default_np(&m_attributes);
  }

  pthread_attr_t m_attributes{};
  std::size_t m_usual = 0;
};

TEST_F(ImportWorkers, AreDoneWithoutWhereNoThreadStarts) {
  const NoThreads none;
  ASSERT_ANY_THROW(std::thread([] {}).join());
  expectTheSame(manyItems(), {4});
  EXPECT_FALSE(g_otherThreads.seen);
}

TEST_F(ImportWorkers, EndWhenTheImportIsStopped) {
  const std::string before = contentOf(*store), text = manyItems();
  std::atomic<bool> stop{false};
  ImportOptions options = withWorkers(4);
  options.stop = &stop;
  options.progress = [&](std::size_t done, std::size_t) { stop = done > 0; };
  const auto report = importCalendarText(*store, text, "many.ics", options);
  ASSERT_FALSE(report);
  EXPECT_EQ(report.error().code, ErrorCode::kInterrupted);
  EXPECT_EQ(contentOf(*store), before);
}

}  // namespace
}  // namespace orlocal::store
