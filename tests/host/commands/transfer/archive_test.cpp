#include "host/commands/transfer/archive.h"

#include <gmock/gmock.h>

#include "host/commands/transfer/packed_bytes.h"

namespace orlocal::host {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

class Archives : public testing::Test {
 protected:
  Status visit(const std::string& bytes) {
    return visitZip(bytes, "a.zip", limits, [&](std::string_view name, const Result<std::string>& content) {
      names.emplace_back(name);
      contents.push_back(content ? *content : "(" + content.error().message + ")");
      return names.size() < most;
    });
  }
  ArchiveLimits limits;
  std::size_t most = 100;
  std::vector<std::string> names, contents;
};

TEST_F(Archives, GiveTheirFilesByName) {
  ASSERT_TRUE(visit(zipped({{"b.ics", "two"}, {"a.ics", "one"}, {"folder/", ""}, {"folder/c.ics", "three"}})));
  EXPECT_THAT(names, ElementsAre("a.ics", "b.ics", "folder/c.ics"));
  EXPECT_THAT(contents, ElementsAre("one", "two", "three"));
}

TEST_F(Archives, KeepToThemselvesWhatIsHidden) {
  ASSERT_TRUE(visit(zipped({{".git/config", "x"}, {"a/.hidden.ics", "x"}, {"__MACOSX/a.ics", "x"}, {"a.ics", "y"}})));
  EXPECT_THAT(names, ElementsAre(".git/config", "a.ics"));
}

TEST_F(Archives, HaveNamesThatAreOnlyNames) {
  ASSERT_TRUE(visit(zipped({{"../../elsewhere.ics", "x"}, {"/etc/absolute.ics", "y"}})));
  EXPECT_THAT(names, ElementsAre("../../elsewhere.ics", "/etc/absolute.ics"));
}

TEST_F(Archives, EndWhereTheVisitorHasEnough) {
  most = 1;
  ASSERT_TRUE(visit(zipped({{"a.ics", "one"}, {"b.ics", "two"}})));
  EXPECT_THAT(names, ElementsAre("a.ics"));
}

TEST_F(Archives, AreRefusedWithTooManyFiles) {
  limits.members = 2;
  const auto done = visit(zipped({{"a", "x"}, {"b", "x"}, {"c", "x"}}));
  ASSERT_FALSE(done);
  EXPECT_THAT(done.error().message, HasSubstr("a.zip has more than 2 files"));
  EXPECT_THAT(names, IsEmpty());
}

TEST_F(Archives, AreRefusedWhenTheyExpandTooFar) {
  limits.expandedBytes = std::uint64_t{1} << 20U;
  const auto done = visit(zipped({{"a", std::string(700'000, 'x')}, {"b", std::string(700'000, 'y')}}));
  ASSERT_FALSE(done);
  EXPECT_THAT(done.error().message, HasSubstr("expands to more than 1 MiB"));
  EXPECT_THAT(names, IsEmpty());
}

TEST_F(Archives, AreRefusedWhenTheyExpandAsNoCalendarDoes) {
  const auto done = visit(zipped({{"bomb.ics", std::string(std::size_t{64} << 20U, '0')}}));
  ASSERT_FALSE(done);
  EXPECT_THAT(done.error().message, HasSubstr("200 times its size"));
  EXPECT_THAT(names, IsEmpty());
}

TEST_F(Archives, AreDamagedWhenASizeIsALie) {
  std::string bytes = zipped({{"a.ics", std::string(100'000, 'x')}});
  // The size that the directory at the end tells, and the one before the content.
  const std::string told("\xa0\x86\x01\x00", 4);
  for (std::size_t at = 0; (at = bytes.find(told, at)) != std::string::npos; ++at) {
    bytes.replace(at, 4, std::string("\x10\x00\x00\x00", 4));
  }
  ASSERT_TRUE(visit(bytes));
  EXPECT_THAT(contents, ElementsAre(HasSubstr("a.zip/a.ics is damaged")));
}

TEST_F(Archives, AreDamagedWhenTheyAreCut) {
  const std::string bytes = zipped({{"a.ics", "one"}});
  for (std::size_t size = 4; size < bytes.size(); ++size) { EXPECT_FALSE(visit(bytes.substr(0, size))) << size; }
}

TEST_F(Archives, SurviveAnyOtherByte) {
  const std::string bytes = zipped({{"a.ics", "some text that is packed"}, {"b.ics", "more of it"}});
  for (std::size_t at = 0; at < bytes.size(); ++at) {
    std::string broken = bytes;
    broken[at] = static_cast<char>(broken[at] ^ 0xff);
    (void)visit(broken);
    names.clear();
  }
  EXPECT_THAT(contents, testing::Contains(HasSubstr("is damaged")));
}

TEST(Gzip, GivesWhatItHolds) {
  EXPECT_EQ(expandedGzip(gzipped("one"), "a.gz", {}), "one");
  EXPECT_EQ(expandedGzip(gzipped("one") + gzipped("two"), "a.gz", {}), "onetwo");
  EXPECT_EQ(expandedGzip(gzipped(""), "a.gz", {}), "");
  EXPECT_EQ(expandedGzip(gzipped(std::string(300'000, 'x')), "a.gz", {}), std::string(300'000, 'x'));
}

TEST(Gzip, IsDamagedWhenItIsCut) {
  const std::string bytes = gzipped("some text that is packed");
  for (std::size_t size = 2; size < bytes.size(); ++size) {
    const auto text = expandedGzip(bytes.substr(0, size), "a.gz", {});
    ASSERT_FALSE(text) << size;
    EXPECT_THAT(text.error().message, HasSubstr("a.gz is damaged: it ends early"));
  }
}

TEST(Gzip, SurvivesAnyOtherByte) {
  const std::string bytes = gzipped("some text that is packed, some text that is packed");
  std::size_t damaged = 0;
  for (std::size_t at = 2; at < bytes.size(); ++at) {
    std::string broken = bytes;
    broken[at] = static_cast<char>(broken[at] ^ 0xff);
    if (!expandedGzip(broken, "a.gz", {})) { ++damaged; }
  }
  EXPECT_GT(damaged, bytes.size() / 2);
}

TEST(Gzip, IsRefusedWhenItExpandsTooFar) {
  const auto bomb = expandedGzip(gzipped(std::string(std::size_t{64} << 20U, '0')), "bomb.gz", {});
  ASSERT_FALSE(bomb);
  EXPECT_THAT(bomb.error().message, HasSubstr("bomb.gz expands to more than 200 times its size"));
  ArchiveLimits small;
  small.expandedBytes = std::uint64_t{1} << 20U;
  const auto large = expandedGzip(gzipped(std::string(std::size_t{2} << 20U, '0')), "large.gz", small);
  ASSERT_FALSE(large);
  EXPECT_THAT(large.error().message, HasSubstr("expands to more than 1 MiB"));
}

}  // namespace
}  // namespace orlocal::host
