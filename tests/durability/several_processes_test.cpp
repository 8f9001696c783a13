#include <memory>
#include <set>

#include <gtest/gtest.h>

#include "durability/saving_process.h"
#include "store/edits/edited_items.h"

namespace orlocal::test {
namespace {

class SeveralProcesses : public testing::TestWithParam<int> {};

TEST_P(SeveralProcesses, SavingAtOnceLoseNothing) {
  constexpr int kSaves = 40;
  TemporaryStore folder;
  openStore(folder.file());
  std::vector<std::unique_ptr<SavingProcess>> writers;
  for (int writer = 0; writer < GetParam(); ++writer) {
    writers.push_back(std::make_unique<SavingProcess>([&, writer](const SavingProcess::Tell& tell) {
      auto store = openStore(folder.file());
      for (int i = 0; i < kSaves; ++i) {
        store::Item event = newEvent(*store, std::to_string(writer) + "." + std::to_string(i));
        if (auto saved = saveEvent(*store, event, std::nullopt, store::Span::kThis); !saved) {
          throw std::runtime_error(saved.error().message);
        }
        tell(event.identifier);
      }
    }));
  }
  std::set<std::string> identifiers;
  for (auto& writer : writers) {
    for (auto& line : writer->finish()) { identifiers.insert(std::move(line)); }
    EXPECT_TRUE(writer->succeeded());
  }
  EXPECT_EQ(identifiers.size(), static_cast<std::size_t>(GetParam() * kSaves));
  auto store = openStore(folder.file());
  for (const auto& identifier : identifiers) {
    const auto event = store->event(identifier);
    ASSERT_TRUE(event) << event.error().message;
    EXPECT_TRUE(*event) << identifier;
  }
  EXPECT_EQ(integrityOf(folder.file()), "ok");
}

INSTANTIATE_TEST_SUITE_P(TwoToEight, SeveralProcesses, testing::Values(2, 4, 8));

TEST(MakingTheStore, ByManyProcessesAtOnceMakesItOnce) {
  TemporaryStore folder;
  std::vector<std::unique_ptr<SavingProcess>> makers;
  for (int i = 0; i < 6; ++i) {
    makers.push_back(std::make_unique<SavingProcess>([&](const SavingProcess::Tell& tell) {
      openStore(folder.file());
      tell("made");
    }));
  }
  for (auto& maker : makers) {
    maker->finish();
    EXPECT_TRUE(maker->succeeded());
  }
  auto store = openStore(folder.file());
  const auto events = store->calendars(store::CalendarKind::kEvents);
  const auto lists = store->calendars(store::CalendarKind::kReminders);
  ASSERT_TRUE(events && lists);
  EXPECT_EQ(events->size(), 1U);
  EXPECT_EQ(lists->size(), 1U);
}

TEST(AReaderBesideAWriter, SeesEachCommitAndNeverWaits) {
  TemporaryStore folder;
  auto reader = openStore(folder.file());
  const std::uint64_t before = reader->generation();
  SavingProcess writer([&](const SavingProcess::Tell& tell) {
    auto store = openStore(folder.file());
    store::Item event = newEvent(*store, "Seen");
    if (auto saved = saveEvent(*store, event, std::nullopt, store::Span::kThis); !saved) {
      throw std::runtime_error(saved.error().message);
    }
    tell(event.identifier);
  });
  const auto lines = writer.finish();
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_NE(reader->generation(), before);
  const auto event = reader->event(lines.front());
  ASSERT_TRUE(event) << event.error().message;
  ASSERT_TRUE(*event);
  EXPECT_EQ((*event)->title, "Seen");
}

}  // namespace
}  // namespace orlocal::test
