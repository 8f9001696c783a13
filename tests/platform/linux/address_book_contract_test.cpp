#include "platform/address_book_contract.h"

#include <cstdlib>
#include <filesystem>

#include "platform/platform.h"
#include "store/calendar_store.h"
#include "store/edits/item_writer.h"

namespace orlocal::contract {
namespace {

/// The contacts of a store in a folder of its own.
class LinuxAddressBookSubject final : public AddressBookSubject {
 public:
  LinuxAddressBookSubject() {
    std::string pattern = (std::filesystem::temp_directory_path() / "orlocal-XXXXXX").string();
    m_folder = ::mkdtemp(pattern.data());
    ::setenv("ORLOCAL_STORE", (m_folder / "calendar.db").c_str(), 1);
    m_platform = makeSystemPlatform();
  }
  ~LinuxAddressBookSubject() override {
    m_platform.reset();
    ::unsetenv("ORLOCAL_STORE");
    std::error_code ignored;
    std::filesystem::remove_all(m_folder, ignored);
  }

  const AddressBook& book() override { return m_platform->addressBook(); }
  void add(const std::string& email, const std::optional<std::string>& address) override {
    store::StoreOptions options;
    options.file = m_folder / "calendar.db";
    options.viewer = store::Zone::ofUser();
    const auto store = std::move(store::CalendarStore::open(std::move(options))).value();
    store::Contact contact;
    contact.identifier = email;
    contact.name = email;
    contact.emails = {email};
    contact.address = address;
    auto writer = std::move(store->startWriting()).value();
    EXPECT_TRUE(writer->putContact(contact));
    EXPECT_TRUE(writer->commit());
  }
  void keepFromReading() override {
    std::filesystem::remove_all(m_folder);
    std::filesystem::create_directories(m_folder / "calendar.db");
  }

 private:
  std::filesystem::path m_folder;
  std::shared_ptr<Platform> m_platform;
};

INSTANTIATE_TEST_SUITE_P(Linux, AddressBookContract, testing::Values([]() -> std::unique_ptr<AddressBookSubject> {
                           return std::make_unique<LinuxAddressBookSubject>();
                         }));

}  // namespace
}  // namespace orlocal::contract
