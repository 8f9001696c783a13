#include "host/commands/command_line/zone_files.h"

#include "host/commands/program_fixture.h"

namespace orlocal::host {
namespace {

using CarriedZones = ProgramTest;

TEST_F(CarriedZones, AreUsedWhereTheSystemHasNone) {
  const std::string file = folder / "bin" / "orlocal";
  EXPECT_EQ(carriedZones(file, folder / "none"), std::nullopt);
  write("share/zoneinfo/UTC", "TZif");
  EXPECT_EQ(carriedZones(file, folder / "none"), folder / "share" / "zoneinfo");
}

TEST_F(CarriedZones, StandBackBehindTheSystemsOwn) {
  write("share/zoneinfo/UTC", "TZif");
  write("system/UTC", "TZif");
  EXPECT_EQ(carriedZones(folder / "bin" / "orlocal", folder / "system"), std::nullopt);
}

}  // namespace
}  // namespace orlocal::host
