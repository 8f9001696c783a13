#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

#include <nlohmann/json.hpp>
#include <sys/types.h>

namespace orlocal::bench {

/// What all tasks are told.
struct Field {
  std::filesystem::path folder;  ///< of the clients' stores
  std::string address;           ///< of the server
  std::string user;              ///< of all clients; empty: each has one of its own, user0000 and so on
  std::string password = "secret";
  pid_t server = 0;  ///< the process below which the server runs
  std::size_t clients = 1;
  std::size_t threads = 16;
  int rounds = 1;
  std::string kind = "quiet";                ///< of what is measured all at once: quiet, received or sent
  double perMinute = 60;                     ///< syncs of all clients
  double seconds = 15;                       ///< how long syncs are due
  double changesHere = 0, changesThere = 0;  ///< before so many of a hundred syncs
  bool floor = false;                        ///< measure that, too
};

/// Clients that have no store yet get one, with everything that their calendar holds, all at once.
nlohmann::json joinAll(const Field& field);
/// All clients sync at once; then their requests are sent without us. Both again and again.
nlohmann::json syncAll(const Field& field);
/// Clients sync when they are due, one after the other, while some events change.
nlohmann::json syncSteadily(const Field& field);

}  // namespace orlocal::bench
