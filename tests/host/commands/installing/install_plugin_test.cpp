#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <nlohmann/json.hpp>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/commands/command_line/child_process.h"
#include "host/commands/installing/file_owner.h"
#include "host/commands/installing/settings_entry.h"
#include "host/commands/program_fixture.h"

namespace orlocal::host {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

/// A host's folder, and settings and a store beside it, all of which another account may reach.
class InstallPlugin : public ProgramTest {
 protected:
  InstallPlugin() {
    ::chmod(folder.c_str(), 0755);
    fs::create_directory(host);
    if (isRoot) { static_cast<void>(!::chown(host.c_str(), nobody->user, nobody->group)); }
  }

  /// Installs for the folder's owner.
  ExitStatus install(std::vector<std::string> more = {}) {
    std::vector<std::string> words{"install-plugin", "--folder", host, "--settings", settings, "--store", store};
    words.insert(words.end(), more.begin(), more.end());
    return runAsTyped(words);
  }
  ExitStatus remove() { return runAsTyped({"install-plugin", "--folder", host, "--settings", settings, "--remove"}); }

  static std::string textOf(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
  }
  static struct stat statusOf(const fs::path& file) {
    struct stat found {};
    EXPECT_EQ(::stat(file.c_str(), &found), 0) << file;
    return found;
  }
  static std::string modeOf(const fs::path& file) {
    char text[8];
    std::snprintf(text, sizeof text, "%04o", statusOf(file).st_mode & 07777U);
    return text;
  }
  /// What stands in the host's folder, hidden files too.
  std::vector<std::string> inHost() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(host)) { names.push_back(entry.path().filename()); }
    std::sort(names.begin(), names.end());
    return names;
  }
  const std::vector<std::string> kBundle{"Orlocal.fmx", "Orlocal.resources"};

  const bool isRoot = ::geteuid() == 0;
  const Result<FileOwner> nobody = accountNamed("nobody");
  fs::path host = folder / "Extensions";
  fs::path plugin = host / "Orlocal.fmx";
  fs::path settings = folder / "etc" / "orlocal.conf";
  fs::path store = folder / "data" / "calendar.db";
};

TEST_F(InstallPlugin, PutsTheBundleThereAndNamesTheStore) {
  ASSERT_EQ(install(), ExitStatus::kDone) << err.str();
  EXPECT_EQ(inHost(), kBundle);
  EXPECT_EQ(modeOf(plugin), "0755");
  EXPECT_EQ(modeOf(host / "Orlocal.resources"), "0755");
  EXPECT_EQ(modeOf(host / "Orlocal.resources" / "de.lproj" / "Orlo.strings"), "0644");
  EXPECT_EQ(modeOf(settings), "0644");
  EXPECT_EQ(storeNamedIn(textOf(settings)), store.string());
  EXPECT_THAT(out.str(), HasSubstr("loads there"));
}

TEST_F(InstallPlugin, AllButTheSettingsBelongsToTheHostsAccount) {
  if (!isRoot) { GTEST_SKIP() << "only root can give files away"; }
  ASSERT_EQ(install({"--user", "nobody"}), ExitStatus::kDone) << err.str();
  for (const fs::path& path : {plugin, host / "Orlocal.resources" / "en.lproj", store.parent_path(), store}) {
    EXPECT_EQ(statusOf(path).st_uid, nobody->user) << path;
    EXPECT_EQ(statusOf(path).st_gid, nobody->group) << path;
  }
  EXPECT_EQ(modeOf(store.parent_path()), "0700");
  EXPECT_EQ(statusOf(settings).st_uid, 0U);
}

TEST_F(InstallPlugin, TakesTheGroupOfTheFolder) {
  if (!isRoot) { GTEST_SKIP() << "only root can give files away"; }
  constexpr gid_t kGroup = 12345;
  ASSERT_EQ(::chown(host.c_str(), 0, kGroup), 0);
  ASSERT_EQ(install({"--user", "nobody"}), ExitStatus::kDone) << err.str();
  EXPECT_EQ(statusOf(plugin).st_uid, nobody->user);
  EXPECT_EQ(statusOf(plugin).st_gid, kGroup);
}

TEST_F(InstallPlugin, LoadsItAsThatAccountAndNotAsRoot) {
  if (!isRoot) { GTEST_SKIP() << "only root can become another account"; }
  ASSERT_EQ(::chmod(host.c_str(), 0700), 0);
  ASSERT_EQ(::chown(host.c_str(), 0, 0), 0);
  EXPECT_EQ(install({"--user", "nobody"}), ExitStatus::kFailed);
  EXPECT_THAT(err.str(), HasSubstr("as nobody, " + host.string()));
  EXPECT_THAT(inHost(), IsEmpty());
}

