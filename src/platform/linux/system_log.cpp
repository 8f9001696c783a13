#include "platform/linux/system_log.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include <pwd.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <syslog.h>
#include <unistd.h>

namespace orlocal {
namespace {

bool standardErrorIsRead() {
  struct stat target {};
  if (::fstat(STDERR_FILENO, &target) != 0) return false;
  constexpr unsigned kMemoryDevices = 1, kNull = 3;
  return !S_ISCHR(target.st_mode) || target.st_rdev != makedev(kMemoryDevices, kNull);
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
  std::string text(line);
  std::ranges::replace_if(
      text, [](unsigned char c) { return c < ' ' || c == 0x7f; }, '?');
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

void StoreTroubles::failed(std::string_view call, const store::Error& error) {
  const bool told = std::ranges::any_of(m_reasons, [&](const auto& each) { return each.second == error.message; });
  m_reasons.insert_or_assign(std::string(call), error.message);
  if (told) return;
  const std::string file = m_file.empty() ? "that has no file" : '"' + m_file + '"';
  writeToSystemLog("Orlocal: the calendar store " + file + " fails user " + userText() + ": " + error.message);
}

void StoreTroubles::worked(std::string_view call) {
  if (m_reasons.empty()) return;
  if (const auto found = m_reasons.find(call); found != m_reasons.end()) m_reasons.erase(found);
}

}  // namespace orlocal
