#include <cstddef>
#include <cstdint>

#include "host/commands/transfer/archive.h"
#include "host/commands/transfer/file_kind.h"
#include "temporary_folder.h"

// Any bytes as a zip archive and as a gzip file: reading them never crashes, hangs, or takes more than it may.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace orlocal::host;
  constexpr ArchiveLimits kSmall{
      .members = 100, .expandedBytes = std::uint64_t{4} << 20U, .ratio = 200, .freeBytes = std::uint64_t{1} << 20U};
  const auto bytes = orlocal::fuzz::textOf(data, size);
  (void)recognised(bytes);
  (void)visitZip(bytes, "fuzz.zip", kSmall, [](std::string_view, const auto& content) {
    if (content && content->size() > kSmall.expandedBytes) { __builtin_trap(); }
    return true;
  });
  const auto text = expandedGzip(bytes, "fuzz.gz", kSmall);
  if (text && text->size() > kSmall.expandedBytes) { __builtin_trap(); }
  return 0;
}
