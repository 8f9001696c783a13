#include "fakes/fake_address_book.h"
#include "platform/address_book_contract.h"

namespace orlocal::contract {
namespace {

class FakeAddressBookSubject final : public AddressBookSubject {
 public:
  const AddressBook& book() override { return m_book; }
  void add(const std::string& email, const std::optional<std::string>& address) override {
    m_book.m_addresses[lowercase(email)] = address;
  }
  void keepFromReading() override { m_book.m_answers = false; }

 private:
  fakes::FakeAddressBook m_book;
};

INSTANTIATE_TEST_SUITE_P(Fake, AddressBookContract, testing::Values([]() -> std::unique_ptr<AddressBookSubject> {
                           return std::make_unique<FakeAddressBookSubject>();
                         }));

}  // namespace
}  // namespace orlocal::contract
