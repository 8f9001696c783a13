#pragma once

#include <algorithm>
#include <cstddef>
#include <optional>
#include <vector>

namespace orlocal::store {

/// What somebody made of a list: the fate of each element it had, and what came new. Equal elements are the same one;
/// of the others the n-th that went and the n-th that came are taken for one that was changed.
template <class T>
struct ListChanges {
  enum class Fate { kKept, kChanged, kRemoved };
  struct Element {
    Fate fate = Fate::kRemoved;
    std::size_t place = 0;  ///< in the list after, unless it was removed
  };
  std::vector<Element> elements;   ///< of the list before
  std::vector<std::size_t> added;  ///< places in the list after

  ListChanges(const std::vector<T>& before, const std::vector<T>& after) : elements(before.size()) {
    std::vector<bool> taken(after.size(), false);
    // Of equal elements each is first of all the one that stands where it stood.
    for (std::size_t i = 0; i < std::min(before.size(), after.size()); ++i) {
      if (!(before[i] == after[i])) { continue; }
      elements[i] = {Fate::kKept, i};
      taken[i] = true;
    }
    for (std::size_t i = 0; i < before.size(); ++i) {
      if (elements[i].fate == Fate::kKept) { continue; }
      for (std::size_t j = 0; j < after.size(); ++j) {
        if (taken[j] || !(before[i] == after[j])) { continue; }
        elements[i] = {Fate::kKept, j};
        taken[j] = true;
        break;
      }
    }
    std::size_t next = 0;
    for (Element& element : elements) {
      if (element.fate != Fate::kRemoved) { continue; }
      while (next < after.size() && taken[next]) { ++next; }
      if (next == after.size()) { break; }
      element = {Fate::kChanged, next};
      taken[next] = true;
    }
    for (std::size_t j = 0; j < after.size(); ++j) {
      if (!taken[j]) { added.push_back(j); }
    }
  }
};

/// `theirs` with what was done to `base` to get to `mine`: additions, changes and removals of both sides are kept; of
/// one element that both changed, `mine` counts.
template <class T>
std::vector<T> mergedLists(const std::vector<T>& base, const std::vector<T>& mine, const std::vector<T>& theirs) {
  if (theirs == base) { return mine; }
  using Fate = typename ListChanges<T>::Fate;
  const ListChanges<T> ours(base, mine), other(base, theirs);
  std::vector<std::optional<T>> places(theirs.begin(), theirs.end());
  std::vector<T> late;
  for (std::size_t i = 0; i < base.size(); ++i) {
    const auto& done = ours.elements[i];
    if (done.fate == Fate::kKept) { continue; }
    const bool there = other.elements[i].fate != Fate::kRemoved;
    if (done.fate == Fate::kRemoved) {
      if (there) { places[other.elements[i].place].reset(); }
    } else if (there) {
      places[other.elements[i].place] = mine[done.place];
    } else {
      late.push_back(mine[done.place]);
    }
  }
  std::vector<T> merged;
  for (auto& place : places) {
    if (place) { merged.push_back(*std::move(place)); }
  }
  merged.insert(merged.end(), late.begin(), late.end());
  for (const std::size_t place : ours.added) {
    // Both may have added the same.
    const bool there = std::any_of(other.added.begin(), other.added.end(),
                                   [&](std::size_t theirPlace) { return theirs[theirPlace] == mine[place]; });
    if (!there) { merged.push_back(mine[place]); }
  }
  return merged;
}

}  // namespace orlocal::store
