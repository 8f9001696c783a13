#include "durability/trials.h"

#include <algorithm>

#include <fmt/format.h>
#include <sys/wait.h>
#include <unistd.h>

#include "durability/disk_image.h"

namespace orlocal::test {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kToldLosses = 3;
/// Parts in any order, for each step that the power goes off at.
constexpr std::size_t kSamples = 8;

class CountCalls : public FileCallWatcher {
 public:
  Fate fateOf(FileCall call, const std::string&) override {
    ++m_calls.at(static_cast<std::size_t>(call));
    return {};
  }
  const std::vector<std::size_t>& calls() const { return m_calls; }

 private:
  std::vector<std::size_t> m_calls = std::vector<std::size_t>(kFileCallKinds);
};

class FailCalls : public FileCallWatcher {
 public:
  FailCalls(const Trouble& trouble, std::size_t after) : m_trouble(trouble), m_left(after) {}

  Fate fateOf(FileCall call, const std::string& path) override {
    if (call != m_trouble.call || (m_failed > 0 && m_over)) { return {}; }
    if (m_left > 0) {
      --m_left;
      return {};
    }
    // A disk takes what it has room for, and says at the next call that there is none.
    const bool half = m_trouble.cutShort && (m_trouble.error == 0 || m_failed == 0);
    m_over = m_trouble.lasting == Trouble::Lasting::kOnce && (!half || m_trouble.error == 0);
    if (m_failed++ == 0) { m_first = fs::path(path).filename().string(); }
    return half ? Fate{Fate::What::kIsCutShort} : Fate{Fate::What::kFails, m_trouble.error};
  }
  int failed() const { return m_failed; }
  /// The file of the first one.
  const std::string& first() const { return m_first; }

 private:
  std::string m_first;
  const Trouble& m_trouble;
  std::size_t m_left;
  int m_failed = 0;
  bool m_over = false;
};

class Die : public FileCallWatcher {
 public:
  Die(bool inWrite, std::size_t after) : m_inWrite(inWrite), m_left(after) {}

  Fate fateOf(FileCall call, const std::string&) override {
    if (m_inWrite && call != FileCall::kWrite) { return {}; }
    if (m_left-- > 0) { return {}; }
    return {m_inWrite ? Fate::What::kDiesHalfDone : Fate::What::kDies};
  }

 private:
  bool m_inWrite;
  std::size_t m_left;
};

std::string firstDifference(const std::string& found, const std::string& wanted) {
  const auto at = std::mismatch(found.begin(), found.end(), wanted.begin(), wanted.end()).first - found.begin();
  const auto line = [&](const std::string& text) {
    const std::size_t begin = text.rfind('\n', static_cast<std::size_t>(at) > 0 ? static_cast<std::size_t>(at) - 1 : 0);
    const std::size_t from = begin == std::string::npos ? 0 : begin + 1;
    return from >= text.size() ? std::string("(nothing more)") : text.substr(from, text.find('\n', from) - from);
  };
  return fmt::format("\"{}\" in place of \"{}\"", line(found), line(wanted));
}

std::string draftIn(const fs::path& folder) {
  for (const auto& entry : fs::directory_iterator(folder)) {
    if (entry.path().filename().string().starts_with(".orlocal-")) { return entry.path().filename().string(); }
  }
  return {};
}

}  // namespace

Trials::Trials() {
  m_watch.emplace(m_place.folder(), m_nothing);
  makeGivens(m_place.folder());
}

fs::path Trials::copyOf(const Change& change) {
  const auto folder = m_place.folder() / fmt::format("copy-{}", ++m_copies);
  fs::copy(givenIn(m_place.folder(), change.given), folder, fs::copy_options::recursive);
  return folder;
}

