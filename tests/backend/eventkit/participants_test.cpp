#include "backend_fixture.h"

namespace orlocal {
namespace {

using testing::ElementsAre;

class Participants : public BackendTest {
 protected:
  OptionalText get(const OptionalText& property) { return backend.getParticipantAttribute(property, 1, std::nullopt); }
  OptionalText number(const OptionalText& property) { return backend.getEventParticipantAttribute(property, 7); }

  std::shared_ptr<fakes::FakeParticipant> openNewParticipant() {
    auto participant = std::make_shared<fakes::FakeParticipant>();
    backend.m_ekParticipant = participant;
    return participant;
  }
  static std::shared_ptr<fakes::FakeParticipant> named(const char* name) {
    auto participant = std::make_shared<fakes::FakeParticipant>();
    participant->m_name = name;
    return participant;
  }
};

TEST_F(Participants, OpenByIndex) {
  openNewEvent()->m_attendees = {named("Ada"), named("Ben")};
  expectDone(backend.openParticipantAt(2));
  expectText(get("commonname"), "Ben");
  expectDone(backend.openParticipantAt(1));
  expectText(get("commonname"), "Ada");
}

TEST_F(Participants, DoNotOpenWithoutAnEvent) {
  openNewParticipant();
  expectFailed(backend.openParticipantAt(1), kInvalidCallOrder);
  EXPECT_NE(backend.m_ekParticipant, nullptr);
}

TEST_F(Participants, DoNotOpenOutsideTheirRange) {
  const auto event = openNewEvent();
  openNewParticipant();
  expectFailed(backend.openParticipantAt(1), kIndexOutOfBounds);
  EXPECT_EQ(backend.m_ekParticipant, nullptr);
  event->m_attendees = {named("Ada")};
  for (const std::int32_t index : {0, 2, -1}) { expectFailed(backend.openParticipantAt(index), kIndexOutOfBounds); }
}

TEST_F(Participants, ReportTheOneThatIsMissing) {
  openNewEvent()->m_attendees = {nullptr};
  expectFailed(backend.openParticipantAt(1), kItemNotFound);
}

TEST_F(Participants, OpenWithoutTouchingAnotherSlot) {
  fillSlots();
  openNewEvent()->m_attendees = {named("Ada")};
  const auto before = filledSlots();
  released->clear();
  expectDone(backend.openParticipantAt(1));
  EXPECT_EQ(filledSlots(), before);
  EXPECT_THAT(*released, ElementsAre("participant"));
}

TEST_F(Participants, AreNotReadWhenNoneIsOpen) {
  expectNone(get("status"), kNoAttendeeToGetProperty);
  expectNone(get(std::nullopt), kNoAttendeeToGetProperty);
  expectNone(number("status"), kNoAttendeeToGetProperty);
}

TEST_F(Participants, WantAPropertyToRead) {
  openNewParticipant();
  expectNone(get(std::nullopt), kPropertyRequired);
  expectNone(number(std::nullopt), kPropertyRequired);
}

TEST_F(Participants, ReadTheirName) {
  const auto participant = openNewParticipant();
  expectNone(get("commonname"));
  participant->m_name = "Ada Example";
  expectText(get("CommonName"), "Ada Example");
  expectText(number("commonname"), "Ada Example");
}

TEST_F(Participants, HaveNoAddressWhereThereIsNoAddressBook) {
  openNewParticipant()->m_emailAddresses = {"ada@example.org"};
  backend.m_AddressBook = nullptr;
  EXPECT_EQ(get("address"), std::nullopt);
  EXPECT_EQ(g_llasterror, 0);
}

TEST_F(Participants, ReadTheirAddressFromTheAddressBook) {
  const auto participant = openNewParticipant();
  expectNone(get("address"));
  participant->m_emailAddresses = {"unknown@example.org", "Ada@Example.org"};
  expectNone(get("address"));
  addressBook->m_addresses["ada@example.org"] = "1 Main Street";
  expectText(get("Address"), "1 Main Street");
  expectText(number("address"), "1 Main Street");
}

TEST_F(Participants, ReadTheirStatusAsAWord) {
  const auto participant = openNewParticipant();
  const char* const words[] = {"Unknown",   "Pendind",   "Accepted",   "Declined", "Tenative",
                               "Delegated", "Completed", "In Process", "Unknown"};
  for (participant->m_status = 0; participant->m_status < 9; ++participant->m_status) {
    expectText(get("status"), words[participant->m_status]);
  }
  participant->m_status = -1;
  expectText(get("Status"), "Unknown");
}

TEST_F(Participants, ReadNumbersInTheOtherGetter) {
  const auto participant = openNewParticipant();
  participant->m_status = 4;
  participant->m_role = 3;
  participant->m_type = 2;
  expectText(number("Status"), "4");
  expectText(number("role"), "3");
  expectText(number("type"), "2");
}

TEST_F(Participants, ReportAPropertyThatTheyDoNotHave) {
  openNewParticipant();
  for (const char* property : {"role", "type", "nonsense", ""}) { expectNone(get(property), kInvalidProperty); }
  expectNone(number("nonsense"), kInvalidProperty);
}

}  // namespace
}  // namespace orlocal
