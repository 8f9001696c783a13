#pragma once

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

#include "store/model/model.h"
#include "store/time/zone.h"

// What is known of an item, in the words of a person.
namespace orlocal::host {

/// What the item's file says of it (RFC 5545, 3.8.1.11): none, or what calendar files call it in small letters. A
/// completed reminder is "completed".
std::string statusOf(const store::Item& item);
/// The same in words, where they are known.
std::string statusWords(const store::Item& item);
/// What it is filed under (RFC 5545, 3.8.1.2).
std::vector<std::string> categoriesOf(const store::Item& item);
/// Takes the place of what it was filed under; what calendar files cannot carry is left out of the names.
void setCategories(const std::vector<std::string>& names, store::Item& item);
bool isCancelled(const store::Item& item);
bool isTentative(const store::Item& item);

/// "15 minutes", "1 hour 30 minutes", "2 days".
std::string lengthWords(std::chrono::seconds length);

/// "15 minutes before the start", "at the start", "on Mon 2 Nov 2026 at 09:00, by e-mail to ada@example.org".
std::string alarmWords(const store::Alarm& alarm, store::ItemKind kind, const store::Zone& viewer);

/// "high (1)", "none".
std::string priorityWords(int priority);

/// "accepted", "has not answered".
std::string answerWords(store::Attendee::Status status);
/// "optional", "chair"; empty for what is usual.
std::string roleWords(const store::Attendee& attendee);
/// "Ada Lovelace <ada@example.org>".
std::string personWords(const store::Attendee& attendee);
/// Without "mailto:".
std::string_view plainAddress(std::string_view address);

}  // namespace orlocal::host
