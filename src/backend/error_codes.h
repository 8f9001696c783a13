#pragma once

#include <cstdint>
#include <optional>

namespace orlocal {

/// Why the last call failed; 0 when it did not. Whoever finds a failure sets it, the function frame clears it. Main
/// thread only.
extern std::int64_t g_llasterror;

inline constexpr std::int64_t kInvalidParameterCount = -3;
inline constexpr std::int64_t kInvalidParameterValue = -4;
inline constexpr std::int64_t kLibraryFailedToLoad = -200;
inline constexpr std::int64_t kFileNotFound = -300;
inline constexpr std::int64_t kFolderNotFound = -301;
inline constexpr std::int64_t kFolderNotAccessible = -302;
inline constexpr std::int64_t kSystemError = -400;
inline constexpr std::int64_t kUnknownException = -998;
inline constexpr std::int64_t kComException = -999;

inline constexpr std::int64_t kInvalidCallOrder = 9000;
inline constexpr std::int64_t kItemNotFound = 9001;
inline constexpr std::int64_t kIndexOutOfBounds = 9002;
inline constexpr std::int64_t kEventPredicateNotCreated = 9003;
inline constexpr std::int64_t kCalendarArrayNotCreated = 9004;
inline constexpr std::int64_t kMissingArgument = 9005;
inline constexpr std::int64_t kInvalidArgument = 9006;
inline constexpr std::int64_t kReminderPredicateNotCreated = 9007;
inline constexpr std::int64_t kNoAlarms = 9008;
inline constexpr std::int64_t kItemNotCreated = 9009;
inline constexpr std::int64_t kRecurrenceEndNotCreated = 9010;
inline constexpr std::int64_t kRecurrenceRuleNotCreated = 9011;
inline constexpr std::int64_t kLegacyItemNotCreated = 9012;  ///< the legacy back end's; same message as 9009
inline constexpr std::int64_t kCalendarUidNotFound = 9013;
inline constexpr std::int64_t kCalendarNotOpened = 9014;
inline constexpr std::int64_t kSystemNotSupported = 9015;
inline constexpr std::int64_t kParameterNotSupported = 9016;
inline constexpr std::int64_t kCalendarNotSaved = 9017;
inline constexpr std::int64_t kEventNotSaved = 9018;
inline constexpr std::int64_t kReminderNotSaved = 9019;
inline constexpr std::int64_t kInvalidRecurrenceParameters = 9020;
inline constexpr std::int64_t kInvalidRecurrenceType = 9021;
inline constexpr std::int64_t kCalendarNotDeleted = 9022;
inline constexpr std::int64_t kCalendarNotModifiable = 9023;
inline constexpr std::int64_t kRecurrenceIntervalRequired = 9024;
inline constexpr std::int64_t kInvalidDueDate = 9025;
inline constexpr std::int64_t kAlarmNotAdded = 9026;
inline constexpr std::int64_t kAlarmNotDeleted = 9027;
inline constexpr std::int64_t kAlarmEmailRequired = 9028;
inline constexpr std::int64_t kAlarmProcedureNotSupported = 9029;
inline constexpr std::int64_t kAlarmSoundRequired = 9030;
inline constexpr std::int64_t kAlarmTriggerRequired = 9031;
inline constexpr std::int64_t kAlarmActionRequired = 9032;
inline constexpr std::int64_t kInvalidAlarmDate = 9033;
inline constexpr std::int64_t kEventNotFound = 9034;
inline constexpr std::int64_t kReminderNotFound = 9035;
inline constexpr std::int64_t kCalendarNotFound = 9036;
inline constexpr std::int64_t kSpanRequired = 9037;
inline constexpr std::int64_t kCalendarNotCreated = 9038;
inline constexpr std::int64_t kReminderListNotCreated = 9039;
inline constexpr std::int64_t kEventNotCreated = 9040;
inline constexpr std::int64_t kReminderNotCreated = 9041;
inline constexpr std::int64_t kInvalidType = 9042;
inline constexpr std::int64_t kNoEventToAddRecurrence = 9043;
inline constexpr std::int64_t kAlarmActionNotSpecified = 9044;
inline constexpr std::int64_t kAlarmTypeRequired = 9045;
inline constexpr std::int64_t kNoReminderToAddAlarm = 9046;
inline constexpr std::int64_t kNoEventToAddAlarm = 9047;
inline constexpr std::int64_t kNoEventToRemoveRecurrence = 9048;
inline constexpr std::int64_t kNoEventToSetProperty = 9049;
inline constexpr std::int64_t kPropertyRequired = 9050;
inline constexpr std::int64_t kNoCalendarToSetProperty = 9051;
inline constexpr std::int64_t kNoReminderToSetProperty = 9052;
inline constexpr std::int64_t kInvalidSpan = 9053;
inline constexpr std::int64_t kNoEventsFetched = 9054;
inline constexpr std::int64_t kNoRemindersFetched = 9055;
inline constexpr std::int64_t kNoEventToCount = 9056;
inline constexpr std::int64_t kNoItemToCountAlarms = 9057;
inline constexpr std::int64_t kCalendarTitleNotFound = 9058;
inline constexpr std::int64_t kReminderUidNotFound = 9059;
inline constexpr std::int64_t kReminderNotOpenedAtIndex = 9060;
inline constexpr std::int64_t kAlarmNotOpenedAtIndex = 9061;
inline constexpr std::int64_t kNoAttendeeToGetProperty = 9062;
inline constexpr std::int64_t kInvalidProperty = 9063;
inline constexpr std::int64_t kNoAlarmToGetProperty = 9064;
inline constexpr std::int64_t kNoCalendarToGetProperty = 9065;
inline constexpr std::int64_t kNoEventToGetProperty = 9066;
inline constexpr std::int64_t kNoReminderToGetProperty = 9067;
inline constexpr std::int64_t kNoEventToGetRecurrenceProperty = 9068;
inline constexpr std::int64_t kInvalidRecurrenceEndProperty = 9069;
inline constexpr std::int64_t kEventWithAttendeesNotSaved = 9070;
inline constexpr std::int64_t kCalendarContentNotModifiable = 9071;
inline constexpr std::int64_t kReminderListNotOpened = 9072;
inline constexpr std::int64_t kWeeksOfTheYearNotSupported = 9073;
inline constexpr std::int64_t kRelativeOffsetRequired = 9074;
inline constexpr std::int64_t kAbsoluteDateRequired = 9075;
inline constexpr std::int64_t kStartAfterEnd = 9076;
inline constexpr std::int64_t kNoEventPredicate = 9077;
inline constexpr std::int64_t kReminderNotDeleted = 9078;
inline constexpr std::int64_t kEventNotDeleted = 9079;

inline constexpr std::int64_t kStoreRefused = 9998;  ///< the store's own words are in the back end's last-error string
inline constexpr std::int64_t kPlatformException =
    9999;  ///< a caught exception; its reason is in the back end's last-error string

/// Records `code` and gives the result of a method that failed.
inline std::int32_t failWith(std::int64_t code) {
  g_llasterror = code;
  return -1;
}

/// Records `code` and gives the result of a getter that failed.
inline std::nullopt_t noneWith(std::int64_t code) {
  g_llasterror = code;
  return std::nullopt;
}

}  // namespace orlocal
