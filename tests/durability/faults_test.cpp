#include <cstdlib>
#include <iostream>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "durability/trials.h"

// Every change of a store under every kind of trouble. As an ordinary test a few trials of each; with `--all` every
// one, as a table, or those whose "change / trouble" begins with the next word; with `--only "change / trouble /
// number"` that one.
namespace orlocal::test {
namespace {

/// Of one change in one column of the table. More of them take longer than a test may, under a sanitizer.
constexpr std::size_t kTrialsOfATest = 1;
/// For `--all`, of one change whose reading fails: a log of a thousand pages is read page by page, and each is like the
/// next. Of everything else all are made.
constexpr std::size_t kTrialsOfReading = 100;

Trials& trials() {
  static Trials all;
  return all;
}

std::vector<std::string> columns() {
  std::vector<std::string> names;
  for (const Trouble& trouble : troubles()) {
    if (names.empty() || names.back() != columnOf(trouble)) { names.emplace_back(columnOf(trouble)); }
  }
  return names;
}

class EachChange : public testing::TestWithParam<std::size_t> {};

TEST_P(EachChange, IsWholeOrNotAtAllWhateverHappens) {
  for (const std::string& column : columns()) {
    std::vector<const Trouble*> those;
    for (const Trouble& trouble : troubles()) {
      if (columnOf(trouble) == column) { those.push_back(&trouble); }
    }
    // Another one of a column for each change.
    const Trouble& trouble = *those[GetParam() % those.size()];
    const Outcome outcome = trials().run(changes()[GetParam()], trouble, {.most = kTrialsOfATest});
    for (const Loss& loss : outcome.losses) { ADD_FAILURE() << loss.trial << ": " << loss.flaw; }
  }
}

INSTANTIATE_TEST_SUITE_P(Of, EachChange, testing::Range(std::size_t{0}, changes().size()), [](const auto& tested) {
  std::string name = changes()[tested.param].name;
  for (char& c : name) {
    if (c == ' ') { c = '_'; }
  }
  return name;
});

/// The one trial that is called so; none tried when there is none.
Outcome only(const std::string& which) {
  for (const Change& change : changes()) {
    for (const Trouble& trouble : troubles()) {
      const std::string begin = fmt::format("{} / {} / ", change.name, trouble.name);
      if (which.starts_with(begin)) {
        return trials().run(change, trouble, {.only = std::stoul(which.substr(begin.size()))});
      }
    }
  }
  return {};
}

class OnceLost : public testing::TestWithParam<const char*> {};

TEST_P(OnceLost, IsNotLostAgain) {
  const Outcome outcome = only(GetParam());
  EXPECT_EQ(outcome.tried, 1u);
  for (const Loss& loss : outcome.losses) { ADD_FAILURE() << loss.trial << ": " << loss.flaw; }
}

INSTANTIATE_TEST_SUITE_P(Trials, OnceLost,
                         testing::Values("a new event beside a log / open, too many files, once / 2",
                                         "a new event beside a log / open, no room, once / 3",
                                         "a store salvaged / look, broken disk, once / 3"));

void tell(const std::vector<Loss>& losses) {
  for (const Loss& loss : losses) {
    std::cout << fmt::format("LOST {}: {}\n     ./run faults --only \"{}\"\n", loss.trial, loss.flaw, loss.trial)
              << std::flush;
  }
}

std::string cell(const Outcome& outcome) {
  if (outcome.tried == outcome.survived) { return std::to_string(outcome.tried); }
  return fmt::format("{}/{}", outcome.survived, outcome.tried);
}

void add(Outcome& all, const Outcome& one) {
  all.tried += one.tried;
  all.survived += one.survived;
}

/// Those whose "change / trouble" begins with `which`.
int runAll(std::string_view which) {
  const auto names = columns();
  std::map<std::string, Outcome> sums;
  const auto line = [&](std::string_view name, std::map<std::string, Outcome>& cells) {
    std::cout << fmt::format("{:<44}", name);
    for (const std::string& column : names) { std::cout << fmt::format("{:>9}", cell(cells[column])); }
    std::cout << std::endl;
  };
  std::cout << fmt::format("{:<44}", "tried (survived/tried where not all)");
  for (const std::string& column : names) { std::cout << fmt::format("{:>9}", column); }
  std::cout << std::endl;
  bool lost = false;
  for (const Change& change : changes()) {
    std::map<std::string, Outcome> cells;
    std::vector<Loss> losses;
    for (const Trouble& trouble : troubles()) {
      if (!fmt::format("{} / {}", change.name, trouble.name).starts_with(which)) { continue; }
      const bool reads = trouble.sort == Trouble::Sort::kFailingCalls && trouble.call == FileCall::kRead;
      const Outcome outcome = trials().run(change, trouble, {.most = reads ? kTrialsOfReading : SIZE_MAX});
      add(cells[columnOf(trouble)], outcome);
      add(sums[columnOf(trouble)], outcome);
      losses.insert(losses.end(), outcome.losses.begin(), outcome.losses.end());
    }
    if (!cells.empty()) { line(change.name, cells); }
    tell(losses);
    lost = lost || !losses.empty();
  }
  line("all", sums);
  return lost ? 1 : 0;
}

int runOnly(const std::string& which) {
  const Outcome outcome = only(which);
  tell(outcome.losses);
  if (outcome.tried > 0) { return outcome.losses.empty() ? 0 : 1; }
  std::cout << "There is no such trial.\n";
  return 2;
}

}  // namespace
}  // namespace orlocal::test

int main(int count, char** words) {
  using namespace orlocal::test;
  const std::string_view first = count > 1 ? words[1] : "";
  if (first == "--all") { return runAll(count > 2 ? words[2] : ""); }
  if (first == "--only" && count > 2) { return runOnly(words[2]); }
  testing::InitGoogleTest(&count, words);
  return RUN_ALL_TESTS();
}
