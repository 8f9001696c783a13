#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "host/commands/alarms/alarm_list.h"
#include "store/time/zone.h"

// How alarms are told.
namespace orlocal::host {

/// The item as every command prints it, and when its alarm rings: see docs/schema/output.json.
nlohmann::json alarmNewsJson(const AlarmNews& news, const store::Zone& viewer);

/// "2026-11-02 08:45  Standup  2026-11-02 09:00–09:15  Work  <identifier>"; one that rings more than a minute after its
/// moment says so.
std::string alarmNewsLine(const AlarmNews& news, const store::Zone& viewer, store::Moment now);

/// "Standup, Mon 2 Nov 2026 09:00, in Work".
std::string alarmNewsInWords(const AlarmNews& news, const store::Zone& viewer);

/// By days, in 80 columns.
void printAlarms(const std::vector<AlarmNews>& list, const store::Zone& viewer, store::Moment now, bool colors,
                 std::ostream& out);

/// A variable for each text, number and truth value of `json`, as "ORLOCAL_ALARM_TITLE=Standup"; lists are left out.
/// What is null is empty; a text that no program could be given (more than 32 KiB) is left out, too.
std::vector<std::string> alarmVariables(const nlohmann::json& json);

}  // namespace orlocal::host
