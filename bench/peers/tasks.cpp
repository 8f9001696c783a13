#include "tasks.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <functional>
#include <iterator>
#include <stdexcept>

#include <fcntl.h>
#include <unistd.h>

namespace peers {

double peakOf(const std::string& process) {
  std::ifstream status("/proc/" + process + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.rfind("VmHWM:", 0) == 0) { return std::strtod(line.c_str() + 6, nullptr); }
  }
  return 0;
}

std::string textOf(const std::filesystem::path& file) {
  std::ifstream in(file, std::ios::binary);
  if (!in) { throw std::runtime_error("cannot read " + file.string()); }
  return {std::istreambuf_iterator<char>(in), {}};
}

void replaceDurably(const std::filesystem::path& file, const std::string& text) {
  const std::string aside = file.string() + ".new";
  const int out = open(aside.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  const bool written = out >= 0 && write(out, text.data(), text.size()) == static_cast<ssize_t>(text.size()) &&
                       fsync(out) == 0 && close(out) == 0;
  if (!written) { throw std::runtime_error("cannot write " + aside); }
  std::filesystem::rename(aside, file);
}

namespace {

// Of Berlin in 2026.
constexpr std::int64_t kOctober = 1790805600, kNovember = 1793487600, kDecember = 1796079600;

double seconds(const std::function<void()>& work) {
  const auto begun = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - begun).count();
}

void print(const std::vector<Entry>& entries) {
  for (const Entry& entry : entries) {
    std::printf("%lld\t%lld\t%s\n", static_cast<long long>(entry.start), static_cast<long long>(entry.end),
                entry.title.c_str());
  }
}

void perform(Library& library, const std::string& task, const char* argument) {
  if (task == "import") {
    library.import(argument);
    return;
  }
  library.open();
  if (task == "month") {
    print(library.between(kNovember, kDecember));
    std::printf("peak\t%.0f\n", peakOf("self") + library.peakOfServants());
    return;
  }
  const long rounds = std::strtol(argument, nullptr, 10);
  if (task == "warm") {
    library.between(kNovember, kDecember);
    for (long i = 0; i < rounds; ++i) {
      // Another month between, so that it is not the last answer that counts.
      library.between(kOctober, kNovember);
      std::printf("%.9f\n", seconds([&] { library.between(kNovember, kDecember); }));
    }
  } else if (task == "add") {
    const std::string uid = "added-" + std::to_string(getpid()) + '-';
    for (long i = 0; i < rounds; ++i) {
      std::printf("%.9f\n", seconds([&] { library.add(uid + std::to_string(i), kDecember + i * 3600); }));
    }
  }
}

}  // namespace
}  // namespace peers

/// usage: PROGRAM FOLDER import FILE | month | warm ROUNDS | add ROUNDS. A month is a line each, then "peak" and KiB;
/// the last two are a line of seconds each.
int main(int count, char** arguments) {
  if (count < 3) { return 2; }
  try {
    const auto library = peers::makeLibrary(arguments[1]);
    peers::perform(*library, arguments[2], count > 3 ? arguments[3] : "1");
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "%s: %s\n", arguments[0], failure.what());
    return 1;
  }
  return 0;
}
