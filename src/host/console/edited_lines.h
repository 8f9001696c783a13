#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "base/result.h"
#include "host/console/completion.h"
#include "host/console/line_source.h"

namespace orlocal::host {

/// Where the console keeps its history: `$XDG_STATE_HOME/orlocal/history`, else below `~/.local/state`; an empty path
/// without a home.
std::filesystem::path historyFile();

/// Lines typed at the terminal, with editing, a history that outlives the program, and completion at the tab key.
///
/// Works on the standard streams. Ctrl-C clears the line, Ctrl-D on an empty line ends.
class EditedLines : public LineSource {
 public:
  using Completer = std::function<Completion(std::string_view beforeCursor)>;

  /// An empty history path keeps the history in memory.
  static Result<std::unique_ptr<EditedLines>> open(const std::filesystem::path& history, Completer completer);
  ~EditedLines() override;

  Line read(const std::string& prompt) override;
  void remember(const std::string& entry) override;

 private:
  EditedLines(const std::filesystem::path& history, Completer completer);
  Status start();

  struct State;
  std::unique_ptr<State> m_state;
};

}  // namespace orlocal::host
