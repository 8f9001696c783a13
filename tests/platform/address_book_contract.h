#pragma once

#include <memory>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "platform/address_book.h"

// What every address book promises. A test program includes this header once, and instantiates `AddressBookContract`
// with its own subject.

namespace orlocal::contract {

/// An empty address book.
class AddressBookSubject {
 public:
  virtual ~AddressBookSubject() = default;
  virtual const AddressBook& book() = 0;
  /// Adds the card of somebody who has that e-mail address.
  virtual void add(const std::string& email, const std::optional<std::string>& address) = 0;
  /// Makes a book that nobody has asked anything yet one that cannot be read.
  virtual void keepFromReading() = 0;
};

using MakeAddressBookSubject = std::unique_ptr<AddressBookSubject> (*)();

class AddressBookContract : public testing::TestWithParam<MakeAddressBookSubject> {
 protected:
  std::unique_ptr<AddressBookSubject> subject = GetParam()();
};

TEST_P(AddressBookContract, FindsTheAddressOfAPersonByTheirEmail) {
  subject->add("ada@example.org", "1 Mill Lane");
  subject->add("bob@example.org", "2 Mill Lane");
  EXPECT_EQ(subject->book().addressOf("ada@example.org"), "1 Mill Lane");
  EXPECT_EQ(subject->book().addressOf("bob@example.org"), "2 Mill Lane");
}

TEST_P(AddressBookContract, ComparesWithoutCase) {
  subject->add("Ada@Example.org", "1 Mill Lane");
  EXPECT_EQ(subject->book().addressOf("ADA@example.ORG"), "1 Mill Lane");
}

TEST_P(AddressBookContract, HasNoAddressOfSomebodyItDoesNotKnow) {
  subject->add("ada@example.org", "1 Mill Lane");
  EXPECT_EQ(subject->book().addressOf("ada@example.com"), std::nullopt);
  EXPECT_EQ(subject->book().addressOf("ada"), std::nullopt);
  EXPECT_EQ(subject->book().addressOf(""), std::nullopt);
}

TEST_P(AddressBookContract, HasNoAddressWhereTheCardHasNone) {
  subject->add("ada@example.org", std::nullopt);
  EXPECT_EQ(subject->book().addressOf("ada@example.org"), std::nullopt);
}

TEST_P(AddressBookContract, HasNoAddressWhenItCannotBeRead) {
  subject->add("ada@example.org", "1 Mill Lane");
  subject->keepFromReading();
  EXPECT_EQ(subject->book().addressOf("ada@example.org"), std::nullopt);
}

}  // namespace orlocal::contract
