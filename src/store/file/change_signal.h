#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <utility>

#include "base/result.h"

namespace orlocal::store {

/// Rings for a store, so that the processes that use it wake. The bell is a file beside the store, "<store>-bell", of a
/// byte that says nothing, made for the same users as the store: writing it wakes, through the kernel's file notices,
/// everybody who listens.
///
/// `file` is the store's file itself, and no link to it.
class Bell {
 public:
  /// Takes hold of it; before the commit, so that afterwards nothing is left to do but to ring.
  explicit Bell(const std::filesystem::path& file);
  ~Bell();
  Bell(const Bell&) = delete;
  Bell& operator=(const Bell&) = delete;

  /// After the commit. Never waits; a bell that cannot be rung is left to the listeners' own look.
  void ring() const;

 private:
  int m_descriptor;
};

/// Wakes when a store's bell has rung, and every two seconds: that makes up for a writer that died between its commit
/// and the bell, and for a bell that was removed.
class ChangeSignal {
 public:
  /// Begins to listen for the store at `file`, named as for its bell.
  static Result<std::unique_ptr<ChangeSignal>> listen(const std::filesystem::path& file);

  ~ChangeSignal();
  ChangeSignal(const ChangeSignal&) = delete;
  ChangeSignal& operator=(const ChangeSignal&) = delete;

  /// Readable when there may be something new: for poll, epoll and the like.
  int descriptor() const { return m_poll; }
  /// Makes the descriptor wait again; before looking at the store.
  void drain();
  /// Why nothing but the look every two seconds wakes it, as when the system has no file notices left to give; tried
  /// again at each look. None while the bell is heard.
  const std::optional<Failure>& trouble() const { return m_trouble; }

 private:
  explicit ChangeSignal(std::filesystem::path file) : m_file(std::move(file)) {}
  bool wakeFor(int descriptor) const;
  void listenToBell();
  bool watchBell() const;

  std::filesystem::path m_file;
  int m_poll = -1;
  int m_notices = -1;
  int m_timer = -1;
  std::optional<Failure> m_trouble;
};

}  // namespace orlocal::store
