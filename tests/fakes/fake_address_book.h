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
    return found == m_addresses.end() ? std::nullopt : std::optional(found->second);
  }

  std::map<std::string, std::string> m_addresses;  ///< by lower-case e-mail address
};

}  // namespace orlocal::fakes
