#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

#include "base/result.h"
#include "base/translation.h"

namespace orlocal::host {

/// A folder of the user's alone among the temporary ones, gone with all that is in it at the end.
class TemporaryFolder {
 public:
  TemporaryFolder() = default;
  ~TemporaryFolder() {
    std::error_code error;
    if (!m_path.empty()) { std::filesystem::remove_all(m_path, error); }
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  Status make() {
    std::error_code error;
    std::string name = (std::filesystem::temp_directory_path(error) / "orlocal-test-XXXXXX").string();
    if (error || ::mkdtemp(name.data()) == nullptr) {
      return failure(ErrorCode::kIo, tr("no temporary folder can be made in {}", name));
    }
    m_path = name;
    return {};
  }

  const std::filesystem::path& path() const { return m_path; }

 private:
  std::filesystem::path m_path;
};

}  // namespace orlocal::host
