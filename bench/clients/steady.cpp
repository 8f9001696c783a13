// Clients that poll, each when it is due, while some events change. Nobody waits for anybody: a server that falls
// behind is asked on, and each sync is counted from when it was due.
#include <map>
#include <set>
#include <thread>

#include <fmt/format.h>

#include "crowd.h"
#include "measure.h"
#include "plain_connection.h"
#include "process_tree.h"

namespace orlocal::bench {
namespace {

using nlohmann::json;

/// Whether the sync with this number is one of so many of a hundred, which are spread evenly.
bool isOneOf(double ofHundred, double number) {
  return static_cast<long>(number * ofHundred / 100) != static_cast<long>((number + 1) * ofHundred / 100);
}

/// Changes come this long before the sync that meets them.
constexpr std::chrono::duration<double> kBefore(0.5);

struct Plan {
  std::vector<Job> syncs, changes;
  std::vector<Synced> synced;
  std::set<std::shared_ptr<Client>> touched;
};

/// The plan stays where it is: its jobs write into it.
void fill(Plan& plan, const Field& field, const Clients& clients) {
  const double between = 60 / field.perMinute;
  plan.synced.resize(static_cast<std::size_t>(field.seconds / between));
  // Changes here and there meet other syncs.
  const double apart = field.changesThere > 0 ? 50 / field.changesThere : 0;
  for (std::size_t i = 0; i < plan.synced.size(); ++i) {
    const auto& client = clients[i % clients.size()];
    const auto number = static_cast<double>(i);
    const std::chrono::duration<double> due = kBefore + std::chrono::duration<double>(between * number);
    plan.syncs.push_back({due, [client, &synced = plan.synced[i]] { synced = client->sync(); }});
    const std::string title = fmt::format("Steadily {}", i);
    if (isOneOf(field.changesHere, number)) {
      plan.changes.push_back({due - kBefore, [client, title] { client->changeHere(title); }});
      plan.touched.insert(client);
    }
    if (isOneOf(field.changesThere, number + apart)) {
      plan.changes.push_back({due - kBefore, [client, title] {
                                PlainConnection().send(client->changeThere(title), client->login().user,
                                                       client->login().password);
                              }});
      plan.touched.insert(client);
    }
  }
}

json kindsOf(const Plan& plan, const std::vector<Done>& done) {
  std::map<Kind, std::vector<double>> latencies;
  for (std::size_t i = 0; i < done.size(); ++i) {
    if (done[i].failure.empty()) { latencies[plan.synced[i].kind].push_back(done[i].latency); }
  }
  json kinds;
  for (const auto& [kind, name] :
       {std::pair(Kind::kQuiet, "quiet"), std::pair(Kind::kReceived, "received"), std::pair(Kind::kSent, "sent")}) {
    kinds[name] = {{"count", latencies[kind].size()},
                   {"median", percentile(latencies[kind], 50)},
                   {"p99", percentile(latencies[kind], 99)}};
  }
  return kinds;
}

}  // namespace

json syncSteadily(const Field& field) {
  const Clients clients = clientsOf(field);
  // Opening a store is no part of a poll.
  mustHaveGoneWell(withAll(field, clients, [](Client& client, std::size_t) { client.items(); }));
  Plan plan;
  fill(plan, field, clients);
  std::vector<Done> changed, done;
  const Meter meter(field.server);
  double took = 0;
  {
    // Those who change things are others, and wait for no sync.
    const std::jthread others([&] { changed = runJobs(std::move(plan.changes), field.threads); });
    took = seconds([&] { done = runJobs(std::move(plan.syncs), field.threads); });
  }
  json ours = meter.stop(took);
  ours.update(spreadOf(done));
  ours["requests"] = requestsOf(plan.synced);
  ours["kinds"] = kindsOf(plan, done);
  // All of it comes to rest, or this fails: where all have one calendar, all are touched.
  const bool shared = !field.user.empty();
  settle(field, shared ? clients : Clients(plan.touched.begin(), plan.touched.end()));
  return {{"clients", clients.size()},
          {"perMinute", field.perMinute},
          {"due", field.seconds},
          {"ours", ours},
          {"changes", spreadOf(changed)},
          {"serverMebibytes", mebibytesOf(field.server)},
          {"ownPeakMebibytes", ownPeakMebibytes()}};
}

}  // namespace orlocal::bench
