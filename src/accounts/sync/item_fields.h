#pragma once

#include <string>
#include <string_view>

namespace orlocal::accounts {

/// Properties that are changed together are one field: of two changes of one field only one can stand.
struct ItemField {
  std::string_view property;
  std::string_view field;  ///< as people are told
};

constexpr std::string_view kTimeField = "time";
constexpr std::string_view kRepetitionField = "repetition";
constexpr std::string_view kExceptionsField = "exceptions";
constexpr std::string_view kAlarmsField = "alarms";

constexpr ItemField kItemFields[] = {
    {"SUMMARY", "title"},         {"DESCRIPTION", "notes"},
    {"LOCATION", "location"},     {"URL", "url"},
    {"PRIORITY", "priority"},     {"DTSTART", kTimeField},
    {"DTEND", kTimeField},        {"DURATION", kTimeField},
    {"DUE", kTimeField},          {"RRULE", kRepetitionField},
    {"RDATE", kRepetitionField},  {"EXRULE", kRepetitionField},
    {"EXDATE", kExceptionsField}, {"STATUS", "completion"},
    {"COMPLETED", "completion"},  {"PERCENT-COMPLETE", "completion"},
    {"ATTENDEE", "attendees"},    {"ORGANIZER", "attendees"},
};

/// What is said of a conflict in which one version as a whole stands against the other.
constexpr std::string_view kRemoved = "removed";
constexpr std::string_view kPutBack = "put back to an older state";
constexpr std::string_view kNotAllowed = "not allowed";
constexpr std::string_view kCutOff = "changes from an occurrence on";
constexpr std::string_view kWholeItem[] = {kRemoved, kPutBack, kNotAllowed, kCutOff};

/// What says when and by whom an item was changed, and names it: never a change by itself.
constexpr std::string_view kBookkeeping[] = {"UID", "RECURRENCE-ID", "DTSTAMP", "CREATED", "LAST-MODIFIED", "SEQUENCE"};

constexpr bool isBookkeeping(std::string_view property) {
  for (const std::string_view each : kBookkeeping) {
    if (each == property) { return true; }
  }
  return false;
}

/// A property that is in no row is a field of its own, named as the property is.
constexpr std::string_view fieldOf(std::string_view property) {
  for (const ItemField& row : kItemFields) {
    if (row.property == property) { return row.field; }
  }
  return property;
}

}  // namespace orlocal::accounts
