#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <sys/wait.h>
#include <unistd.h>

#include "hostile_inputs.h"
#include "parts.h"
#include "processes.h"
#include "store/contacts.h"
#include "store/export.h"
#include "store/import.h"

// What inputs that were made to hurt cost, against their size.
namespace orlocal::bench {
namespace {

using namespace orlocal::store;

/// Seconds after which a process is given up.
constexpr unsigned kPatience = 100;

/// Seconds of each stage and what the process needed for all of them.
struct Cost {
  double import = 0, month = 0, output = 0, again = 0, peakKiB = 0;
  double total() const { return import + month + output + again; }
};

template <class T>
T orThrow(Result<T> result) {
  if (!result) { throw std::runtime_error(result.error().message); }
  return std::move(*result);
}

std::unique_ptr<CalendarStore> opened(const std::filesystem::path& file) {
  return orThrow(CalendarStore::open({.file = file, .viewer = Zone::named("Europe/Berlin").value_or(Zone())}));
}

/// An answer or a refusal: both are fine here, what they cost is asked.
void monthOf(CalendarStore& store, LocalTime from, LocalTime to) {
  std::vector<CalendarId> ids;
  for (const Calendar& calendar : orThrow(store.calendars(CalendarKind::kEvents))) { ids.push_back(calendar.id); }
  (void)store.occurrences({Zone().toMoment(from), Zone().toMoment(to), ids});
}

Cost costOf(const HostileShape& shape, std::size_t bytes, const std::filesystem::path& folder) {
  std::filesystem::remove_all(folder);
  std::filesystem::create_directories(folder);
  const auto store = opened(folder / "one.db");
  std::string text = shape.make(bytes);
  Cost cost;
  if (shape.kind == HostileShape::Kind::kContacts) {
    {
      std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen((folder / "cards.vcf").c_str(), "w"), &std::fclose);
      std::fwrite(text.data(), 1, text.size(), file.get());
    }
    cost.import = seconds([&] { (void)importContactsFile(*store, folder / "cards.vcf"); });
    cost.again = seconds([&] { (void)importContactsFile(*store, folder / "cards.vcf"); });
    cost.peakKiB = peakResidentKiB();
    return cost;
  }
  cost.import = seconds([&] { (void)importCalendarText(*store, std::move(text), "hostile.ics"); });
  cost.month = seconds([&] {
    monthOf(*store, LocalTime(2026, 11, 1), LocalTime(2026, 12, 1));
    monthOf(*store, LocalTime(2400, 2, 1), LocalTime(2400, 3, 1));
  });
  const std::filesystem::path exported = folder / "exported.ics";
  cost.output = seconds([&] {
    std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(exported.c_str(), "w"), &std::fclose);
    (void)exportCalendars(*store, orThrow(store->calendars(CalendarKind::kEvents)), [&](std::string_view piece) {
      std::fwrite(piece.data(), 1, piece.size(), file.get());
      return Status();
    });
  });
  cost.peakKiB = peakResidentKiB();
  return cost;
}

/// In a process of its own, so that its memory is its own.
Cost costInChild(const HostileShape& shape, std::size_t bytes, const std::filesystem::path& folder) {
  std::array<int, 2> ends{};
  if (::pipe(ends.data()) != 0) { throw std::runtime_error("no pipe for the measuring process"); }
  const pid_t child = ::fork();
  if (child == 0) {
    ::alarm(kPatience);
    Cost cost;
    try {
      cost = costOf(shape, bytes, folder);
    } catch (const std::exception& problem) {
      std::fprintf(stderr, "%s: %s\n", shape.name, problem.what());
      ::_exit(1);
    }
    const bool told = ::write(ends[1], &cost, sizeof cost) == static_cast<ssize_t>(sizeof cost);
    ::_exit(told ? 0 : 1);
  }
  ::close(ends[1]);
  Cost cost;
  const bool told = ::read(ends[0], &cost, sizeof cost) == static_cast<ssize_t>(sizeof cost);
  ::close(ends[0]);
  int status = 0;
  ::waitpid(child, &status, 0);
  if (told) { return cost; }
  if (!WIFSIGNALED(status) || WTERMSIG(status) != SIGALRM) {
    throw std::runtime_error(fmt::format("\"{}\" ended its process (status {})", shape.name, status));
  }
  cost.import = kPatience;
  return cost;
}

}  // namespace

void measureHostile(Report& report, const Setting& setting) {
  std::vector<std::size_t> sizes{1U << 18U, 1U << 19U, 1U << 20U};
  if (setting.smoke) { sizes = {1U << 14U}; }
  constexpr double kMostSeconds = 1.0, kMostKiB = 64 * 1024;
  std::size_t over = 0;
  double slowest = 0, largest = 0;
  for (const HostileShape& shape : hostileShapes()) {
    if (!setting.hostileOnly.empty() && std::string(shape.name).find(setting.hostileOnly) == std::string::npos) {
      continue;
    }
    std::string line = fmt::format("| {:<46} |", shape.name);
    Cost last;
    for (const std::size_t size : sizes) {
      last = costInChild(shape, size, setting.folder / "hostile");
      line += fmt::format(" {:6.3f} |", last.total());
    }
    const bool misses = last.total() > kMostSeconds || last.peakKiB > kMostKiB;
    over += misses ? 1U : 0U;
    slowest = std::max(slowest, last.total());
    largest = std::max(largest, last.peakKiB);
    report.print(line + fmt::format(" {:5.2f} {:5.2f} {:5.2f} {:5.2f} | {:4.0f} MiB |{}", last.import, last.month,
                                    last.output, last.again, last.peakKiB / 1024, misses ? " over" : ""));
  }
  report.note(
      fmt::format("Inputs made to hurt: {} shapes, slowest {:.2f} s, largest process {:.0f} MiB, over the aim "
                  "(1 s, 64 MiB): {}",
                  hostileShapes().size(), slowest, largest / 1024, over));
}

}  // namespace orlocal::bench
