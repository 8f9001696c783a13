#pragma once

#include <functional>
#include <string>
#include <vector>

#include "accounts/dav/calendar_server.h"
#include "accounts/transport/http.h"

namespace orlocal::accounts {

/// What an account is, once it was found.
struct FoundAccount {
  std::string principal;  ///< absolute URL
  /// calendar-home-set (RFC 4791, 6.2.1), as a rule one.
  std::vector<std::string> homes;
  bool schedules = false;  ///< the server sends invitations by itself (RFC 6638)
};

/// Looks up the SRV records of a name, best first ("host:port"), and the path of its TXT record. Empty where no
/// resolver is there.
struct ServiceRecord {
  std::string host;
  int port = 0;
  std::string path;  ///< empty when none is said
};
using ServiceLookup = std::function<std::vector<ServiceRecord>(const std::string& service, const std::string& domain)>;

/// The system's resolver (RFC 6764, 3 and 4).
std::vector<ServiceRecord> systemServiceLookup(const std::string& service, const std::string& domain);

/// Finds principal and homes from whatever address of the server a person has (RFC 6764, 6): the server's root, a
/// principal, a home, a calendar, a mail domain ("example.org" or "ann@example.org"). What is tried, in this order: the
/// address itself,
/// /.well-known/caldav there, the service records of the domain, its root. The failure says what each gave.
Answer<FoundAccount> findAccount(Transport& transport, const std::string& address, const ServiceLookup& lookup);

}  // namespace orlocal::accounts
