#pragma once

#include "report.h"
#include "setting.h"

// What can be measured. Each adds its rows to the report.
namespace orlocal::bench {

/// Inputs that were made to hurt: what they cost, against their size. Printed only.
void measureHostile(Report& report, const Setting& setting);
/// Calendar files into new stores.
void measureImport(Report& report, const Setting& setting);
/// How long imports keep others from saving.
void measureTurns(Report& report, const Setting& setting);
/// Months and stretches.
void measureReading(Report& report, const Setting& setting);
/// Occurrences of a year opened and read one after the other.
void measureWalking(Report& report, const Setting& setting);
/// Peaks of memory.
void measureMemory(Report& report, const Setting& setting);
/// Saves, updates, removals, splits.
void measureSaving(Report& report, const Setting& setting);
/// Several processes on one store.
void measureSharing(Report& report, const Setting& setting);
/// A host that does nothing but send idle messages.
void measureIdling(Report& report, const Setting& setting);
/// Instructions of small fixed tasks, under valgrind.
void measureInstructions(Report& report, const Setting& setting);
/// From the commit of one process to the script start in another.
void measureNotices(Report& report, const Setting& setting);
/// A call that does nothing.
void measureCalls(Report& report, const Setting& setting);

// What the program does when it runs itself, see `ownProcess`.

/// Answers twelve months ("months") or walks over a year ("year"); prints the process's peak of memory in KiB.
void printPeakOf(const Setting& setting, const std::string& what);
/// Does one of the tasks whose instructions are counted.
void doTask(const Setting& setting, const std::string& name);

}  // namespace orlocal::bench
