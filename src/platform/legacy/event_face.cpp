#include "platform/legacy/event_face.h"

#include "platform/legacy/recurrence_faces.h"

namespace orlocal {
namespace {

/// By the numbers of `EKParticipant::participantStatus`. Who said nothing has not answered yet (RFC 5545, 3.2.12).
constexpr const char* kStatuses[] = {"NEEDS-ACTION", "NEEDS-ACTION", "ACCEPTED",  "DECLINED",
                                     "TENTATIVE",    "DELEGATED",    "COMPLETED", "IN-PROCESS"};

class AttendeeFace final : public CalAttendee {
 public:
  explicit AttendeeFace(std::shared_ptr<EKParticipant> participant) : m_participant(std::move(participant)) {}
  OptionalText address() const override { return m_participant->url(); }
  OptionalText commonName() const override { return m_participant->name(); }
  OptionalText status() const override {
    const auto status = static_cast<std::size_t>(m_participant->participantStatus());
    return status < std::size(kStatuses) ? OptionalText(kStatuses[status]) : std::nullopt;
  }

 private:
  std::shared_ptr<EKParticipant> m_participant;
};

}  // namespace

std::shared_ptr<CalRecurrenceRule> EventFace::recurrenceRule() const {
  const auto rules = m_object->recurrenceRules();
  return rules && !rules->empty() ? faceOf<RecurrenceRuleFace>(rules->front()) : nullptr;
}

void EventFace::setRecurrenceRule(std::shared_ptr<CalRecurrenceRule> rule) {
  if (auto own = behind<RecurrenceRuleFace>(rule)) {
    m_object->setRecurrenceRules(std::vector{std::move(own)});
  } else {
    m_object->setRecurrenceRules(std::nullopt);
  }
}

std::optional<std::vector<std::shared_ptr<CalAttendee>>> EventFace::attendees() const {
  const auto participants = m_object->attendees();
  if (!participants) { return std::nullopt; }
  std::vector<std::shared_ptr<CalAttendee>> attendees;
  for (const auto& participant : *participants) { attendees.push_back(faceOf<AttendeeFace>(participant)); }
  return attendees;
}

}  // namespace orlocal
