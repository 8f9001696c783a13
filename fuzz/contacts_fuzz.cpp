#include <cstddef>
#include <cstdint>
#include <string>

#include "store/contacts.h"
#include "temporary_folder.h"

// Any bytes: reading address cards never crashes or hangs.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  (void)orlocal::store::readContacts(std::string(orlocal::fuzz::textOf(data, size)), "fuzz.vcf");
  return 0;
}
