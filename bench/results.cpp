#include "results.h"

#include <algorithm>
#include <fstream>
#include <stdexcept>

#include <nlohmann/json.hpp>

namespace orlocal::bench {

using Json = nlohmann::json;

NLOHMANN_JSON_SERIALIZE_ENUM(Unit, {{Unit::kSeconds, "s"}, {Unit::kPerSecond, "1/s"}, {Unit::kMebibytes, "MiB"}})
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Spread, low, median, high)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Side, name, rows, amount, ratio)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(Row, name, events, unit, aim, growthAim, subject, floors)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(InstructionCount, task, events, instructions)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Results, date, threads, rows, instructions, notes)

void writeResults(const Results& results, const std::filesystem::path& file) {
  std::ofstream out(file);
  out << Json(results).dump(2) << '\n';
  if (!out.flush()) { throw std::runtime_error("cannot write " + file.string()); }
}

Results readResults(const std::filesystem::path& file) {
  std::ifstream in(file);
  if (!in) { throw std::runtime_error("cannot read " + file.string()); }
  try {
    return Json::parse(in).get<Results>();
  } catch (const nlohmann::json::exception& problem) {
    throw std::runtime_error(file.string() + " is not what --json writes: " + problem.what());
  }
}

const Row& Series::base() const {
  constexpr std::size_t kBase = 10'000;
  const auto found = std::find_if(rows.begin(), rows.end(), [](const Row& row) { return row.events == kBase; });
  return found == rows.end() ? rows.front() : *found;
}

std::vector<Series> seriesOf(const Results& results) {
  std::vector<Series> all;
  for (const Row& row : results.rows) {
    auto known = std::find_if(all.begin(), all.end(), [&](const Series& series) { return series.name == row.name; });
    if (known == all.end()) { known = all.insert(known, Series{row.name, {}}); }
    known->rows.push_back(row);
  }
  return all;
}

std::vector<Series> growingTimesOf(const Results& results) {
  auto all = seriesOf(results);
  std::erase_if(all, [](const Series& series) { return !series.grows() || series.base().unit != Unit::kSeconds; });
  return all;
}

}  // namespace orlocal::bench
