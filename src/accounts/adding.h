#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "accounts/account_book.h"
#include "accounts/dav/calendar_server.h"
#include "accounts/discovery/discovery.h"

namespace orlocal::accounts {

/// What an account is called when nobody says: the host of its address, or the domain of a mail address.
std::string usualNameFor(std::string_view address);

/// Whether an address brings a user or password along, which have no place in it.
bool hasCredentials(std::string_view address);

/// Finds the account of a server that `account.settings.address` leads to. Principal and homes go into
/// `account.state`; given are the calendars that it has.
Answer<std::vector<RemoteCalendar>> findCalendars(Transport& transport, Account& account, const ServiceLookup& lookup);

}  // namespace orlocal::accounts
