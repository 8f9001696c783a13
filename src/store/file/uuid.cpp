#include "store/file/uuid.h"

#include <algorithm>
#include <chrono>
#include <cstring>

#include <unistd.h>

#include "store/time/clock.h"

namespace orlocal::store {
namespace {

constexpr std::uint64_t kLowMask = (std::uint64_t{1} << 62) - 1;
constexpr std::size_t kDashesBefore[] = {4, 6, 8, 10};  // bytes

std::uint64_t read64(const std::byte* bytes) {
  std::uint64_t value = 0;
  for (int i = 0; i < 8; ++i) { value = value << 8 | std::to_integer<std::uint64_t>(bytes[i]); }
  return value;
}

void write64(std::uint64_t value, std::byte* bytes) {
  for (int i = 7; i >= 0; --i, value >>= 8) { bytes[i] = static_cast<std::byte>(value & 0xff); }
}

int digitOf(char c) {
  if (c >= '0' && c <= '9') { return c - '0'; }
  if (c >= 'A' && c <= 'F') { return c - 'A' + 10; }
  return -1;
}

}  // namespace

Uuid::Uuid(std::span<const std::byte> bytes) {
  if (bytes.size() == kBytes) { std::copy(bytes.begin(), bytes.end(), m_bytes.begin()); }
}

std::optional<Uuid> Uuid::parse(std::string_view text) {
  if (text.size() != 36) { return std::nullopt; }
  Uuid uuid;
  std::size_t at = 0;
  for (std::size_t i = 0; i < kBytes; ++i) {
    if (std::find(std::begin(kDashesBefore), std::end(kDashesBefore), i) != std::end(kDashesBefore) &&
        text[at++] != '-') {
      return std::nullopt;
    }
    const int high = digitOf(text[at]), low = digitOf(text[at + 1]);
    if (high < 0 || low < 0) { return std::nullopt; }
    uuid.m_bytes[i] = static_cast<std::byte>(high << 4 | low);
    at += 2;
  }
  return uuid;
}

std::string Uuid::text() const {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  char buffer[36];
  std::size_t at = 0;
  for (std::size_t i = 0; i < kBytes; ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) { buffer[at++] = '-'; }
    const auto value = std::to_integer<unsigned>(m_bytes[i]);
    buffer[at++] = kDigits[value >> 4];
    buffer[at++] = kDigits[value & 15];
  }
  return std::string(buffer, sizeof buffer);
}

UuidMaker::UuidMaker() {
  if (::getentropy(&m_state, sizeof m_state) == 0) { return; }
  // A system that gives no randomness away: no two processes begin at one moment with one number.
  m_state = static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count()) << 20 ^
            static_cast<std::uint64_t>(::getpid());
}

std::uint64_t UuidMaker::random() {
  // SplitMix64: full period, well mixed; the seed is the system's.
  std::uint64_t mixed = m_state += 0x9e3779b97f4a7c15U;
  mixed = (mixed ^ mixed >> 30) * 0xbf58476d1ce4e5b9U;
  mixed = (mixed ^ mixed >> 27) * 0x94d049bb133111ebU;
  return mixed ^ mixed >> 31;
}

std::int64_t UuidMaker::randomNumber() { return static_cast<std::int64_t>(random() >> 1 | 1); }

void UuidMaker::startAfter(const Uuid& used) {
  const std::uint64_t first = read64(used.bytes().data());
  const std::uint64_t high = first >> 16 << 12 | (first & 0xfff);
  const std::uint64_t low = read64(used.bytes().data() + 8) & kLowMask;
  if (high > m_high || (high == m_high && low > m_low)) {
    m_high = high;
    m_low = low;
  }
}

Uuid UuidMaker::next() {
  const auto milliseconds = std::chrono::floor<std::chrono::milliseconds>(now()).time_since_epoch().count();
  const auto byClock =
      (static_cast<std::uint64_t>(std::max<std::int64_t>(milliseconds, 0)) << 12) & ~(~std::uint64_t{0} << 60);
  if (byClock > m_high) {
    m_high = byClock;
    m_low = random() & (kLowMask >> 1);
  } else {
    m_low += 1 + (random() >> 24);
    if (m_low > kLowMask) {
      m_low &= kLowMask;
      ++m_high;
    }
  }
  std::array<std::byte, Uuid::kBytes> bytes;
  write64(m_high >> 12 << 16 | std::uint64_t{kVersion} << 12 | (m_high & 0xfff), bytes.data());
  write64(std::uint64_t{2} << 62 | m_low, bytes.data() + 8);
  return Uuid(bytes);
}

}  // namespace orlocal::store