TEST_F(InstallPlugin, ShowsEachStepAndTakesNone) {
  ASSERT_EQ(install({"--dry-run"}), ExitStatus::kDone) << err.str();
  EXPECT_THAT(out.str(), HasSubstr("would be taken"));
  EXPECT_THAT(inHost(), IsEmpty());
  EXPECT_FALSE(fs::exists(settings));
  EXPECT_FALSE(fs::exists(store.parent_path()));
  ASSERT_EQ(install({"--dry-run", "--json"}), ExitStatus::kDone);
  const auto rehearsed = nlohmann::json::parse(out.str());
  ASSERT_EQ(install({"--json"}), ExitStatus::kDone);
  const auto done = nlohmann::json::parse(out.str());
  EXPECT_EQ(rehearsed["steps"], done["steps"]);
  EXPECT_EQ(rehearsed["done"], false);
  EXPECT_EQ(done["done"], true);
  EXPECT_EQ(done["version"], std::string(CommandLine::kVersion).substr(std::string("orlocal ").size()));
}

TEST_F(InstallPlugin, ReplacesTheFormerOneWithoutWritingIntoIt) {
  write("Extensions/Orlocal.fmx", "the former one");
  write("Extensions/Orlocal.resources/old.strings", "old");
  write("Extensions/Orlocal.libraries/libold.so", "old");
  std::ifstream open(plugin);
  ASSERT_EQ(install(), ExitStatus::kDone) << err.str();
  EXPECT_EQ(inHost(), kBundle);
  EXPECT_FALSE(fs::exists(host / "Orlocal.resources" / "old.strings"));
  std::string line;
  std::getline(open, line);
  EXPECT_EQ(line, "the former one");
}

TEST_F(InstallPlugin, LeavesAllAsItWasWhenTheNewOneCannotBeLoaded) {
  write("Extensions/Orlocal.fmx", "the former one");
  const std::string broken = write("broken/Orlocal.fmx", "no plug-in");
  EXPECT_EQ(install({"--plugin", broken}), ExitStatus::kFailed);
  EXPECT_THAT(err.str(), HasSubstr("cannot be used"));
  EXPECT_EQ(inHost(), std::vector<std::string>{"Orlocal.fmx"});
  EXPECT_EQ(textOf(plugin), "the former one");
  EXPECT_FALSE(fs::exists(settings));
  EXPECT_FALSE(fs::exists(store.parent_path()));
}

TEST_F(InstallPlugin, LeavesAllAsItWasWhenTheStoreCannotBeUsed) {
  write("Extensions/Orlocal.fmx", "the former one");
  write("Extensions/Orlocal.resources/old.strings", "old");
  write("etc/orlocal.conf", "[calendar]\nzone = Europe/Berlin\n");
  write("data/calendar.db", "this is no calendar store, and it is longer than nothing");
  EXPECT_EQ(install(), ExitStatus::kFailed);
  EXPECT_THAT(err.str(), HasSubstr("cannot be used"));
  EXPECT_EQ(inHost(), kBundle);
  EXPECT_EQ(textOf(plugin), "the former one");
  EXPECT_EQ(textOf(host / "Orlocal.resources" / "old.strings"), "old");
  EXPECT_EQ(textOf(settings), "[calendar]\nzone = Europe/Berlin\n");
}

TEST_F(InstallPlugin, OnlyAddsToSettingsThatAreThere) {
  const std::string before = "# ours\n[calendar]\nzone = Europe/Berlin";
  write("etc/orlocal.conf", before + "\n");
  ::chmod(settings.c_str(), 0640);
  if (isRoot) { ASSERT_EQ(::chown(settings.c_str(), nobody->user, nobody->group), 0); }
  ASSERT_EQ(install(), ExitStatus::kDone) << err.str();
  EXPECT_THAT(textOf(settings), testing::StartsWith(before));
  EXPECT_EQ(storeNamedIn(textOf(settings)), store.string());
  EXPECT_EQ(modeOf(settings), "0640");
  ASSERT_EQ(remove(), ExitStatus::kDone) << err.str();
  EXPECT_EQ(textOf(settings), before + "\n");
}

TEST_F(InstallPlugin, LeavesTheStoreThatSettingsNameAndRefusesAnother) {
  const std::string theirs = folder / "theirs.db";
  ::chmod(folder.c_str(), 0777);
  const std::string before = "[store]\nfile = " + theirs + "\n";
  write("etc/orlocal.conf", before);
  EXPECT_EQ(install(), ExitStatus::kFailed);
  EXPECT_THAT(err.str(), HasSubstr(settings.string() + " names the store " + theirs));
  EXPECT_THAT(inHost(), IsEmpty());
  EXPECT_EQ(runAsTyped({"install-plugin", "--folder", host, "--settings", settings}), ExitStatus::kDone) << err.str();
  EXPECT_EQ(textOf(settings), before);
  EXPECT_TRUE(fs::exists(theirs));
}

