// New clients: the account is found, and everything is fetched.
#include <filesystem>

#include "crowd.h"
#include "measure.h"
#include "process_tree.h"

namespace orlocal::bench {

using nlohmann::json;

json joinAll(const Field& field) {
  Clients clients = clientsOf(field);
  std::erase_if(clients, [](const auto& client) { return client->joined(); });
  std::vector<Synced> synced(clients.size());
  std::vector<Done> done;
  const Meter meter(field.server);
  const double took = seconds([&] {
    done = withAll(field, clients, [&](Client& client, std::size_t i) { synced[i] = client.join(field.floor); });
  });
  json ours = meter.stop(took);
  mustHaveGoneWell(done);
  ours.update(spreadOf(done));
  ours["peakMebibytes"] = ownPeakMebibytes();
  ours["requests"] = requestsOf(synced);
  std::size_t items = 0, bytes = 0;
  for (std::size_t i = 0; i < clients.size(); ++i) {
    items += clients[i]->items();
    bytes += clients[i]->bytesOnDisk();
  }
  json result{{"clients", clients.size()}, {"items", items}, {"storeBytes", bytes}, {"ours", ours}};
  if (field.floor) { result["floor"] = floorOf(field, clients, synced, 0); }
  result["serverMebibytes"] = mebibytesOf(field.server);
  return result;
}

}  // namespace orlocal::bench
