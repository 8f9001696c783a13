#include "platform/address_book.h"

#include <utility>

#include "platform/linux/platform.h"
#include "platform/linux/store_access.h"

namespace orlocal {
namespace {

/// The contacts that the store keeps.
class LinuxAddressBook final : public AddressBook {
 public:
  explicit LinuxAddressBook(std::shared_ptr<StoreAccess> access) : m_access(std::move(access)) {}

  std::optional<std::string> addressOf(std::string_view email) const override {
    return orNone(m_access->store().addressOf(email)).value_or(std::nullopt);
  }

 private:
  std::shared_ptr<StoreAccess> m_access;
};

}  // namespace

std::unique_ptr<AddressBook> makeAddressBook(std::shared_ptr<StoreAccess> access) {
  return std::make_unique<LinuxAddressBook>(std::move(access));
}

}  // namespace orlocal
