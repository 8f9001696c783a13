#pragma once

#include "accounts/account_book.h"
#include "accounts/sync/account_sync.h"
#include "accounts/transport/http.h"

namespace orlocal::accounts {

/// Fetches what a subscription's address has now (an http, https or webcal address, or a local file) and makes its
/// calendar the same: items keep their identifiers by their UID, and those that the text lacks are removed.
///
/// A text that cannot be fetched or is no calendar changes nothing. `account.state` takes what the server said of the
/// text (ETag, Last-Modified) and how often it wishes to be asked (REFRESH-INTERVAL, X-PUBLISHED-TTL).
SyncReport refreshSubscription(store::CalendarStore& store, Transport& transport, const Clock& clock, Account& account,
                               const SyncOptions& options);

/// Fetches what `account.settings.address` has and makes a subscription of it: its source, its calendar and the items.
/// A text that cannot be fetched or is no calendar makes nothing. An account without a name gets the calendar's own, or
/// one made of the address; a name that is taken is refused.
Answer<SyncReport> subscribe(store::CalendarStore& store, Transport& transport, const Clock& clock, Account& account,
                             const SyncOptions& options);

}  // namespace orlocal::accounts
