#include <cctype>
#include <functional>

#include "plain_host/chains.h"
#include "plain_host/plain_host_fixture.h"
#include "store/edits/item_writer.h"

// The built plug-in in a host that is plain C and could catch no exception, over a store that breaks while it is used:
// the process goes on, each function gives the code that it has for that, and the log tells why.

namespace orlocal::host {
namespace {

using ::testing::AnyOf;
using ::testing::HasSubstr;

/// What a broken store keeps from being done.
enum class Harm { kReading, kWriting, kSome };

/// What every line about a store says.
constexpr const char* kAnyReason = "fails user";

/// What happens to the store of the host.
struct Situation {
  const char* name;
  Harm harm;
  bool needsRoot;
  std::function<void(const fs::path& store, HostProcess& host)> bringAbout;
  const char* reason;  ///< in the log
};

/// Holds the turn to write until it is gone.
class AnotherProgram {
 public:
  static void takeTurn(const fs::path& store) { s_theOne = std::make_unique<AnotherProgram>(store); }
  static void end() { s_theOne.reset(); }

  explicit AnotherProgram(const fs::path& file) {
    store::StoreOptions options;
    options.file = file;
    auto opened = store::CalendarStore::open(std::move(options));
    if (!opened) { throw std::runtime_error(opened.error().message); }
    m_store = *std::move(opened);
    auto turn = m_store->startWriting();
    if (!turn) { throw std::runtime_error(turn.error().message); }
    m_turn = *std::move(turn);
  }

