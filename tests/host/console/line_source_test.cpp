#include "host/console/line_source.h"

#include <sstream>

#include <gtest/gtest.h>

namespace orlocal::host {
namespace {

TEST(StreamLinesTest, ReadsLinesWithoutTheirBreaks) {
  std::istringstream in("a\r\nb");
  StreamLines lines(in);
  EXPECT_EQ(lines.read("> ").text, "a");
  EXPECT_EQ(lines.read("> ").text, "b");
}

TEST(StreamLinesTest, EndsWithTheStream) {
  std::istringstream in("");
  StreamLines lines(in);
  EXPECT_EQ(lines.read("> ").outcome, LineSource::Outcome::kEnd);
}

}  // namespace
}  // namespace orlocal::host
