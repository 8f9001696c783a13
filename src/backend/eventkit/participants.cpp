#include "backend/current_items.h"
#include "backend/eventkit/ical_ek_functions.h"
#include "backend/keyword_table.h"
#include "backend/property_tables.h"

namespace orlocal {
namespace {

struct StatusWord {
  int number;
  const char* text;
};

// "Pendind" and "Tenative" are what solutions compare with.
constexpr StatusWord kStatusWords[] = {
    {1, "Pendind"},   {2, "Accepted"},  {3, "Declined"},   {4, "Tenative"},
    {5, "Delegated"}, {6, "Completed"}, {7, "In Process"},
};

OptionalText statusText(const EKParticipant& participant, const AddressBook*) {
  const auto* word = rowNumbered(kStatusWords, participant.participantStatus());
  return word != nullptr ? word->text : "Unknown";
}

OptionalText address(const EKParticipant& participant, const AddressBook* book) {
  if (book == nullptr) { return std::nullopt; }
  for (const auto& email : participant.emailAddresses()) {
    if (auto known = book->addressOf(email)) { return known; }
  }
  return std::nullopt;
}

OptionalText commonName(const EKParticipant& participant, const AddressBook*) { return participant.name(); }

constexpr PropertyGetter<const EKParticipant&, const AddressBook*> kWordGetters[] = {
    {"address", address},
    {"commonname", commonName},
    {"status", statusText},
};

constexpr PropertyGetter<const EKParticipant&, const AddressBook*> kNumberGetters[] = {
    {"address", address},
    {"commonname", commonName},
    {"status", [](const EKParticipant& participant,
                  const AddressBook*) { return OptionalText(std::to_string(participant.participantStatus())); }},
    {"role", [](const EKParticipant& participant,
                const AddressBook*) { return OptionalText(std::to_string(participant.participantRole())); }},
    {"type", [](const EKParticipant& participant,
                const AddressBook*) { return OptionalText(std::to_string(participant.participantType())); }},
};

template <std::size_t Size>
OptionalText attribute(const PropertyGetter<const EKParticipant&, const AddressBook*> (&getters)[Size],
                       const OptionalText& property, const EKParticipant* participant, const AddressBook* book) {
  if (participant == nullptr) { return noneWith(kNoAttendeeToGetProperty); }
  if (!property) { return noneWith(kPropertyRequired); }
  const auto* getter = rowForAnyCase(getters, *property);
  return getter != nullptr ? getter->read(*participant, book) : noneWith(kInvalidProperty);
}

}  // namespace

std::int32_t iCalEKFunctions::openParticipantAt(std::int32_t index) {
  if (!m_ekEvent) { return failWith(kInvalidCallOrder); }
  m_ekParticipant.reset();
  const auto attendees = m_ekEvent->attendees();
  if (!attendees || !isWithin(index, attendees->size())) { return failWith(kIndexOutOfBounds); }
  m_ekParticipant = objectAtIndex(*attendees, index - 1);
  return m_ekParticipant ? 0 : failWith(kItemNotFound);
}

OptionalText iCalEKFunctions::getParticipantAttribute(const OptionalText& property, std::int32_t, const OptionalText&) {
  return attribute(kWordGetters, property, m_ekParticipant.get(), m_AddressBook);
}

OptionalText iCalEKFunctions::getEventParticipantAttribute(const OptionalText& property, std::int32_t) {
  return attribute(kNumberGetters, property, m_ekParticipant.get(), m_AddressBook);
}

}  // namespace orlocal
