#include "store/file/change_signal.h"

#include <chrono>
#include <fstream>
#include <thread>

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "fakes/no_descriptor_left.h"
#include "store/store_fixture.h"

namespace orlocal::store {
namespace {

using namespace std::chrono_literals;

/// Whether it wakes within `patience`.
bool wakes(const ChangeSignal& signal, std::chrono::milliseconds patience = 0ms) {
  pollfd any{.fd = signal.descriptor(), .events = POLLIN, .revents = 0};
  return ::poll(&any, 1, static_cast<int>(patience.count())) == 1;
}

/// Longer than the look every two seconds takes on a machine that is busy.
constexpr auto kLook = 20s;

class Signal : public testing::Test {
 protected:
  Signal() {
    std::string pattern = (std::filesystem::temp_directory_path() / "orlocal-signal-XXXXXX").string();
    folder = mkdtemp(pattern.data());
    file = folder / "calendar.db";
    bell = folder / "calendar.db-bell";
    std::ofstream(file).close();
  }
  ~Signal() override { std::filesystem::remove_all(folder); }

  std::unique_ptr<ChangeSignal> listening() { return ChangeSignal::listen(file).value(); }
  static mode_t modeOf(const std::filesystem::path& path) {
    struct stat found {};
    ::stat(path.c_str(), &found);
    return found.st_mode & 0777U;
  }

