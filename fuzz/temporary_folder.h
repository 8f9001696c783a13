#pragma once

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <system_error>

namespace orlocal::fuzz {

/// A folder of its own for one input, gone with it. Zone and clock are pinned, so that an input always does the same.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    ::setenv("TZ", "Europe/Berlin", 1);
    ::setenv("ORLOCAL_NOW", "2026-11-02T08:00:00Z", 1);
    std::error_code error;
    std::string name =
        std::filesystem::is_directory("/dev/shm", error) ? "/dev/shm/orlocal-fuzz-XXXXXX" : "/tmp/orlocal-fuzz-XXXXXX";
    if (::mkdtemp(name.data()) == nullptr) { std::abort(); }
    m_path = name;
  }
  ~TemporaryFolder() {
    std::error_code error;
    std::filesystem::remove_all(m_path, error);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  std::filesystem::path file(std::string_view name) const { return m_path / name; }

  std::filesystem::path write(std::string_view name, std::string_view bytes) const {
    std::ofstream(file(name), std::ios::binary) << bytes;
    return file(name);
  }

 private:
  std::filesystem::path m_path;
};

inline std::string_view textOf(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

}  // namespace orlocal::fuzz
