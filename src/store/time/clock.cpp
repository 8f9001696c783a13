#include "store/time/clock.h"

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string>

#include <fmt/format.h>

#include "base/translation.h"
#include "store/time/time_text.h"
#include "store/time/zone.h"

namespace orlocal::store {
namespace {

constexpr const char* kSetting = "ORLOCAL_NOW";
constexpr std::string_view kPattern = "dddd-dd-ddTdd:dd:ddZ";

// Microseconds of the moment that the clock is pinned to, or one of these.
constexpr std::int64_t kRuns = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kNotRead = kRuns + 1;
std::atomic<std::int64_t> g_pinned = kNotRead;

std::int64_t readSetting() {
  const auto pinned = momentPinnedByUser();
  if (!pinned) { std::fprintf(stderr, "orlocal: %s\n", pinned.error().message.c_str()); }
  return pinned && *pinned ? (*pinned)->time_since_epoch().count() : kRuns;
}

}  // namespace

std::optional<Moment> parseMoment(std::string_view text) {
  if (text.size() != kPattern.size()) { return std::nullopt; }
  std::string compact;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool digit = text[i] >= '0' && text[i] <= '9';
    if (kPattern[i] == 'd' ? !digit : text[i] != kPattern[i]) { return std::nullopt; }
    if (text[i] != '-' && text[i] != ':') { compact += text[i]; }
  }
  const auto time = parseTime(compact);
  return time ? std::optional(Zone().toMoment(time->local)) : std::nullopt;
}

Result<std::optional<Moment>> momentPinnedByUser() {
  const char* setting = std::getenv(kSetting);
  if (setting == nullptr || *setting == '\0') { return std::nullopt; }
  if (auto moment = parseMoment(setting)) { return moment; }
  return failure(ErrorCode::kInvalid, tr("{} is \"{}\", which is no moment such as 2026-11-02T08:00:00Z; the "
                                         "system's clock is used.",
                                         kSetting, setting));
}

void pinClock(std::optional<Moment> moment) { g_pinned = moment ? moment->time_since_epoch().count() : kRuns; }

Moment now() {
  std::int64_t pinned = g_pinned;
  if (pinned == kNotRead) {
    // Of several threads that come first one reads.
    static const std::int64_t setting = readSetting();
    g_pinned.compare_exchange_strong(pinned, setting);
    pinned = g_pinned;
  }
  if (pinned != kRuns) { return Moment(Moment::duration(pinned)); }
  return std::chrono::time_point_cast<Moment::duration>(std::chrono::system_clock::now());
}

}  // namespace orlocal::store
