#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "platform/address_book.h"
#include "platform/text.h"

namespace orlocal::fakes {

class FakeAddressBook : public AddressBook {
 public:
  std::optional<std::string> addressOf(std::string_view email) const override {
    const auto found = m_addresses.find(lowercase(email));
    return !m_answers || found == m_addresses.end() ? std::nullopt : found->second;
  }

  /// By lower-case e-mail address; none on a card without one.
  std::map<std::string, std::optional<std::string>> m_addresses;
  /// Whether the book can be read.
  bool m_answers = true;
};

}  // namespace orlocal::fakes
