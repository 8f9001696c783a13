#include "accounts/transport/secret.h"

#include <cstdlib>
#include <fstream>
#include <iterator>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "accounts/transport/first_line.h"

namespace orlocal::accounts {
namespace {

using testing::HasSubstr;
using testing::Not;

/// A folder of its own, and the file of secrets in it.
class Secrets : public testing::Test {
 protected:
  ~Secrets() override {
    std::filesystem::remove_all(folder);
    ::unsetenv("CREDENTIALS_DIRECTORY");
  }

  std::filesystem::path write(const std::string& name, const std::string& text, mode_t mode = 0600) const {
    std::ofstream(folder / name, std::ios::binary) << text;
    ::chmod((folder / name).c_str(), mode);
    return folder / name;
  }
  Result<Secret> get(const SecretSource& source) { return secretOf(source, "id-1", "Home", kept); }
  std::string messageOf(const SecretSource& source) {
    const auto secret = get(source);
    return secret ? "(a secret)" : secret.error().message;
  }
  std::string bytes() const {
    std::ifstream file(secrets, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  static std::filesystem::path newFolder() {
    std::string name = testing::TempDir() + "orlocal-secrets-XXXXXX";
    if (::mkdtemp(name.data()) == nullptr) { std::abort(); }
    return name;
  }

  const std::filesystem::path folder = newFolder();
  const std::filesystem::path secrets = folder / "config" / "orlocal" / "secrets";
  SecretsFile kept{secrets};
};

TEST_F(Secrets, SourcesComeBackFromTheirText) {
  for (const char* text :
       {"none", "kept", "file:/run/a b", "file:name", "command:pass show a:b | head", "token:get token"}) {
    const auto source = secretSourceOf(text);
    ASSERT_TRUE(source) << text;
    EXPECT_EQ(textOf(*source), text);
  }
  for (const char* text : {"", "file", "file:", "command:", "other:x", "Kept"}) {
    EXPECT_FALSE(secretSourceOf(text)) << text;
  }
}

// Kept passwords.

TEST_F(Secrets, ArePartOfAFileThatIsTheUsersAlone) {
  ASSERT_TRUE(kept.keep("id-1", "p\xC3\xA4ss \"word\"\\"));
  struct stat found {};
  ASSERT_EQ(::stat(secrets.c_str(), &found), 0);
  EXPECT_EQ(found.st_mode & 07777U, 0600U);
  ASSERT_EQ(::stat(secrets.parent_path().c_str(), &found), 0);
  EXPECT_EQ(found.st_mode & 07777U, 0700U);
  EXPECT_EQ(get(KeptPassword{})->value, "p\xC3\xA4ss \"word\"\\");
}

TEST_F(Secrets, AreReplacedAndForgottenEachByItself) {
  ASSERT_TRUE(kept.keep("id-1", "one"));
  ASSERT_TRUE(kept.keep("id-2", "two"));
  ASSERT_TRUE(kept.keep("id-1", "other"));
  EXPECT_EQ(*kept.password("id-1"), "other");
  EXPECT_EQ(*kept.password("id-2"), "two");
  ASSERT_TRUE(kept.forget("id-1"));
  EXPECT_EQ(*kept.password("id-1"), std::nullopt);
  EXPECT_EQ(*kept.password("id-2"), "two");
  EXPECT_THAT(bytes(), Not(HasSubstr("other")));
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(secrets.parent_path()), {}), 1) << "no draft is left";
}

TEST_F(Secrets, AreNoneWhereThereIsNoFile) {
  EXPECT_EQ(*kept.password("id-1"), std::nullopt);
  EXPECT_TRUE(kept.forget("id-1"));
  EXPECT_FALSE(std::filesystem::exists(secrets.parent_path()));
  EXPECT_THAT(messageOf(KeptPassword{}), HasSubstr("\"Home\" is not kept here"));
}

TEST_F(Secrets, AreNotTakenFromAFileThatOthersMayRead) {
  ASSERT_TRUE(kept.keep("id-1", "geheim"));
  ::chmod(secrets.c_str(), 0640);
  const auto read = kept.password("id-1");
  ASSERT_FALSE(read);
  EXPECT_EQ(read.error().code, ErrorCode::kNotPermitted);
  EXPECT_THAT(read.error().message, HasSubstr("0640"));
  EXPECT_FALSE(kept.keep("id-2", "x"));
}

TEST_F(Secrets, AreNotShownWhenTheirFileCannotBeRead) {
  ASSERT_TRUE(kept.keep("id-1", "geheim"));
  std::ofstream(secrets, std::ios::app) << "{\"account\":\"id-2\",\"password\":\"geheim2\n";
  const auto read = kept.password("id-1");
  ASSERT_FALSE(read);
  EXPECT_THAT(read.error().message, HasSubstr("Line 2 "));
  EXPECT_THAT(read.error().message, Not(HasSubstr("geheim")));
  EXPECT_FALSE(kept.keep("id-1", "x")) << "what cannot be read is not written over";
}

TEST_F(Secrets, MayLieBehindALink) {
  std::filesystem::create_directories(secrets.parent_path());
  std::filesystem::create_symlink(write("elsewhere", ""), secrets);
  ASSERT_TRUE(kept.keep("id-1", "one"));
  EXPECT_TRUE(std::filesystem::is_symlink(secrets));
  EXPECT_EQ(*kept.password("id-1"), "one");
}

// Files.

TEST_F(Secrets, AreTheFirstLineOfAFile) {
  EXPECT_EQ(get(PasswordFile{write("a", "pass word\r\nmore\n")})->value, "pass word");
  EXPECT_EQ(get(PasswordFile{write("b", "whole", 0400)})->value, "whole");
}

TEST_F(Secrets, AreNotTakenFromFilesOfOthers) {
  EXPECT_THAT(messageOf(PasswordFile{write("a", "geheim", 0644)}), HasSubstr("its mode is 0644"));
  EXPECT_THAT(messageOf(PasswordFile{write("b", "geheim", 0640)}), HasSubstr("0600"));
  EXPECT_THAT(messageOf(PasswordFile{folder}), HasSubstr("no file"));
  EXPECT_THAT(messageOf(PasswordFile{folder / "none"}), HasSubstr("cannot be read"));
  EXPECT_THAT(messageOf(PasswordFile{write("c", "\n")}), HasSubstr("is empty"));
  EXPECT_THAT(messageOf(PasswordFile{write("d", "a\tb\n")}), HasSubstr("control characters"));
}

TEST_F(Secrets, AreCredentialsOfAServiceByTheirName) {
  EXPECT_THAT(messageOf(PasswordFile{"dav"}), HasSubstr("CREDENTIALS_DIRECTORY"));
  write("dav", "from the service\n", 0440);
  ::setenv("CREDENTIALS_DIRECTORY", folder.c_str(), 1);
  EXPECT_EQ(get(PasswordFile{"dav"})->value, "from the service");
  ::chmod((folder / "dav").c_str(), 0444);
  EXPECT_THAT(messageOf(PasswordFile{"dav"}), HasSubstr("0444"));
}

// Commands.

TEST_F(Secrets, AreTheFirstLineOfACommandsOutput) {
  const auto secret = get(PasswordCommand{"printf 'pass word\\nmore\\n'"});
  ASSERT_TRUE(secret) << secret.error().message;
  EXPECT_EQ(secret->value, "pass word");
  EXPECT_FALSE(secret->isToken);
  EXPECT_TRUE(get(TokenCommand{"echo ey.J0"})->isToken);
}

TEST_F(Secrets, AreNotShownWhenTheirCommandFails) {
  const std::string message = messageOf(PasswordCommand{"echo geheim; exit 3"});
  EXPECT_EQ(message, "The password command of the account \"Home\" ended with status 3.");
  EXPECT_THAT(messageOf(PasswordCommand{"echo geheim; kill -9 $$"}), HasSubstr("ended by signal 9"));
  EXPECT_THAT(messageOf(PasswordCommand{"true"}), HasSubstr("is empty"));
  EXPECT_THAT(messageOf(TokenCommand{"echo 'ge heim'"}), HasSubstr("no token has"));
  EXPECT_THAT(messageOf(TokenCommand{"echo 'ge heim'"}), Not(HasSubstr("heim'")));
  EXPECT_THAT(messageOf(PasswordCommand{"yes geheim"}), HasSubstr("prints too much"));
}

TEST_F(Secrets, ComeFromCommandsThatHaveNothingToRead) {
  EXPECT_EQ(get(PasswordCommand{"cat; echo done"})->value, "done");
}

TEST_F(Secrets, DoNotComeFromCommandsThatNeverEnd) {
  const auto line = firstLineOf("echo geheim; sleep 600 & wait", std::chrono::milliseconds(50), "The command", nullptr);
  ASSERT_FALSE(line);
  EXPECT_EQ(line.error().message, "The command did not end within 1 seconds.");
  const std::atomic<bool> stop = true;
  const auto stopped = firstLineOf("sleep 600", std::chrono::minutes(2), "The command", &stop);
  ASSERT_FALSE(stopped);
  EXPECT_EQ(stopped.error().code, ErrorCode::kInterrupted);
}

TEST_F(Secrets, AreNoneForWhoNeedsNone) { EXPECT_EQ(get(NoPassword{})->value, ""); }

}  // namespace
}  // namespace orlocal::accounts
