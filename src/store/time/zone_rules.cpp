#include "store/time/zone_rules.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <mutex>
#include <utility>

#include <cctz/zone_info_source.h>
#include <fmt/format.h>

namespace orlocal::store {

namespace {

/// A zone file's content (RFC 8536) held in memory.
class MemorySource : public cctz::ZoneInfoSource {
 public:
  explicit MemorySource(std::string bytes) : m_bytes(std::move(bytes)) {}

  std::size_t Read(void* to, std::size_t size) override {
    size = std::min(size, m_bytes.size() - m_at);
    std::memcpy(to, m_bytes.data() + m_at, size);
    m_at += size;
    return size;
  }
  int Skip(std::size_t size) override {
    m_at += std::min(size, m_bytes.size() - m_at);
    return 0;
  }

 private:
  std::string m_bytes;
  std::size_t m_at = 0;
};

void putBigEndian(std::string& bytes, std::uint64_t value, int size) {
  for (int shift = (size - 1) * 8; shift >= 0; shift -= 8) { bytes += static_cast<char>(value >> shift & 0xFF); }
}

void putHeader(std::string& bytes, std::size_t changes, std::size_t clocks, std::size_t characters) {
  bytes += "TZif2";
  bytes.append(15, '\0');
  for (std::size_t count : {std::size_t{0}, std::size_t{0}, std::size_t{0}, changes, clocks, characters}) {
    putBigEndian(bytes, count, 4);
  }
}

/// Zone file, version 2, with no rule at its end. None when there are more kinds of clocks than the form can hold.
std::optional<std::string> zoneFileOf(const ZoneRules& rules) {
  std::vector<ZoneRules::Clock> clocks{rules.initial};
  std::string indexes;
  for (const auto& change : rules.changes) {
    auto found = std::find(clocks.begin(), clocks.end(), change.clock);
    if (found == clocks.end()) { found = clocks.insert(found, change.clock); }
    if (clocks.size() > 250) { return std::nullopt; }
    indexes += static_cast<char>(found - clocks.begin());
  }
  std::string names, types;
  for (const auto& clock : clocks) {
    // Names count by one byte; a zone with more of them shows the first ones.
    const std::string name = names.size() + clock.abbreviation.size() < 250 ? clock.abbreviation : "";
    putBigEndian(types, static_cast<std::uint32_t>(clock.offset), 4);
    types += clock.daylight ? '\1' : '\0';
    types += static_cast<char>(names.size());
    if (names.size() < 250) { names += name + '\0'; }
  }
  std::string bytes;
  putHeader(bytes, 0, 0, 0);
  putHeader(bytes, rules.changes.size(), clocks.size(), names.size());
  for (const auto& change : rules.changes) { putBigEndian(bytes, static_cast<std::uint64_t>(change.at), 8); }
  return bytes + indexes + types + names + "\n\n";
}

std::mutex loading;
const std::string* toLoad = nullptr;  // guarded by `loading`
constexpr std::string_view kMemoryPrefix = "orlocal-rules:";

std::unique_ptr<cctz::ZoneInfoSource> openFromMemory(
    const std::string& name, const std::function<std::unique_ptr<cctz::ZoneInfoSource>(const std::string&)>& fallback) {
  if (name.starts_with(kMemoryPrefix) && toLoad != nullptr) { return std::make_unique<MemorySource>(*toLoad); }
  return fallback(name);
}

}  // namespace

std::optional<cctz::time_zone> zoneOfRules(const ZoneRules& rules) {
  const auto bytes = zoneFileOf(rules);
  if (!bytes) { return std::nullopt; }
  static int serial = 0;
  const std::lock_guard lock(loading);
  // The hook is put back at once: it belongs to the whole process, and this code may be unloaded from it.
  toLoad = &*bytes;
  const auto before = std::exchange(cctz_extension::zone_info_source_factory, &openFromMemory);
  cctz::time_zone zone;
  const bool loaded =
      cctz::load_time_zone(fmt::format("{}{}:{}", kMemoryPrefix, static_cast<const void*>(&serial), ++serial), &zone);
  cctz_extension::zone_info_source_factory = before;
  toLoad = nullptr;
  return loaded ? std::optional(zone) : std::nullopt;
}

}  // namespace orlocal::store