 private:
  static inline std::unique_ptr<AnotherProgram> s_theOne;
  std::unique_ptr<store::CalendarStore> m_store;
  std::unique_ptr<store::ItemWriter> m_turn;
};

void removeStore(const fs::path& store) {
  for (const char* end : {"", "-wal", "-shm"}) { fs::remove(store.string() + end); }
}
void overwrite(const fs::path& store, std::uintmax_t from) {
  const auto size = fs::file_size(store);
  std::fstream file(store, std::ios::in | std::ios::out | std::ios::binary);
  file.seekp(static_cast<std::streamoff>(from))
      .write(std::string(size - from, '\xA5').data(), static_cast<std::streamsize>(size - from));
}

const std::vector<Situation>& situations() {
  static const std::vector<Situation> all = {
      {"Removed", Harm::kReading, false, [](const auto& store, auto&) { removeStore(store); },
       "was removed or replaced while it was in use"},
      {"RemovedAlone", Harm::kReading, false, [](const auto& store, auto&) { fs::remove(store); },
       "was removed or replaced while it was in use"},
      {"RemovedWithItsFolder", Harm::kReading, false,
       [](const auto& store, auto&) { fs::remove_all(store.parent_path()); },
       "was removed or replaced while it was in use"},
      {"ReplacedByGarbage", Harm::kReading, false,
       [](const auto& store, auto&) {
         std::ofstream(store.parent_path() / "new") << std::string(10'000, 'x');
         fs::rename(store.parent_path() / "new", store);
       },
       "is no calendar store"},
      {"ReplacedByAFolder", Harm::kReading, false,
       [](const auto& store, auto&) {
         removeStore(store);
         fs::create_directory(store);
       },
       "is a folder"},
      {"ReplacedByADevice", Harm::kReading, false,
       [](const auto& store, auto&) {
         removeStore(store);
         fs::create_symlink("/dev/full", store);
       },
       "is a device and no file"},
      {"InAFolderThatMayNotBeSearched", Harm::kReading, true,
       [](const auto& store, auto& host) {
         ::chmod(store.parent_path().c_str(), 0700);
         host.ask("!user\t" + std::to_string(kNobody));
       },
       "Permission denied"},
      {"OnAFullDisk", Harm::kWriting, false, [](const auto&, auto& host) { host.ask("!full"); }, "There is no room"},
      {"LockedByAnother", Harm::kWriting, false, [](const auto& store, auto&) { AnotherProgram::takeTurn(store); },
       "is being written by another process"},
      {"CutOff", Harm::kSome, false, [](const auto& store, auto&) { fs::resize_file(store, 0); }, kAnyReason},
      {"CutInHalf", Harm::kSome, false,
       [](const auto& store, auto&) { fs::resize_file(store, fs::file_size(store) / 2); }, kAnyReason},
      {"Overwritten", Harm::kSome, false, [](const auto& store, auto&) { overwrite(store, 0); }, kAnyReason},
      {"OverwrittenFromTheSecondPageOn", Harm::kSome, false, [](const auto& store, auto&) { overwrite(store, 4096); },
       kAnyReason},
  };
  return all;
}

struct BackEnd {
  const char* name;
  const char* systemMinor;
  const char* chains;
};
constexpr BackEnd kBackEnds[] = {{"Current", "15", "/data/eventkit.txt"}, {"Older", "7", "/data/legacy.txt"}};

std::vector<Chain> chainsOf(const BackEnd& backEnd) {
  return chainsIn(ORLOCAL_TEST_DATA + std::string(backEnd.chains));
}
Chain chainNamed(std::string_view name, const BackEnd& backEnd) {
  for (Chain& chain : chainsOf(backEnd)) {
    if (chain.name == name) { return std::move(chain); }
  }
  throw std::runtime_error("no such chain");
}

bool isCode(const std::string& text) {
  return text.size() == 4 && std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isdigit(c); });
}

HostProcess::Answer answerOf(const std::string& expected) {
  return isCode(expected) ? HostProcess::Answer{"!!ERROR!!", expected} : HostProcess::Answer{expected, "0"};
}

/// Does `chain` with the store broken by `breakStore` in between; notes in `met` whether a call met the damage.
void perform(HostProcess& host, const Chain& chain, Harm harm, const std::function<void()>& breakStore, bool& met) {
  SCOPED_TRACE(chain.name);
  std::string kept;
  const auto filled = [&kept](std::string call) {
    if (const auto at = call.find('@'); at != std::string::npos) { call.replace(at, 1, kept); }
    return call;
  };
  for (const std::string& call : chain.prelude) {
    const auto answer = host.call(filled(call));
    ASSERT_EQ(answer.code, "0") << call;
    kept = answer.result;
  }
  EXPECT_EQ(host.ask("!register\tSolution\tCalendar changed"), "0");
  breakStore();
  met = harm == Harm::kReading || (harm == Harm::kWriting && !chain.readsOnly);
  for (const Ask& ask : chain.asks) {
    const auto answer = host.call(filled(ask.call));
    ASSERT_FALSE(answer.code.empty()) << "the host died of " << ask.call << "\n" << host.log();
    SCOPED_TRACE(ask.call);
    // At idle time the plug-in looks for what others did.
    EXPECT_EQ(host.ask("!idle"), "idle");
    switch (harm) {
      case Harm::kReading:
        EXPECT_EQ(answer, answerOf(ask.unreadable));
        break;
      case Harm::kWriting:
        EXPECT_EQ(answer, answerOf(ask.unwritable));
        break;
      case Harm::kSome:
        // What memory holds is answered still; the rest has its code.
        met = met || (answer != answerOf(ask.unwritable) && answer.code != "0");
        if (answer.code != "0") {
          EXPECT_THAT(answer, AnyOf(answerOf(ask.unreadable), answerOf(ask.unwritable), answerOf(ask.damaged)));
        }
        break;
    }
  }
}

class BreakingStore : public PlainHost, public testing::WithParamInterface<std::tuple<std::size_t, std::size_t>> {
 protected:
  const Situation& situation() const { return situations()[std::get<0>(GetParam())]; }
  const BackEnd& backEnd() const { return kBackEnds[std::get<1>(GetParam())]; }
};

TEST_P(BreakingStore, IsAnsweredWithTheCodeOfEachFunction) {
  if (situation().needsRoot && ::geteuid() != 0) { GTEST_SKIP() << "only root can become another user"; }
  const auto chains = chainsOf(backEnd());
  ASSERT_FALSE(chains.empty());
  for (const Chain& chain : chains) {
    fs::remove_all(store().parent_path());
    fs::remove(folder / "log");
    makeStore();
    const auto working = host(backEnd().systemMinor);
    bool met = false;
    const auto breakStore = [&] {
      situation().bringAbout(store(), *working);
      waitForALook();
    };
    perform(*working, chain, situation().harm, breakStore, met);
    EXPECT_TRUE(working->finish()) << chain.name;
    AnotherProgram::end();
    if (met) { EXPECT_THAT(working->log(), HasSubstr(situation().reason)) << chain.name; }
    if (HasFatalFailure()) { return; }
  }
}

/// A store that never could be used.
struct Beginning {
  const char* name;
  std::function<std::string(const fs::path& folder)> store;  ///< gives the setting; empty for none at all
  bool asAnotherUser;
  const char* reason;
};

const std::vector<Beginning>& beginnings() {
  static const std::vector<Beginning> all = {
      {"NoHome", [](const auto&) { return ""; }, false, "nothing says where the calendar store is"},
      {"Garbage",
       [](const auto& folder) {
         std::ofstream(folder / "calendar.db") << std::string(10'000, 'x');
         return folder / "calendar.db";
       },
       false, "is no calendar store"},
      {"Folder", [](const auto& folder) { return folder; }, false, "is a folder"},
      {"BelowAFile",
       [](const auto& folder) {
         std::ofstream(folder / "file") << "no folder";
         return folder / "file" / "calendar.db";
       },
       false, "Not a directory"},
      {"Device", [](const auto&) { return "/dev/full"; }, false, "is a device and no file"},
      {"BelowADevice", [](const auto&) { return "/dev/full/calendar.db"; }, false, "Not a directory"},
      {"CurrentFolderThatIsGone", [](const auto&) { return "calendar.db"; }, false, "cannot be made or reached"},
      {"BelowTheCurrentFolderThatIsGone", [](const auto&) { return "below/calendar.db"; }, false, "cannot be made"},
      {"FolderThatMayNotBeSearched",
       [](const auto& folder) {
         fs::create_directory(folder / "theirs");
         ::chmod((folder / "theirs").c_str(), 0700);
         return folder / "theirs" / "calendar.db";
       },
       true, "Permission denied"},
      {"FolderThatMayNotBeWritten",
       [](const auto& folder) {
         fs::create_directory(folder / "theirs");
         ::chmod((folder / "theirs").c_str(), 0555);
         return folder / "theirs" / "calendar.db";
       },
       true, "cannot be made or reached: Permission denied"},
  };
  return all;
}

class UnusableFromTheBeginning : public PlainHost,
                                 public testing::WithParamInterface<std::tuple<std::size_t, std::size_t>> {};

TEST_P(UnusableFromTheBeginning, IsAnsweredWithTheCodeOfEachFunction) {
  const Beginning& beginning = beginnings()[std::get<0>(GetParam())];
  const BackEnd& backEnd = kBackEnds[std::get<1>(GetParam())];
  if (beginning.asAnotherUser && ::geteuid() != 0) { GTEST_SKIP() << "only root can become another user"; }
  Chain chain = chainNamed("nothing open", backEnd);
  chain.prelude.clear();
  HostProcess working({{"ORLOCAL_STORE", beginning.store(folder)},
                       {"XDG_DATA_HOME", ""},
                       {"HOME", ""},
                       {"ORLOCAL_SYSTEM_MINOR", backEnd.systemMinor}},
                      folder / "log");
  fs::create_directory(folder / "gone");
  working.ask("!folder\t" + (folder / "gone").string());
  fs::remove(folder / "gone");
  if (beginning.asAnotherUser) { working.ask("!user\t" + std::to_string(kNobody)); }
  bool met = false;
  perform(
      working, chain, Harm::kReading, [] {}, met);
  EXPECT_TRUE(working.finish());
  EXPECT_THAT(working.log(), HasSubstr(beginning.reason));
}

INSTANTIATE_TEST_SUITE_P(Beginnings, UnusableFromTheBeginning,
                         testing::Combine(testing::Range(std::size_t{0}, beginnings().size()),
                                          testing::Range(std::size_t{0}, std::size(kBackEnds))),
                         [](const auto& asked) {
                           return std::string(beginnings()[std::get<0>(asked.param)].name) +
                                  kBackEnds[std::get<1>(asked.param)].name;
                         });

/// A store that another user may read and not write.
class ReadOnlyStore : public PlainHost, public testing::WithParamInterface<std::size_t> {};

TEST_P(ReadOnlyStore, IsReadAndItsSavesHaveTheirCodes) {
  if (::geteuid() != 0) { GTEST_SKIP() << "only root can become another user"; }
  const BackEnd& backEnd = kBackEnds[GetParam()];
  for (const Chain& chain : chainsOf(backEnd)) {
    fs::remove_all(store().parent_path());
    fs::remove(folder / "log");
    makeStore();
    const auto working = host(backEnd.systemMinor);
    working->ask("!user\t" + std::to_string(kNobody));
    bool met = false;
    perform(
        *working, chain, Harm::kWriting, [] {}, met);
    EXPECT_TRUE(working->finish()) << chain.name;
    if (met) { EXPECT_THAT(working->log(), HasSubstr("may not be written")) << chain.name; }
    if (HasFatalFailure()) { return; }
  }
}

INSTANTIATE_TEST_SUITE_P(BackEnds, ReadOnlyStore, testing::Range(std::size_t{0}, std::size(kBackEnds)),
                         [](const auto& asked) { return std::string(kBackEnds[asked.param].name); });

INSTANTIATE_TEST_SUITE_P(Situations, BreakingStore,
                         testing::Combine(testing::Range(std::size_t{0}, situations().size()),
                                          testing::Range(std::size_t{0}, std::size(kBackEnds))),
                         [](const auto& asked) {
                           return std::string(situations()[std::get<0>(asked.param)].name) +
                                  kBackEnds[std::get<1>(asked.param)].name;
                         });

}  // namespace
}  // namespace orlocal::host
