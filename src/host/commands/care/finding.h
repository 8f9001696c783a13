#pragma once

#include <functional>
#include <string>
#include <vector>

#include "base/result.h"

namespace orlocal::host {

/// Something that was looked at.
struct Finding {
  enum class Weight { kFine, kNote, kProblem };

  Weight weight = Weight::kFine;
  std::string subject;   ///< "store", "zone", "plug-in", …
  std::string sentence;  ///< what was seen
  std::string remedy;    ///< what to do; empty when nothing is
  /// Puts it right without losing anything; null where that takes a person.
  std::function<Status()> mend = {};
};

using Findings = std::vector<Finding>;

inline Finding fine(std::string subject, std::string sentence) {
  return {Finding::Weight::kFine, std::move(subject), std::move(sentence), {}, {}};
}
inline Finding note(std::string subject, std::string sentence, std::string remedy) {
  return {Finding::Weight::kNote, std::move(subject), std::move(sentence), std::move(remedy), {}};
}
inline Finding problem(std::string subject, std::string sentence, std::string remedy) {
  return {Finding::Weight::kProblem, std::move(subject), std::move(sentence), std::move(remedy), {}};
}

}  // namespace orlocal::host
