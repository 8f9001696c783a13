// All clients at once, as if everybody came at nine: what a server can do at most, and beside it the same requests sent
// without us.
#include <chrono>
#include <stdexcept>

#include <fmt/format.h>

#include "crowd.h"
#include "measure.h"
#include "plain_connection.h"
#include "process_tree.h"

namespace orlocal::bench {
namespace {

using nlohmann::json;

constexpr struct {
  const char* name;
  Kind kind;
} kKinds[] = {{"quiet", Kind::kQuiet}, {"received", Kind::kReceived}, {"sent", Kind::kSent}};

Kind kindNamed(const std::string& name) {
  for (const auto& row : kKinds) {
    if (row.name == name) { return row.kind; }
  }
  throw std::runtime_error("no such sync: " + name);
}

void send(Client& client, const accounts::HttpRequest& request, std::string* body = nullptr) {
  PlainConnection().send(request, client.login().user, client.login().password, body);
}

/// What makes the next sync of a client one of that kind.
void change(Client& client, Kind kind, const std::string& title) {
  if (kind == Kind::kSent) { client.changeHere(title); }
  if (kind == Kind::kReceived) { send(client, client.changeThere(title)); }
}

/// Throws when it has not come to the other side.
void mustHaveArrived(Client& client, Kind kind, const std::string& title) {
  bool there = true;
  if (kind == Kind::kSent) {
    std::string text;
    send(client, {"GET", client.urlOfMine(), {}, ""}, &text);
    there = text.find("SUMMARY:" + title) != text.npos;
  }
  if (kind == Kind::kReceived) { there = client.titleOfTheirs() == title; }
  if (!there) { throw std::runtime_error("a change did not arrive"); }
}

json round(const Field& field, const Clients& clients, Kind kind, int number) {
  const std::string title = fmt::format("Changed {}", number);
  mustHaveGoneWell(withAll(field, clients, [&](Client& client, std::size_t) { change(client, kind, title); }));
  std::vector<Synced> synced(clients.size());
  std::vector<Done> done;
  const Meter meter(field.server);
  const double took = seconds(
      [&] { done = withAll(field, clients, [&](Client& client, std::size_t i) { synced[i] = client.sync(true); }); });
  json ours = meter.stop(took);
  mustHaveGoneWell(done);
  ours.update(spreadOf(done));
  ours["requests"] = requestsOf(synced);
  for (const auto& request : synced.front().requests) { ours["methods"].push_back(request.method); }
  for (const Synced& one : synced) {
    if (one.kind != kind) { throw std::runtime_error("a sync was not of the kind that was wanted"); }
  }
  mustHaveGoneWell(withAll(field, clients, [&](Client& client, std::size_t) { mustHaveArrived(client, kind, title); }));
  json result{{"ours", ours}, {"floor", floorOf(field, clients, synced, number)}};
  // What the floor wrote comes to all.
  if (kind == Kind::kSent) { settle(field, clients); }
  return result;
}

}  // namespace

json syncAll(const Field& field) {
  const Clients clients = clientsOf(field);
  const Kind kind = kindNamed(field.kind);
  settle(field, clients);
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  int number = static_cast<int>(std::chrono::duration_cast<std::chrono::seconds>(now).count() % 100'000) * 100;
  // The first time an account sends, it finds out whether the server keeps conditions.
  if (kind == Kind::kSent) { round(field, clients, kind, ++number); }
  json rounds = json::array();
  for (int i = 0; i < field.rounds; ++i) { rounds.push_back(round(field, clients, kind, ++number)); }
  return {{"clients", clients.size()},
          {"kind", field.kind},
          {"rounds", rounds},
          {"serverMebibytes", mebibytesOf(field.server)}};
}

}  // namespace orlocal::bench