  std::filesystem::path folder, file, bell;
};

TEST_F(Signal, IsSilentAtFirst) { EXPECT_FALSE(wakes(*listening())); }

TEST_F(Signal, WakesOnceTheBellHasRung) {
  const auto signal = listening();
  Bell(file).ring();
  EXPECT_TRUE(wakes(*signal));
}

TEST_F(Signal, IsSilentAgainOnceDrained) {
  const auto signal = listening();
  Bell(file).ring();
  Bell(file).ring();
  signal->drain();
  EXPECT_FALSE(wakes(*signal));
}

TEST_F(Signal, WakesEverybodyWhoListens) {
  const auto one = listening();
  const auto two = listening();
  Bell(file).ring();
  one->drain();
  EXPECT_TRUE(wakes(*two)) << "what one has drained the other has not";
}

TEST_F(Signal, HearsAnotherProcess) {
  const auto signal = listening();
  const pid_t child = ::fork();
  if (child == 0) {
    Bell(file).ring();
    ::_exit(0);
  }
  ::waitpid(child, nullptr, 0);
  EXPECT_TRUE(wakes(*signal));
}

TEST_F(Signal, WakesOneThatSleeps) {
  const auto signal = listening();
  std::thread ringer([this] {
    std::this_thread::sleep_for(20ms);
    Bell(file).ring();
  });
  EXPECT_TRUE(wakes(*signal, kLook));
  ringer.join();
}

TEST_F(Signal, DoesNotHearTheBellOfAnotherStore) {
  const auto signal = listening();
  Bell(folder / "other.db").ring();
  EXPECT_FALSE(wakes(*signal));
}

TEST_F(Signal, WakesWithoutABellEveryTwoSeconds) {
  const auto signal = listening();
  EXPECT_TRUE(wakes(*signal, kLook));
  signal->drain();
  EXPECT_FALSE(wakes(*signal));
  EXPECT_TRUE(wakes(*signal, kLook)) << "and again";
}

TEST_F(Signal, ListensWhereNoBellCanBe) {
  const auto signal = ChangeSignal::listen(folder / "missing" / "calendar.db");
  ASSERT_TRUE(signal);
  EXPECT_TRUE(wakes(**signal, kLook));
}

TEST_F(Signal, HearsTheBellOnceTheSystemHasRoomForNoticesAgain) {
  std::unique_ptr<ChangeSignal> signal;
  {
    // For the queue and the timer, and for nothing else.
    const fakes::NoDescriptorLeft none(2);
    signal = listening();
    ASSERT_TRUE(signal->trouble());
    EXPECT_NE(signal->trouble()->message.find(file.string()), std::string::npos);
    EXPECT_NE(signal->trouble()->message.find("fs.inotify.max_user_instances"), std::string::npos);
    ASSERT_TRUE(wakes(*signal, kLook)) << "the look every two seconds";
    signal->drain();
    EXPECT_TRUE(signal->trouble()) << "there is still no room";
  }
  ASSERT_TRUE(wakes(*signal, kLook));
  signal->drain();
  EXPECT_FALSE(signal->trouble());
  Bell(file).ring();
  EXPECT_TRUE(wakes(*signal));
}

TEST_F(Signal, HasNoTroubleWhereThereIsNoBellYet) {
  EXPECT_FALSE(listening()->trouble());
  EXPECT_FALSE(ChangeSignal::listen(folder / "missing" / "calendar.db").value()->trouble());
}

TEST_F(Signal, HearsTheNewBellWhenTheOldOneWasRemoved) {
  const auto signal = listening();
  std::filesystem::remove(bell);
  signal->drain();
  ASSERT_TRUE(wakes(*signal, kLook)) << "the look every two seconds";
  signal->drain();
  Bell(file).ring();
  EXPECT_TRUE(wakes(*signal));
}

TEST_F(Signal, MakesTheBellForTheUsersOfTheStore) {
  std::filesystem::permissions(file, std::filesystem::perms(0660));
  Bell(file).ring();
  EXPECT_EQ(modeOf(bell), 0660U);
}

TEST_F(Signal, LeavesABellThatIsThereAsItIs) {
  std::ofstream(bell).close();
  std::filesystem::permissions(bell, std::filesystem::perms(0600));
  std::filesystem::permissions(file, std::filesystem::perms(0660));
  Bell(file).ring();
  EXPECT_EQ(modeOf(bell), 0600U);
}

TEST_F(Signal, DoesNotWriteThroughALink) {
  std::ofstream(folder / "precious") << "text";
  std::filesystem::create_symlink(folder / "precious", bell);
  Bell(file).ring();
  std::string text;
  std::ifstream(folder / "precious") >> text;
  EXPECT_EQ(text, "text");
}

TEST_F(Signal, DoesNotWaitForAPipeInThePlaceOfTheBell) {
  ASSERT_EQ(::mkfifo(bell.c_str(), 0600), 0);
  Bell(file).ring();
  SUCCEED() << "it came back";
}

class SignalOfAStore : public StoreTest {
 protected:
  Item review() { return event("Review", berlin("2026-11-02 09:00"), berlin("2026-11-02 10:00")); }
};

TEST_F(SignalOfAStore, WakesAfterACommit) {
  const auto listener = opened();
  const auto signal = listener->listen().value();
  saved(review());
  EXPECT_TRUE(wakes(*signal));
}

TEST_F(SignalOfAStore, IsSilentAfterARefusedSave) {
  const auto listener = opened();
  const auto signal = listener->listen().value();
  Item nowhere = review();
  nowhere.start.reset();
  EXPECT_FALSE(saveEvent(*store, nowhere, std::nullopt, Span::kThis));
  EXPECT_FALSE(wakes(*signal));
}

TEST_F(SignalOfAStore, WakesWhenTheCommitIsThereToBeRead) {
  const auto listener = opened();
  const auto signal = listener->listen().value();
  LogPosition position = listener->newestChange().value();
  const Item item = review();
  std::thread writer([&] {
    Item copy = item;
    auto other = opened();
    EXPECT_TRUE(saveEvent(*other, copy, std::nullopt, Span::kThis));
  });
  ASSERT_TRUE(wakes(*signal, kLook));
  signal->drain();
  EXPECT_EQ(listener->outsideCommits(position).value().size(), 1U);
  writer.join();
}

TEST_F(SignalOfAStore, IsTheSameThroughALinkToTheFile) {
  const auto signal = store->listen().value();
  StoreOptions linked = options();
  linked.file = folder / "link.db";
  std::filesystem::create_symlink(file, linked.file);
  auto other = CalendarStore::open(linked).value();
  Item item = review();
  ASSERT_TRUE(saveEvent(*other, item, std::nullopt, Span::kThis));
  EXPECT_TRUE(wakes(*signal));
}

}  // namespace
}  // namespace orlocal::store
