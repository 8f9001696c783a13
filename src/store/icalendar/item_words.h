#pragma once

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

#include "base/text.h"
#include "store/model/model.h"

// The words of RFC 5545 for the kinds and states of an item's parts, read and written by the same tables.
namespace orlocal::store {

/// Our parameter of EXRULE: from when the rule runs, on the wall clock of the series, where that is not its start.
constexpr std::string_view kExceptionStart = "X-ORLOCAL-START";

template <class Value>
struct Word {
  Value value;
  std::string_view text;
};

constexpr std::array<Word<Alarm::Action>, 4> kActions{{{Alarm::Action::kDisplay, "DISPLAY"},
                                                       {Alarm::Action::kAudio, "AUDIO"},
                                                       {Alarm::Action::kProcedure, "PROCEDURE"},
                                                       {Alarm::Action::kEmail, "EMAIL"}}};

constexpr std::array<Word<Attendee::Status>, 7> kParticipationStates{{
    {Attendee::Status::kPending, "NEEDS-ACTION"},
    {Attendee::Status::kAccepted, "ACCEPTED"},
    {Attendee::Status::kDeclined, "DECLINED"},
    {Attendee::Status::kTentative, "TENTATIVE"},
    {Attendee::Status::kDelegated, "DELEGATED"},
    {Attendee::Status::kCompleted, "COMPLETED"},
    {Attendee::Status::kInProcess, "IN-PROCESS"},
}};

constexpr std::array<Word<Attendee::Role>, 4> kRoles{{{Attendee::Role::kRequired, "REQ-PARTICIPANT"},
                                                      {Attendee::Role::kOptional, "OPT-PARTICIPANT"},
                                                      {Attendee::Role::kChair, "CHAIR"},
                                                      {Attendee::Role::kNonParticipant, "NON-PARTICIPANT"}}};

constexpr std::array<Word<Attendee::Type>, 4> kAttendeeTypes{{{Attendee::Type::kPerson, "INDIVIDUAL"},
                                                              {Attendee::Type::kRoom, "ROOM"},
                                                              {Attendee::Type::kResource, "RESOURCE"},
                                                              {Attendee::Type::kGroup, "GROUP"}}};

/// RFC 5545 asks for these in alarms that have nothing to say; written then, and not kept when read.
constexpr std::string_view kAlarmDescription = "DESCRIPTION:Reminder";
constexpr std::string_view kAlarmSummary = "SUMMARY:Reminder";

/// Compared without case; none for another word.
template <class Value, std::size_t Size>
std::optional<Value> valueOf(const std::array<Word<Value>, Size>& words, std::string_view text) {
  for (const auto& word : words) {
    if (equalsNoCase(word.text, text)) { return word.value; }
  }
  return std::nullopt;
}

/// Empty for a value that has no word.
template <class Value, std::size_t Size>
std::string_view wordOf(const std::array<Word<Value>, Size>& words, Value value) {
  for (const auto& word : words) {
    if (word.value == value) { return word.text; }
  }
  return {};
}

}  // namespace orlocal::store