const Trials::Reference& Trials::referenceOf(const Change& change) {
  const auto known = m_references.find(change.name);
  if (known != m_references.end()) { return known->second; }
  Reference reference;
  const auto next = [&](const fs::path& folder) -> std::string {
    Session session(folder);
    const auto store = session.store();
    if (!store) { return store.error().message; }
    const auto saved = saveNext(**store);
    session.close();
    return saved ? contentOf(folder) : saved.error().message;
  };
  const auto untouched = copyOf(change);
  reference.before = contentOf(untouched);
  Session opening(untouched);
  static_cast<void>(opening.store());
  opening.close();
  reference.opened = contentOf(untouched);
  reference.beforeNext = next(untouched);
  const auto changed = copyOf(change);
  CountCalls count;
  {
    const WatchFiles watch(changed, count);
    Session session(changed);
    const auto status = change.make(session);
    if (!status) { throw std::runtime_error(fmt::format("{}: {}", change.name, status.error().message)); }
    session.close();
  }
  reference.calls = count.calls();
  reference.after = contentOf(changed);
  reference.afterNext = next(changed);
  fs::remove_all(untouched);
  fs::remove_all(changed);
  return m_references.emplace(change.name, std::move(reference)).first->second;
}

std::string Trials::flawIn(const fs::path& folder, const Change& change, bool done) {
  const Reference& reference = referenceOf(change);
  std::string now = contentOf(folder);
  if (now != reference.after) {
    if (done) { return "it was done, and is not all there: " + firstDifference(now, reference.after); }
    if (now != reference.before && now != reference.opened) {
      return "it is neither as before nor as after: " + firstDifference(now, reference.before) + "; " +
             firstDifference(now, reference.after);
    }
    Session session(folder);
    const auto again = change.make(session);
    session.close();
    if (!again) { return "it cannot be made again: " + again.error().message; }
    now = contentOf(folder);
    if (now != reference.after) { return "made again, it is not all there: " + firstDifference(now, reference.after); }
  }
  Session session(folder);
  const auto store = session.store();
  const auto next = store ? saveNext(**store) : Status(tl::unexpected(store.error()));
  session.close();
  if (!next) { return "the next change fails: " + next.error().message; }
  now = contentOf(folder);
  if (now != reference.afterNext) { return "the next change spoils it: " + firstDifference(now, reference.afterNext); }
  const std::string verdict = integrityOf(session.file());
  return verdict == "ok" ? std::string() : "SQLite finds damage: " + verdict;
}

Trials::Result Trials::failCalls(const Change& change, const Trouble& trouble, std::size_t number) {
  const Reference& reference = referenceOf(change);
  const auto folder = copyOf(change);
  FailCalls calls(trouble, number);
  Session session(folder);
  Status status;
  {
    const WatchFiles watch(folder, calls);
    status = change.make(session);
    if (trouble.lasting == Trouble::Lasting::kUntilClosed) { session.close(); }
  }
  const auto flaw = [&]() -> std::string {
    if (!status && trouble.mustGoOn) { return "it gave up: " + status.error().message; }
    // What cannot be removed stays.
    if (const std::string draft = draftIn(folder); !draft.empty() && trouble.call != FileCall::kRemove) {
      return "it left " + draft;
    }
    if (!session.isOpen()) { return flawIn(folder, change, status.has_value()); }
    const auto next = saveNext(**session.store());
    session.close();
    if (!next) { return "the store does not go on: " + next.error().message; }
    const std::string now = contentOf(folder);
    const bool stands = change.replaces && trouble.call == FileCall::kSync && now == reference.afterNext;
    const std::string& wanted = status || stands ? reference.afterNext : reference.beforeNext;
    if (now != wanted) {
      return fmt::format("it said that it was {}: {}", status ? "done" : "not done", firstDifference(now, wanted));
    }
    const std::string verdict = integrityOf(session.file());
    return verdict == "ok" ? std::string() : "SQLite finds damage: " + verdict;
  };
  Result result;
  if (calls.failed() > 0) { result = flaw(); }
  if (result && !result->empty()) { *result = fmt::format("after \"{}\" failed, {}", calls.first(), *result); }
  session.close();
  fs::remove_all(folder);
  return result;
}

