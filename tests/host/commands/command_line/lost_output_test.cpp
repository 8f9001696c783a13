#include "host/commands/running_program.h"
#include "host/commands/store_command_fixture.h"

namespace orlocal::host {
namespace {

using Words = std::vector<std::string>;

/// Commands that tell something, on a disk that is full.
class LostOutput : public StoreCommand, public testing::WithParamInterface<Words> {
 protected:
  LostOutput() {
    imported(calendar("Work", event("1", "Review",
                                    "DTSTART:20261102T090000\r\nORGANIZER:mailto:ada@example.org\r\n"
                                    "ATTENDEE;PARTSTAT=NEEDS-ACTION:mailto:grace@example.org\r\n")));
    imported("BEGIN:VCARD\r\nVERSION:3.0\r\nFN:Ada\r\nEND:VCARD\r\n");
    ::setenv("ORLOCAL_SETTINGS", file("settings", "[person]\naddresses = grace@example.org\n").c_str(), 1);
  }
  ~LostOutput() override { ::setenv("ORLOCAL_SETTINGS", "", 1); }
};

TEST_P(LostOutput, IsAnErrorInEveryCommand) {
  Words words{"/bin/sh", "-c", "exec \"$0\" \"$@\" >/dev/full", ORLOCAL_PROGRAM};
  words.insert(words.end(), GetParam().begin(), GetParam().end());
  RunningProgram running(words);
  EXPECT_THAT(running.errorLine(), testing::HasSubstr("standard output"));
  EXPECT_EQ(running.finish(), 1);
}

INSTANTIATE_TEST_SUITE_P(Commands, LostOutput,
                         testing::Values(Words{"agenda"}, Words{"agenda", "--json"}, Words{"calendars"},
                                         Words{"calendars", "--json"}, Words{"export"}, Words{"export", "--contacts"},
                                         Words{"reply"}, Words{"reply", "--json"}, Words{"reply", "Review", "--accept"},
                                         Words{"settings"}, Words{"account", "list"}, Words{"conflicts"},
                                         Words{"functions"}, Words{"steps"}, Words{"eval", "1"}, Words{"--version"},
                                         Words{"--help"}),
                         [](const auto& asked) {
                           std::string name;
                           for (const std::string& word : asked.param) {
                             for (const char c : word) { name += std::isalnum(c) != 0 ? c : '_'; }
                             name += '_';
                           }
                           return name;
                         });

}  // namespace
}  // namespace orlocal::host