TEST_F(InstallPlugin, RemoveLeavesTheStore) {
  ASSERT_EQ(install(), ExitStatus::kDone) << err.str();
  write("Extensions/Other.fmx", "somebody else's");
  ASSERT_EQ(remove(), ExitStatus::kDone) << err.str();
  EXPECT_EQ(inHost(), std::vector<std::string>{"Other.fmx"});
  EXPECT_FALSE(fs::exists(settings));
  EXPECT_TRUE(fs::exists(store));
  ASSERT_EQ(remove(), ExitStatus::kDone);
  EXPECT_THAT(out.str(), HasSubstr("Nothing of it is in " + host.string()));
}

TEST_F(InstallPlugin, TakesAwayWhatAKilledRunLeft) {
  write("Extensions/.orlocal-install-a1b2c3/Orlocal.fmx", "half a file");
  ASSERT_EQ(install(), ExitStatus::kDone) << err.str();
  EXPECT_EQ(inHost(), kBundle);
}

TEST_F(InstallPlugin, OneAtATimeWorksInAFolder) {
  const int other = ::open(host.c_str(), O_RDONLY | O_DIRECTORY);
  ASSERT_EQ(::flock(other, LOCK_EX), 0);
  EXPECT_EQ(install(), ExitStatus::kFailed);
  ::close(other);
  EXPECT_THAT(err.str(), HasSubstr("another install-plugin is at work in " + host.string()));
  EXPECT_THAT(inHost(), IsEmpty());
}

TEST_F(InstallPlugin, EachRefusalNamesThingAndRemedy) {
  EXPECT_EQ(runAsTyped({"install-plugin", "--folder", folder / "none"}), ExitStatus::kFailed);
  EXPECT_THAT(err.str(), HasSubstr("there is no folder " + (folder / "none").string()));
  EXPECT_THAT(err.str(), HasSubstr("--folder"));
  EXPECT_EQ(install({"--user", "no-such-account"}), ExitStatus::kFailed);
  EXPECT_THAT(err.str(), HasSubstr("no account no-such-account"));
  EXPECT_THAT(err.str(), HasSubstr("--user"));
  EXPECT_EQ(runAsTyped({"install-plugin", "--folder", host, "--store", store}), ExitStatus::kUsage);
  EXPECT_THAT(err.str(), HasSubstr("--settings"));
  EXPECT_EQ(runAsTyped({"install-plugin", "--folder", host, "--server"}), ExitStatus::kUsage);
  ASSERT_EQ(install(), ExitStatus::kDone) << err.str();
  EXPECT_EQ(install({"--plugin", plugin}), ExitStatus::kFailed);
  EXPECT_THAT(err.str(), HasSubstr("stands there already"));
}

TEST_F(InstallPlugin, OnlyRootGivesFilesToOthers) {
  if (!isRoot) { GTEST_SKIP() << "only root can become another account"; }
  const auto child = runInChild([&](std::ostream& text) -> Status {
    if (::setuid(nobody->user) != 0) { return failure(ErrorCode::kIo, "no other account"); }
    const Status forOthers = mayGiveTo(FileOwner{0, 0, "root", "root"});
    text << (forOthers ? "granted" : forOthers.error().message) << (mayGiveTo(*nobody) ? "; own: granted" : "");
    return {};
  });
  ASSERT_TRUE(child);
  EXPECT_THAT(child->output, HasSubstr("only root may give files to root"));
  EXPECT_THAT(child->output, HasSubstr("own: granted"));
}

TEST(StoreEntry, GoesAsItCame) {
  for (const std::string before : {"", "[calendar]\nzone = UTC\n", "# a remark\n\n[store]\nwait = 5\n"}) {
    const std::string with = withStoreEntry(before, "/data/a.db");
    EXPECT_EQ(storeNamedIn(with), "/data/a.db");
    EXPECT_TRUE(with.starts_with(before));
    EXPECT_EQ(withoutStoreEntry(with), before);
  }
}

TEST(StoreEntry, StaysWhereSomebodyElseWroteIt) {
  EXPECT_EQ(withoutStoreEntry("[store]\nfile = /data/a.db\n"), std::nullopt);
}

TEST(StoreEntry, KeepsWhatStandsBehindIt) {
  const std::string with = withStoreEntry("[calendar]\nzone = UTC\n", "/data/a.db") + "[display]\ncolor = never\n";
  EXPECT_EQ(withoutStoreEntry(with), "[calendar]\nzone = UTC\n[display]\ncolor = never\n");
}

}  // namespace
}  // namespace orlocal::host
