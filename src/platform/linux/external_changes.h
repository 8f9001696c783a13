#pragma once

#include <memory>

namespace orlocal {

class NotificationCenter;
class StoreAccess;

/// Posts one notification for each commit of another process that touched events. Main thread only: it looks, and
/// posts, at each turn of that thread's run loop. A look where nothing has happened reads a few bytes of memory, so
/// nobody needs to wake it, and it takes nothing from the system.
class ExternalChanges {
 public:
  /// Both outlive this object.
  ExternalChanges(StoreAccess& access, NotificationCenter& center);
  ~ExternalChanges();
  ExternalChanges(const ExternalChanges&) = delete;
  ExternalChanges& operator=(const ExternalChanges&) = delete;

  /// Begins with what is committed from now on; further calls change nothing. Throws `Exception` when the store cannot
  /// be opened or followed.
  void listen();
  /// What is committed meanwhile is posted after the next `listen`.
  void pause();

 private:
  struct Watch;

  void look();

  StoreAccess& m_access;
  NotificationCenter& m_center;
  std::unique_ptr<Watch> m_watch;
};

}  // namespace orlocal
