#pragma once

#include <map>
#include <string>
#include <string_view>

#include "base/result.h"

namespace orlocal {

/// Writes a line where people look for what a program has to say: standard error, or the system's log when that is
/// closed or goes to /dev/null, as a server's does. Control characters and marks that turn the order of
/// letters around become question marks. Any thread.
void writeToSystemLog(std::string_view line);

/// What keeps the calendar store of this process from being used. Each cause goes to the system's log once, with file,
/// user, reason and remedy; again only after what failed had worked meanwhile. Main thread only.
class StoreTroubles {
 public:
  static StoreTroubles& ofThisProcess();

  /// The file that failures are about from now on; empty when nothing says which one.
  void setFile(std::string file) { m_file = std::move(file); }
  /// `call` names what was tried; the same words each time.
  void failed(std::string_view call, const Failure& error);
  void worked(std::string_view call);

 private:
  std::string m_file;
  std::map<std::string, std::string, std::less<>> m_reasons;  ///< by call
};

}  // namespace orlocal
