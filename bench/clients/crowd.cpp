#include "crowd.h"

#include <algorithm>
#include <fstream>
#include <stdexcept>
#include <thread>

#include <fmt/format.h>

#include "measure.h"
#include "plain_connection.h"
#include "process_tree.h"

namespace orlocal::bench {

using nlohmann::json;

Clients clientsOf(const Field& field) {
  std::filesystem::create_directories(field.folder);
  const auto passwordFile = field.folder / "password";
  std::ofstream(passwordFile) << field.password << '\n';
  std::filesystem::permissions(passwordFile, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
  Clients clients;
  for (std::size_t i = 0; i < field.clients; ++i) {
    const std::string user = field.user.empty() ? fmt::format("user{:04}", i) : field.user;
    // Who has a calendar alone need not heed others.
    clients.push_back(std::make_shared<Client>(field.folder / fmt::format("{:04}.db", i),
                                               Login{field.address, user, field.password, passwordFile},
                                               field.user.empty() ? 0 : i));
  }
  return clients;
}

std::vector<Done> withAll(const Field& field, const Clients& clients,
                          const std::function<void(Client&, std::size_t)>& work) {
  std::vector<Job> jobs;
  for (std::size_t i = 0; i < clients.size(); ++i) {
    jobs.push_back({{}, [&work, &client = *clients[i], i] { work(client, i); }});
  }
  return runJobs(std::move(jobs), field.threads);
}

void mustHaveGoneWell(const std::vector<Done>& all) {
  for (const Done& done : all) {
    if (!done.failure.empty()) { throw std::runtime_error(done.failure); }
  }
}

void settle(const Field& field, Clients clients) {
  constexpr auto kSecond = std::chrono::milliseconds(2'100);
  constexpr int kMost = 5;
  for (int turn = 0; !clients.empty(); ++turn) {
    if (turn == kMost) { throw std::runtime_error("there is no end of news"); }
    if (turn > 0) { std::this_thread::sleep_for(kSecond); }
    std::vector<Synced> synced(clients.size());
    mustHaveGoneWell(withAll(field, clients, [&](Client& client, std::size_t i) { synced[i] = client.sync(); }));
    Clients left;
    for (std::size_t i = 0; i < clients.size(); ++i) {
      if (synced[i].kind != Kind::kQuiet || synced[i].count > 1) { left.push_back(clients[i]); }
    }
    clients = std::move(left);
  }
}

Meter::Meter(pid_t server)
    : m_server(server), m_serverBefore(processorSecondsOf(server)), m_ownBefore(ownProcessorSeconds()) {}

json Meter::stop(double seconds) const {
  const double own = ownProcessorSeconds() - m_ownBefore;
  return {
      {"seconds", seconds}, {"serverProcessor", processorSecondsOf(m_server) - m_serverBefore}, {"ownProcessor", own}};
}

json spreadOf(const std::vector<Done>& all) {
  std::vector<double> latencies, late;
  json failures = json::array();
  std::size_t failed = 0;
  for (const Done& done : all) {
    latencies.push_back(done.latency);
    late.push_back(done.late);
    if (!done.failure.empty() && ++failed <= 3) { failures.push_back(done.failure); }
  }
  return {{"count", all.size()},
          {"failed", failed},
          {"failures", failures},
          {"median", percentile(latencies, 50)},
          {"p95", percentile(latencies, 95)},
          {"p99", percentile(latencies, 99)},
          {"most", percentile(latencies, 100)},
          {"lateMedian", percentile(late, 50)},
          {"lateMost", percentile(late, 100)}};
}

json floorOf(const Field& field, const Clients& clients, const std::vector<Synced>& synced, int number) {
  const std::size_t lines = std::min(field.threads, clients.size());
  std::vector<PlainConnection> connections(lines);
  std::vector<std::vector<double>> latencies(lines);
  std::vector<Job> jobs;
  for (std::size_t line = 0; line < lines; ++line) {
    jobs.push_back({{}, [&, line] {
                      for (std::size_t i = line; i < clients.size(); i += lines) {
                        const Login& login = clients[i]->login();
                        latencies[line].push_back(seconds([&] {
                          for (const auto& request : synced[i].requests) {
                            connections[line].send(again(request, number), login.user, login.password);
                          }
                        }));
                      }
                    }});
  }
  const Meter meter(field.server);
  std::vector<Done> done;
  const double took = seconds([&] { done = runJobs(std::move(jobs), lines); });
  json floor = meter.stop(took);
  mustHaveGoneWell(done);
  std::vector<double> all;
  for (const auto& some : latencies) { all.insert(all.end(), some.begin(), some.end()); }
  std::uint64_t sent = 0, received = 0;
  for (const PlainConnection& connection : connections) {
    sent += connection.bytes().sent;
    received += connection.bytes().received;
  }
  floor["median"] = percentile(std::move(all), 50);
  floor["bytesSent"] = sent;
  floor["bytesReceived"] = received;
  return floor;
}

std::size_t requestsOf(const std::vector<Synced>& synced) {
  std::size_t count = 0;
  for (const Synced& one : synced) { count += one.count; }
  return count;
}

}  // namespace orlocal::bench
