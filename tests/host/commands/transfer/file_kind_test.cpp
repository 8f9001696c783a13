#include "host/commands/transfer/file_kind.h"

#include <string>

#include <gmock/gmock.h>

namespace orlocal::host {
namespace {

using namespace std::string_literals;

struct KindCase {
  const char* name;
  std::string bytes;
  FileKind kind;
  const char* looksLike;
};

class Recognised : public testing::TestWithParam<KindCase> {};

TEST_P(Recognised, ByItsContent) {
  const auto found = recognised(GetParam().bytes);
  EXPECT_EQ(found.kind, GetParam().kind);
  EXPECT_THAT(found.looksLike, testing::HasSubstr(GetParam().looksLike));
}

const KindCase kKinds[] = {
    {"Calendar", "BEGIN:VCALENDAR\r\nEND:VCALENDAR\r\n", FileKind::kCalendar, "calendar"},
    {"CalendarInSmallLetters", "begin:vcalendar\n", FileKind::kCalendar, "calendar"},
    {"CalendarBehindSomethingElse", "\r\n\r\nHello\r\n  BEGIN:VEVENT\r\n", FileKind::kCalendar, "calendar"},
    {"CalendarWithAMark", "\xEF\xBB\xBF"s + "BEGIN:VCALENDAR\n", FileKind::kCalendar, "calendar"},
    {"CalendarInUtf16", "\xFF\xFE"s + "B\0E\0G\0I\0N\0:\0V\0C\0A\0L\0E\0N\0D\0A\0R\0\n\0"s, FileKind::kCalendar,
     "calendar"},
    {"Cards", "BEGIN:VCARD\nVERSION:4.0\n", FileKind::kCards, "vCard"},
    {"Zip", "PK\x03\x04rest", FileKind::kZip, "zip"},
    {"Gzip", "\x1f\x8b\x08rest", FileKind::kGzip, "gzip"},
    {"Empty", "", FileKind::kOther, "an empty file"},
    {"Blanks", " \r\n\t ", FileKind::kOther, "blanks"},
    {"Elf", "\x7f"s + "ELF\x02\x01\x01"s, FileKind::kOther, "ELF"},
    {"Pdf", "%PDF-1.7\n", FileKind::kOther, "PDF"},
    {"Png", "\x89PNG\r\n\x1a\n", FileKind::kOther, "PNG"},
    {"Jpeg", "\xff\xd8\xff\xe0", FileKind::kOther, "JPEG"},
    {"Html", "\n <!doctype HTML><title>Sign in</title>", FileKind::kOther, "login page"},
    {"Xml", "<?xml version=\"1.0\"?>", FileKind::kOther, "XML"},
    {"Json", "{\"error\": \"unauthorized\"}", FileKind::kOther, "JSON"},
    {"Mail", "Received: from example.org\nSubject: x\n", FileKind::kOther, "mail"},
    {"Tar", std::string(257, 'x') + "ustar", FileKind::kOther, "tar archive; unpack"},
    {"Sqlite", "SQLite format 3\0rest"s, FileKind::kOther, "restore"},
    {"Script", "#!/bin/sh\n", FileKind::kOther, "script"},
    {"Binary", "abc\0def"s, FileKind::kOther, "binary"},
    {"Text", "Dear all,\n", FileKind::kOther, "text of another kind"},
    {"ShortBytes", "\x1f", FileKind::kOther, "text of another kind"},
};
INSTANTIATE_TEST_SUITE_P(Files, Recognised, testing::ValuesIn(kKinds),
                         [](const auto& tried) { return std::string(tried.param.name); });

TEST(SaysItIsACalendar, ByItsName) {
  for (const char* name : {"a.ics", "A.ICS", "x/y.vcf", "a.ics.gz", "b.ical"}) { EXPECT_TRUE(saysItIsACalendar(name)); }
  for (const char* name : {"a.txt", "ics", "a.gz", "README", "a.ics.bak"}) { EXPECT_FALSE(saysItIsACalendar(name)); }
}

}  // namespace
}  // namespace orlocal::host
