#pragma once

#include <functional>
#include <memory>
#include <vector>

#include <nlohmann/json.hpp>

#include "client.h"
#include "schedule.h"
#include "tasks.h"

// What the tasks share: the clients, what they do together, and what it takes.
namespace orlocal::bench {

using Clients = std::vector<std::shared_ptr<Client>>;

Clients clientsOf(const Field& field);

/// The same for each client, now, on all threads.
std::vector<Done> withAll(const Field& field, const Clients& clients,
                          const std::function<void(Client&, std::size_t)>& work);
/// Throws what one of them threw.
void mustHaveGoneWell(const std::vector<Done>& all);
/// Syncs until nothing is new to anybody and a sync is one request. Servers that count in seconds are asked once more
/// in a later one.
void settle(const Field& field, Clients clients);

/// What a stretch of work takes of everybody.
class Meter {
 public:
  explicit Meter(pid_t server);
  /// `seconds` is what it took on the clock.
  nlohmann::json stop(double seconds) const;

 private:
  pid_t m_server;
  double m_serverBefore, m_ownBefore;
};

/// Latencies, lateness and failures.
nlohmann::json spreadOf(const std::vector<Done>& all);

/// The requests of all syncs over as many connections as there are threads; `number` makes what they write new.
nlohmann::json floorOf(const Field& field, const Clients& clients, const std::vector<Synced>& synced, int number);

std::size_t requestsOf(const std::vector<Synced>& synced);

}  // namespace orlocal::bench
