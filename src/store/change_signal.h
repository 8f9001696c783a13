#pragma once

#include <filesystem>
#include <memory>
#include <utility>

#include "store/result.h"

namespace orlocal::store {

/// Wakes the processes that use a store when one of them has committed.
///
/// The bell is a file beside the store, "<store>-bell", of a byte that says nothing: writing it wakes, through the
/// kernel's file notices, everybody who listens. It is made for the same users as the store. A writer that dies between
/// its commit and the bell, and a bell that was removed, are made up for by a look every two seconds.
class ChangeSignal {
 public:
  /// Rings for the store at `file`, which is the file itself and no link to it; after a commit. Never waits; a bell
  /// that cannot be rung is left to the listeners' own look.
  static void ring(const std::filesystem::path& file);

  /// Begins to listen for the store at `file`, named as for `ring`.
  static Result<std::unique_ptr<ChangeSignal>> listen(const std::filesystem::path& file);

  ~ChangeSignal();
  ChangeSignal(const ChangeSignal&) = delete;
  ChangeSignal& operator=(const ChangeSignal&) = delete;

  /// Readable when there may be something new: for poll, epoll and the like.
  int descriptor() const { return m_poll; }
  /// Makes the descriptor wait again; before looking at the store.
  void drain();

 private:
  explicit ChangeSignal(std::filesystem::path file) : m_file(std::move(file)) {}
  void watchBell();

  std::filesystem::path m_file;
  int m_poll = -1;
  int m_notices = -1;
  int m_timer = -1;
};

}  // namespace orlocal::store
