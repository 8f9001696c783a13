#include "backend/legacy/legacy_fixture.h"

namespace orlocal {
namespace {

class LegacyAttendees : public Legacy {
 protected:
  void invite(const char* name) {
    auto attendee = std::make_shared<fakes::FakeParticipant>();
    attendee->m_name = name;
    attendee->m_url = "mailto:" + std::string(name) + "@example.org";
    attendee->m_status = 2;
    if (!event()->m_attendees) { event()->m_attendees.emplace(); }
    event()->m_attendees->push_back(attendee);
  }
};

TEST_F(LegacyAttendees, OpensAnAttendeeByIndex) {
  openEvent();
  invite("ann");
  invite("bob");
  EXPECT_EQ(backend.openAttendeeAt(2), 0);
  EXPECT_EQ(attendeeAttribute("commonname"), "bob");
}

TEST_F(LegacyAttendees, IndexesOutsideGive9002AndLeaveNobodyOpen) {
  openEvent();
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.openAttendeeAt(1), -1); }), 9002);
  invite("ann");
  backend.openAttendeeAt(1);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.openAttendeeAt(0), -1); }), 9002);
  EXPECT_EQ(backend.m_attendee, nullptr);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.openAttendeeAt(2), -1); }), 9002);
}

TEST_F(LegacyAttendees, NobodyAtAnIndexGives9001) {
  openEvent();
  event()->m_attendees = {nullptr};
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.openAttendeeAt(1), -1); }), 9001);
}

TEST_F(LegacyAttendees, OpeningNeedsAnEvent) {
  backend.m_attendee = somebody();
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.openAttendeeAt(1), -1); }), 9000);
  EXPECT_NE(backend.m_attendee, nullptr);
}

TEST_F(LegacyAttendees, ReadsEveryPropertyEitherWay) {
  openEvent();
  invite("ann");
  backend.openAttendeeAt(1);
  const std::pair<const char*, const char*> rows[] = {
      {"address", "mailto:ann@example.org"}, {"CommonName", "ann"}, {"status", "ACCEPTED"}};
  for (const auto& [name, value] : rows) {
    EXPECT_EQ(attendeeAttribute(name), value);
    EXPECT_EQ(backend.getEventAttendeeAttribute(name, 1), value);
  }
}

TEST_F(LegacyAttendees, TheIndexOfAReadIsNotUsed) {
  openEvent();
  invite("ann");
  invite("bob");
  backend.openAttendeeAt(1);
  EXPECT_EQ(backend.getEventAttendeeAttribute("commonname", 2), "ann");
}

TEST_F(LegacyAttendees, WhatAnAttendeeDoesNotHaveReadsAsNothing) {
  openEvent();
  event()->m_attendees = {std::make_shared<fakes::FakeParticipant>()};
  backend.openAttendeeAt(1);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(attendeeAttribute("address"), std::nullopt); }), 0);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(attendeeAttribute("commonname"), std::nullopt); }), 0);
}

TEST_F(LegacyAttendees, ReadingNobodyGives9000WithoutAProperty9005AndAnUnknownOne9006) {
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(attendeeAttribute("address"), std::nullopt); }), 9000);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.getEventAttendeeAttribute("address", 1), std::nullopt); }), 9000);
  openEvent();
  invite("ann");
  backend.openAttendeeAt(1);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(attendeeAttribute(std::nullopt), std::nullopt); }), 9005);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(attendeeAttribute("role"), std::nullopt); }), 9006);
}

}  // namespace
}  // namespace orlocal
