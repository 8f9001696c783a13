#include "store/time/zone_data_version.h"

#include <cstdlib>
#include <fstream>

namespace orlocal::store {

std::string zoneDataVersion() {
  const char* folder = std::getenv("TZDIR");
  std::ifstream file(std::string(folder != nullptr ? folder : "/usr/share/zoneinfo") + "/tzdata.zi");
  std::string hash, word, version;
  file >> hash >> word >> version;  // "# version 2026a"
  return word == "version" ? version : std::string();
}

}  // namespace orlocal::store
