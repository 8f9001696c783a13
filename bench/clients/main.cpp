// Simulated clients of one calendar server, each the engine itself on a store of its own. clients.py starts the servers
// and asks for one task after the other; what came of it is a line of JSON.
#include <cstdio>
#include <cstdlib>
#include <exception>

#include <CLI/CLI.hpp>

#include "dataset.h"
#include "tasks.h"

int main(int argc, char** argv) {
  using namespace orlocal::bench;
  setenv("TZ", "Europe/Berlin", 1);
  CLI::App line("Simulated clients of one calendar server.", "orlocal_clients");
  line.require_subcommand(1);
  Field field;
  const auto task = [&](const char* name, const char* what, nlohmann::json (*run)(const Field&)) {
    CLI::App* added = line.add_subcommand(name, what);
    added->add_option("folder", field.folder)->required();
    added->add_option("address", field.address)->required();
    added->add_option("--server", field.server, "the process below which the server runs")->required();
    added->add_option("--user", field.user, "of all clients; else each has one of its own");
    added->add_option("--clients", field.clients);
    added->add_option("--threads", field.threads);
    added->add_option("--rounds", field.rounds);
    added->add_option("--kind", field.kind, "of the syncs that are measured at once")
        ->check(CLI::IsMember({"quiet", "received", "sent"}));
    added->add_option("--per-minute", field.perMinute, "syncs of all clients that are due");
    added->add_option("--seconds", field.seconds, "how long they are");
    added->add_option("--changes-here", field.changesHere, "before so many of a hundred syncs");
    added->add_option("--changes-there", field.changesThere);
    added->add_flag("--floor", field.floor, "send the same requests without us");
    added->callback([&, run] { std::puts(run(field).dump().c_str()); });
  };
  task("join", "new clients fetch everything, all at once", joinAll);
  task("burst", "all clients sync at once", syncAll);
  task("steady", "clients sync when they are due", syncSteadily);
  CLI::App* file = line.add_subcommand("file", "a calendar to fill servers with");
  std::string name;
  std::size_t events = 0;
  file->add_option("file", name)->required();
  file->add_option("events", events)->required();
  file->callback([&] { writeCalendarFile(name, events); });
  try {
    CLI11_PARSE(line, argc, argv);
  } catch (const std::exception& problem) {
    std::fprintf(stderr, "orlocal_clients: %s\n", problem.what());
    return 1;
  }
  return 0;
}
