#pragma once

#include <cstddef>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "durability/changes.h"
#include "durability/saving_process.h"
#include "durability/troubles.h"

namespace orlocal::test {

/// How many of the trials of a change under a trouble to make.
struct Selection {
  std::size_t most = SIZE_MAX;        ///< spread over all of them
  std::optional<std::size_t> only{};  ///< this one
};

struct Loss {
  std::string trial;  ///< "change / trouble / number"
  std::string flaw;
};

struct Outcome {
  std::size_t tried = 0;
  std::size_t survived = 0;
  std::vector<Loss> losses;  ///< the first few
};

/// Makes changes under trouble, each in a folder of its own.
///
/// After each the store is whole and as it was before the change or after it: after, when the change had said that it
/// was done; before, when it had said that it was not and the same user goes on. Where it is as before, the change can
/// be made again. Then the next change works. What failed leaves no draft behind.
class Trials {
 public:
  Trials();

  /// The trials of one trouble are numbered: the call that fails or that the process does not survive, the power cut.
  Outcome run(const Change& change, const Trouble& trouble, const Selection& selection);

 private:
  /// What must be seen of a change that nothing disturbs. Made when it is first asked for.
  struct Reference {
    std::string before, after;
    std::string opened;                 ///< before, by who only opens the store: that may make it, which is a change
                                        ///< of its own
    std::string beforeNext, afterNext;  ///< with the next change
    std::vector<std::size_t> calls;     ///< how many of each kind it makes
  };
  const Reference& referenceOf(const Change& change);

  std::filesystem::path copyOf(const Change& change);
  /// What is wrong with one trial; empty when it survived, none when the trouble never came.
  using Result = std::optional<std::string>;
  Result failCalls(const Change& change, const Trouble& trouble, std::size_t number);
  Result die(const Change& change, const Trouble& trouble, std::size_t number);
  Outcome cutPower(const Change& change, const Trouble& trouble, const Selection& selection);
  /// What is wrong with what a change left in `folder`. `done`: it had said that it was.
  std::string flawIn(const std::filesystem::path& folder, const Change& change, bool done);

  TemporaryStore m_place;
  FileCallWatcher m_nothing;
  std::optional<WatchFiles> m_watch;  ///< so that nothing waits for the disk
  std::map<std::string, Reference> m_references;
  int m_copies = 0;
};

}  // namespace orlocal::test
