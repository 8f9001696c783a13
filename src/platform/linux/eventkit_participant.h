#pragma once

#include "platform/eventkit_items.h"
#include "store/model/model.h"

namespace orlocal {

class ParticipantObject final : public EKParticipant {
 public:
  explicit ParticipantObject(store::Attendee attendee) : m_attendee(std::move(attendee)) {}
  OptionalText name() const override { return m_attendee.name; }
  OptionalText url() const override;
  std::vector<std::string> emailAddresses() const override;
  int participantStatus() const override { return static_cast<int>(m_attendee.status); }
  int participantRole() const override { return static_cast<int>(m_attendee.role); }
  int participantType() const override { return static_cast<int>(m_attendee.type); }

 private:
  store::Attendee m_attendee;
};

/// Whether somebody is a participant. Who only organises the event and was not invited is none.
bool isInvited(const store::Attendee& attendee);

}  // namespace orlocal
