#pragma once

#include <filesystem>
#include <functional>
#include <string>

#include "store/store_fixture.h"

namespace orlocal::store {

/// A store with a bit of everything that its format can hold, and what becomes of those who use it once it is damaged.
class DamagedFile : public StoreTest {
 protected:
  void SetUp() override;

  /// Runs `sql` on `damaged` as anybody could who has another program, with none of our defences.
  static void execute(const std::filesystem::path& damaged, const std::string& sql);
  /// A fresh copy of the whole store, to be damaged.
  std::filesystem::path copied() const;
  /// Does everything with the store at `damaged` in a process of its own, which has half a minute for it. Empty when
  /// every call ended with a value or a sentence; else what went wrong.
  std::string usedInAChild(const std::filesystem::path& damaged) const;
  /// The first failure that a reading of everything meets; none when all of it can be read.
  std::optional<Failure> firstFailure(const std::filesystem::path& damaged) const;

 private:
  StoreOptions optionsFor(const std::filesystem::path& damaged) const;
};

}  // namespace orlocal::store
