#pragma once

#include <memory>
#include <optional>

#include "base/result.h"
#include "host/commands/browsing/browse_key.h"
#include "host/commands/browsing/picture.h"

namespace orlocal::host {

/// The whole of a terminal, for pictures and keys. It is as it was before when this goes. One at a time; main thread
/// only.
class TerminalScreen {
 public:
  /// Takes the terminal of the standard streams. Refused where the system does not know what it can do.
  static Result<std::unique_ptr<TerminalScreen>> open(bool colors);
  ~TerminalScreen();
  TerminalScreen(const TerminalScreen&) = delete;
  TerminalScreen& operator=(const TerminalScreen&) = delete;

  /// Whether nobody sits there any more: what is read and written goes nowhere.
  bool isGone() const;
  Size size() const;
  void show(const Picture& picture);

  /// The next key that was pressed, or a whole paste; none when there is none yet.
  std::optional<BrowseKey> key();
  /// Readable when there may be a key.
  int keyDescriptor() const;
  /// Readable when the terminal has changed its size: `takeSize` takes that on.
  int sizeDescriptor() const;
  void takeSize();

 private:
  struct Terminal;
  explicit TerminalScreen(std::unique_ptr<Terminal> terminal);

  std::unique_ptr<Terminal> m_terminal;
};

}  // namespace orlocal::host
