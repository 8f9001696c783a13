#include "platform/linux/system_log.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include <pwd.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <syslog.h>
#include <unistd.h>

#include "platform/text.h"

namespace orlocal {
namespace {

bool standardErrorIsRead() {
  struct stat target {};
  if (::fstat(STDERR_FILENO, &target) != 0) { return false; }
  constexpr unsigned kMemoryDevices = 1, kNull = 3;
  return !S_ISCHR(target.st_mode) || target.st_rdev != makedev(kMemoryDevices, kNull);
}

/// Whether a terminal could be steered by it, or the order of letters turned around there: controls of seven and of
/// eight bits, bidirectional marks, breaks, and what nobody sees.
bool misleads(char16_t unit) {
  struct Range {
    char16_t first, last;
  };
  constexpr Range kRanges[] = {{0x0000, 0x001F}, {0x007F, 0x009F}, {0x061C, 0x061C}, {0x180E, 0x180E}, {0x200E, 0x200F},
                               {0x2028, 0x202E}, {0x2060, 0x206F}, {0xFEFF, 0xFEFF}, {0xFFF9, 0xFFFB}};
  return std::ranges::any_of(kRanges, [unit](const Range& range) { return unit >= range.first && unit <= range.last; });
}

/// Such as `"fmserver" (998)`; the number alone for a user without a name.
std::string userText() {
  const uid_t id = ::geteuid();
  passwd found{};
  passwd* user = nullptr;
  std::array<char, 4096> room{};
  const bool named = ::getpwuid_r(id, &found, room.data(), room.size(), &user) == 0 && user != nullptr;
  return named ? '"' + std::string(user->pw_name) + "\" (" + std::to_string(id) + ")" : std::to_string(id);
}

}  // namespace

void writeToSystemLog(std::string_view line) {
  std::u16string units = utf16FromUtf8(line);
  std::ranges::replace_if(units, misleads, u'?');
  std::string text = utf8FromUtf16(units);
  if (!standardErrorIsRead()) {
    ::syslog(LOG_USER | LOG_ERR, "%s", text.c_str());
    return;
  }
  // One write, so that lines of several processes on one terminal stay whole.
  text.push_back('\n');
  std::fwrite(text.data(), 1, text.size(), stderr);
}

StoreTroubles& StoreTroubles::ofThisProcess() {
  static StoreTroubles troubles;
  return troubles;
}

void StoreTroubles::failed(std::string_view call, const Failure& error) {
  const bool told = std::ranges::any_of(m_reasons, [&](const auto& each) { return each.second == error.message; });
  m_reasons.insert_or_assign(std::string(call), error.message);
  if (told) { return; }
  const std::string file = m_file.empty() ? "that has no file" : '"' + m_file + '"';
  writeToSystemLog("Orlocal: the calendar store " + file + " fails user " + userText() + ": " + error.message);
}

void StoreTroubles::worked(std::string_view call) {
  if (m_reasons.empty()) { return; }
  if (const auto found = m_reasons.find(call); found != m_reasons.end()) { m_reasons.erase(found); }
}

}  // namespace orlocal
