#include "bridge/strings.h"

#include <algorithm>
#include <array>
#include <string>

#include "bridge/state.h"
#include "platform/bundle_strings.h"
#include "platform/platform.h"

namespace orlocal {
namespace {

constexpr std::uint32_t kOptionsRequest = 131;
constexpr std::uint32_t kHelpAddress = 132;
constexpr std::int32_t kOptionsString = 1;
constexpr std::int32_t kLongestText = 1024;

constexpr std::int32_t stringNumber(std::uint32_t stringId) {
  return stringId == kOptionsRequest ? kOptionsString : static_cast<std::int32_t>(stringId);
}

}  // namespace

std::int32_t Sub_OSXLoadString(std::int32_t number, char16_t* buffer, std::int32_t capacity) {
  if (buffer == nullptr || capacity < 2) { return 0; }
  const std::uintptr_t bundle = gFMX_ExternCallPtr != nullptr ? gFMX_ExternCallPtr->instanceID : 0;
  const auto found = platform().bundleStrings().localizedString(bundle, "Orlo " + std::to_string(number), "Orlo");
  if (!found) { return 0; }
  const auto length = static_cast<std::int64_t>(found->size());
  // Hosts know the limit as it is: a string that would fit exactly with its end is refused.
  if (length >= capacity - 1) { return 0; }
  *std::copy(found->begin(), found->end(), buffer) = u'\0';
  return static_cast<std::int32_t>(length);
}

void Do_GetString(std::uint32_t stringId, std::uint32_t /*unused*/, std::int32_t capacity, char16_t* buffer) {
  const std::int32_t number = stringNumber(stringId);
  // The help address is loaded twice; the second answer counts.
  if (stringId == kHelpAddress) { Sub_OSXLoadString(number, buffer, capacity); }
  Sub_OSXLoadString(number, buffer, capacity);
}

void Do_GetString(std::uint32_t stringId, HostText& text, bool nameOnly) {
  std::array<char16_t, kLongestText> buffer;
  buffer[0] = u'\0';
  Sub_OSXLoadString(stringNumber(stringId), buffer.data(), kLongestText);
  text.assignUnicode(buffer.data());
  if (!nameOnly) { return; }
  HostText parenthesis;
  parenthesis.assign("(");
  text.cutAt(parenthesis);
}

}  // namespace orlocal