Trials::Result Trials::die(const Change& change, const Trouble& trouble, std::size_t number) {
  referenceOf(change);
  const auto folder = copyOf(change);
  int ends[2];
  if (::pipe(ends) != 0) { throw std::runtime_error("no pipe"); }
  const pid_t child = ::fork();
  if (child < 0) { throw std::runtime_error("no process"); }
  if (child == 0) {
    Die death(trouble.sort == Trouble::Sort::kDeathInWrite, number);
    const WatchFiles watch(folder, death);
    Session session(folder);
    const bool done = change.make(session).has_value();
    if (done && ::write(ends[1], "!", 1) != 1) { ::_exit(2); }
    session.close();
    ::_exit(0);
  }
  ::close(ends[1]);
  char told = 0;
  const bool done = ::read(ends[0], &told, 1) == 1;
  ::close(ends[0]);
  int status = 0;
  ::waitpid(child, &status, 0);
  Result result;
  if (WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) {
    result = flawIn(folder, change, done);
  } else if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    result = fmt::format("the process ended with {}", status);
  }
  fs::remove_all(folder);
  return result;
}

namespace {

void count(Outcome& outcome, const Change& change, const Trouble& trouble, std::size_t number,
           const std::string& flaw) {
  ++outcome.tried;
  if (flaw.empty()) {
    ++outcome.survived;
  } else if (outcome.losses.size() < kToldLosses) {
    outcome.losses.push_back({fmt::format("{} / {} / {}", change.name, trouble.name, number), flaw});
  }
}

}  // namespace

Outcome Trials::cutPower(const Change& change, const Trouble& trouble, const Selection& selection) {
  referenceOf(change);
  const auto folder = copyOf(change);
  DiskTrace trace(folder);
  {
    const WatchFiles watch(folder, trace);
    Session session(folder);
    const auto status = change.make(session);
    if (!status) { throw std::runtime_error(fmt::format("{}: {}", change.name, status.error().message)); }
    trace.markDone();
    session.close();
  }
  fs::remove_all(folder);
  std::size_t cuts = 0;
  if (selection.most != SIZE_MAX) {
    forEachPowerCut(trace, kSamples, [&](const PowerCut&) { return ++cuts, true; });
  }
  const std::size_t stride = selection.most == SIZE_MAX ? 1 : std::max<std::size_t>(1, cuts / selection.most);
  Outcome outcome;
  forEachPowerCut(trace, kSamples, [&](const PowerCut& cut) {
    if (selection.only ? cut.number != *selection.only : cut.number % stride != stride / 2) { return true; }
    const auto place = m_place.folder() / fmt::format("copy-{}", ++m_copies);
    fs::create_directory(place);
    cut.image.writeTo(place);
    std::string flaw = flawIn(place, change, cut.done);
    if (!flaw.empty()) {
      flaw = fmt::format("after {} of {} steps, with {}: {}", cut.steps, trace.steps().size(), cut.left, flaw);
    }
    fs::remove_all(place);
    count(outcome, change, trouble, cut.number, flaw);
    return !selection.only;
  });
  return outcome;
}

Outcome Trials::run(const Change& change, const Trouble& trouble, const Selection& selection) {
  if (trouble.sort == Trouble::Sort::kPowerCut) { return cutPower(change, trouble, selection); }
  const Reference& reference = referenceOf(change);
  std::size_t calls = 0;
  if (trouble.sort == Trouble::Sort::kDeath) {
    for (const std::size_t each : reference.calls) { calls += each; }
  } else {
    calls = reference.calls.at(static_cast<std::size_t>(trouble.call));
  }
  const std::size_t stride = selection.most == SIZE_MAX ? 1 : std::max<std::size_t>(1, calls / selection.most);
  Outcome outcome;
  for (std::size_t number = selection.only.value_or(stride / 2);; number += stride) {
    const Result result = trouble.sort == Trouble::Sort::kFailingCalls ? failCalls(change, trouble, number)
                                                                       : die(change, trouble, number);
    if (!result) { return outcome; }
    count(outcome, change, trouble, number, *result);
    if (selection.only) { return outcome; }
  }
}

}  // namespace orlocal::test
