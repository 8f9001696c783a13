#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace orlocal::host {

/// A key that was pressed, or what was pasted instead.
struct BrowseKey {
  enum class Name : std::uint8_t {
    kCharacter,
    kPaste,  ///< means nothing but its text
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
  std::string text = {};  ///< of a character or a paste, in UTF-8

  static BrowseKey of(std::string character) { return {Name::kCharacter, std::move(character)}; }
  /// Line breaks and all.
  static BrowseKey pasted(std::string text) { return {Name::kPaste, std::move(text)}; }
  bool is(std::string_view character) const { return name == Name::kCharacter && text == character; }
};

}  // namespace orlocal::host
