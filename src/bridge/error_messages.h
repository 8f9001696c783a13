#pragma once

#include <cstdint>
#include <string_view>

#include "backend/error_codes.h"

namespace orlocal {

struct ErrorMessage {
  std::int64_t code;
  std::string_view text;
};

/// Everything that can go wrong, in words for people. Solutions compare some of these texts: they stay as they are,
/// "specfied" and "occurenceCount" included.
inline constexpr ErrorMessage kErrorMessages[] = {
    {0, "SUCCESS"},
    {kInvalidParameterCount, "Invalid Number of Parameters"},
    {kInvalidParameterValue, "Invalid Parameter value(s)"},
    {kLibraryFailedToLoad, "Library failed to load"},
    {kFileNotFound, "The specified file cannot be found"},
    {kFolderNotFound, "The specified folder cannot be found"},
    {kFolderNotAccessible, "The specified folder cannot be accessed"},
    {kSystemError, "System Error"},
    {kUnknownException, "Unknown Exception"},
    {kComException, "COM Exception"},
    {kInvalidCallOrder, "Invalid call order. Must access other item prior to call."},
    {kItemNotFound, "Item not found."},
    {kIndexOutOfBounds, "Item index out of bounds."},
    {kEventPredicateNotCreated, "Unable to create event predicate."},
    {kCalendarArrayNotCreated, "Cannot create calendar array from names."},
    {kMissingArgument, "Missing argument in function."},
    {kInvalidArgument, "Invalid argument in function."},
    {kReminderPredicateNotCreated, "Unable to create reminder predicate."},
    {kNoAlarms, "No Alarms available."},
    {kItemNotCreated, "Unable to create item."},
    {kRecurrenceEndNotCreated, "Unable to create recurrence end."},
    {kRecurrenceRuleNotCreated, "Unable to create recurrence rule."},
    {kLegacyItemNotCreated, "Unable to create item."},
    {kCalendarUidNotFound, "Unable to locate Calendar by UID."},
    {kCalendarNotOpened, "Unable to open calendar."},
    {kSystemNotSupported, "This operating system is not supported."},
    {kParameterNotSupported, "Parameter is not supported."},
    {kCalendarNotSaved, "Unable to save calendar. Either a parameter is invalid or the calendar is read-only."},
    {kEventNotSaved, "Unable to save event. Either a parameter is invalid or the event is read-only."},
    {kReminderNotSaved, "Unable to save reminder."},
    {kInvalidRecurrenceParameters, "Invalid parameters passed for adding a recurrence rule."},
    {kInvalidRecurrenceType, "Invalid recurrence type. Must be 'Daily','Weekly','Monthly' or 'Yearly'"},
    {kCalendarNotDeleted, "Unable to delete calendar. Calendar could be non-deletable or the only calendar existing."},
    {kCalendarNotModifiable, "This calendar can't be modified."},
    {kRecurrenceIntervalRequired, "An interval greater than 0 is required for adding recurrence to an event."},
    {kInvalidDueDate, "Due date is invalid. Please verify there is a valid due date."},
    {kAlarmNotAdded, "Alarm was unable to be added."},
    {kAlarmNotDeleted, "Alarm was unable to be deleted."},
    {kAlarmEmailRequired, "An email must be specified when setting an alarm type to 'email'"},
    {kAlarmProcedureNotSupported, "URLs and an alarm type of 'procedure' are not supported after OSX 10.9"},
    {kAlarmSoundRequired, "A sound name must be specified when setting up an alarm type to 'sound'"},
    {kAlarmTriggerRequired, "A relative offset or absolute date must be specified for the alarm"},
    {kAlarmActionRequired, "An action for the alarm must be specified."},
    {kInvalidAlarmDate, "Invalid date format for the alarm."},
    {kEventNotFound, "Event was not found."},
    {kReminderNotFound, "Reminder was not found."},
    {kCalendarNotFound, "Calendar was not found."},
    {kSpanRequired, "A span must be specified."},
    {kCalendarNotCreated, "Unable to create calendar."},
    {kReminderListNotCreated, "Unable to create reminder list."},
    {kEventNotCreated, "Unable to create event."},
    {kReminderNotCreated, "Unable to create reminder."},
    {kInvalidType, "Invalid type specified in parameter."},
    {kNoEventToAddRecurrence, "An event must be opened before a recurrence rule can be added."},
    {kAlarmActionNotSpecified, "An alarm action was not specified."},
    {kAlarmTypeRequired, "An alarm type must be specified."},
    {kNoReminderToAddAlarm, "A reminder must be opened before adding an alarm."},
    {kNoEventToAddAlarm, "An event must be opened before adding an alarm."},
    {kNoEventToRemoveRecurrence, "An event must be opened before a recurrence rule can be removed."},
    {kNoEventToSetProperty, "An event must be opened before setting a property."},
    {kPropertyRequired, "A property must be specified."},
    {kNoCalendarToSetProperty, "A calendar must be opened before setting a property."},
    {kNoReminderToSetProperty, "A reminder must be opened before setting a property."},
    {kInvalidSpan, "An invalid span value was passed. Valid values are 'this', 'future', or 'all'."},
    {kNoEventsFetched, "You must fetch events before getting an object count of events."},
    {kNoRemindersFetched, "You must fetch reminders before getting an object count of reminders."},
    {kNoEventToCount, "An event must be opened before getting an object count"},
    {kNoItemToCountAlarms, "A reminder or event must be opened before getting an alarm count"},
    {kCalendarTitleNotFound, "Unable to find calendar by title."},
    {kReminderUidNotFound, "Unable to find reminder by uid."},
    {kReminderNotOpenedAtIndex, "Unable to open reminder at the specfied index."},
    {kAlarmNotOpenedAtIndex, "Unable to open alarm at the specified index."},
    {kNoAttendeeToGetProperty, "An attendee must be opened before getting a property."},
    {kInvalidProperty, "Invalid property specified in parameter."},
    {kNoAlarmToGetProperty, "An alarm must be opened before getting a property."},
    {kNoCalendarToGetProperty, "A calendar must be opened before getting a property."},
    {kNoEventToGetProperty, "An event must be opened before getting a property."},
    {kNoReminderToGetProperty, "A reminder must be opened before getting a property."},
    {kNoEventToGetRecurrenceProperty, "An event must be opened before getting a recurrence rule property."},
    {kInvalidRecurrenceEndProperty,
     "Invalid Recurrence Rule End property specified in parameter. Valid sub properties are 'usesEndDate' , "
     "'occurenceCount' , or 'endDate'."},
    {kEventWithAttendeesNotSaved,
     "Event could not be saved. Events containing attendees can't be modified externally from the calendar "
     "application."},
    {kCalendarContentNotModifiable, "Calendar could not be saved. Verify that it allows content modification."},
    {kReminderListNotOpened, "Unable to open reminder list."},
    {kWeeksOfTheYearNotSupported, "The Recurrence Rule Property 'WeeksOfTheYear' is currently not supported."},
    {kRelativeOffsetRequired, "No Relative offset specified when adding the Relative Offset alarm property."},
    {kAbsoluteDateRequired, "No Absolute offset specified when adding the Absolute Offset alarm property."},
    {kStartAfterEnd, "Start Date is greater than End Date for this event."},
    {kNoEventPredicate, "An Event Predicate has not been created. Get an Event Predicate before opening an event."},
    {kReminderNotDeleted, "Unable to delete reminder."},
    {kEventNotDeleted, "Unable to delete event."},
};

/// Said of every code without a row.
inline constexpr std::string_view kUndefinedError = "Undefined Error.";

constexpr std::string_view messageFor(std::int64_t code) {
  for (const auto& row : kErrorMessages) {
    if (row.code == code) { return row.text; }
  }
  return kUndefinedError;
}

}  // namespace orlocal
