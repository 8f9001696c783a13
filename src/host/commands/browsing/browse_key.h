#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace orlocal::host {

/// A key that was pressed.
struct BrowseKey {
  enum class Name : std::uint8_t {
    kCharacter,
    kUp,
    kDown,
    kLeft,
    kRight,
    kPageUp,
    kPageDown,
    kHome,
    kEnd,
    kEnter,
    kTab,
    kBackspace,
    kDelete,
    kEscape,
    kOther,
  };
  Name name = Name::kOther;
  std::string text = {};  ///< of a character, in UTF-8

  static BrowseKey of(std::string character) { return {Name::kCharacter, std::move(character)}; }
  bool is(std::string_view character) const { return name == Name::kCharacter && text == character; }
};

}  // namespace orlocal::host
