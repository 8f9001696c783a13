#pragma once

#include <cstdint>

#include "platform/host/fm_api.h"

namespace orlocal {

// The functions that the host can call. The bridge defines Orlo_Version and Orlo_GetLastError, the layer above the
// rest.
extern "C" {
#define ORLO_FUNCTION(name)                                                                                     \
  fmx::ErrorCode name(std::int16_t functionId, const fmx::ExprEnv* environment, const fmx::DataVect* arguments, \
                      fmx::Data* result)
ORLO_FUNCTION(Orlo_Version);
ORLO_FUNCTION(Orlo_GetItemCountForType);
ORLO_FUNCTION(Orlo_OpenItemAt);
ORLO_FUNCTION(Orlo_OpenItemWithUID);
ORLO_FUNCTION(Orlo_GetProperty);
ORLO_FUNCTION(Orlo_EventsFetch);
ORLO_FUNCTION(Orlo_RemindersFetch);
ORLO_FUNCTION(Orlo_CalOpenCalendarWithTitle);
ORLO_FUNCTION(Orlo_SetProperty);
ORLO_FUNCTION(Orlo_GetLastError);
ORLO_FUNCTION(Orlo_SaveItem);
ORLO_FUNCTION(Orlo_AddRecurrence);
ORLO_FUNCTION(Orlo_AddAlarm);
ORLO_FUNCTION(Orlo_RemoveAlarm);
ORLO_FUNCTION(Orlo_RemoveRecurrence);
ORLO_FUNCTION(Orlo_NewItem);
ORLO_FUNCTION(Orlo_RemoveItem);
ORLO_FUNCTION(Orlo_RemoveAllAlarmsFrom);

/// Names the script to start whenever the calendar database changes outside the host: file name (argument 0), script
/// name (argument 1), both stored as they are. The last names win; each call subscribes once more, so that after n
/// calls a change starts the script n times. The thread of the first call is the one that starts scripts; it must be
/// the host's main thread.
///
/// Leaves the result as it is. A platform exception shows only in the last error: code -400 with the exception's name.
/// Not in the table: hosts reach it by its symbol, and start-up calls it where the settings name a script.
[[gnu::visibility("default")]] ORLO_FUNCTION(Orlo_RegisterUpdateScript);
#undef ORLO_FUNCTION
}

struct FunctionEntry {
  std::int16_t id;
  std::int16_t minArgs;
  std::int16_t maxArgs;
  fmx::ExternalFunction function;
};

/// What start-up registers, in this order. A function keeps its ID for good.
inline constexpr FunctionEntry kFunctions[] = {
    {151, 0, 1, &Orlo_Version},          {152, 1, 1, &Orlo_GetItemCountForType},
    {153, 2, 2, &Orlo_OpenItemAt},       {154, 2, 3, &Orlo_OpenItemWithUID},
    {155, 2, 3, &Orlo_GetProperty},      {156, 4, 4, &Orlo_EventsFetch},
    {157, 3, 3, &Orlo_RemindersFetch},   {158, 1, 1, &Orlo_CalOpenCalendarWithTitle},
    {159, 3, 3, &Orlo_SetProperty},      {160, 0, 1, &Orlo_GetLastError},
    {161, 1, 2, &Orlo_SaveItem},         {162, 7, 7, &Orlo_AddRecurrence},
    {163, 6, 6, &Orlo_AddAlarm},         {164, 2, 2, &Orlo_RemoveAlarm},
    {165, 0, 0, &Orlo_RemoveRecurrence}, {166, 1, 1, &Orlo_NewItem},
    {167, 2, 4, &Orlo_RemoveItem},       {168, 1, 1, &Orlo_RemoveAllAlarmsFrom},
};

/// What shutdown unregisters, both ends included: wider than the table, so that IDs of other versions go, too.
inline constexpr std::int16_t kFirstId = 148;
inline constexpr std::int16_t kLastId = 169;

/// Shown in every calculation dialog; may be evaluated on the server.
inline constexpr std::uint32_t kFunctionFlags = 0xFF01;

}  // namespace orlocal
