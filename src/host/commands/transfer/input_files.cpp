#include "host/commands/transfer/input_files.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "base/system_reason.h"
#include "base/translation.h"
#include "base/whole_input.h"

namespace orlocal::host {
namespace {

namespace fs = std::filesystem;

constexpr const char* kStandardInput = translatable("standard input");
constexpr std::size_t kLargestFile = std::size_t{1} << 30;
/// Reading a file of this size takes so long that somebody who waits should hear of it.
constexpr std::uintmax_t kLongFile = 8U << 20U;

class InputWalk {
 public:
  InputWalk(std::istream& standardInput, const InputOptions& options, const FileVisitor& visit)
      : m_standardInput(standardInput), m_options(options), m_visit(visit) {}

  bool word(const std::string& word) {
    if (word == "-") {
      return content(translated(kStandardInput), readWhole(m_standardInput, translated(kStandardInput), kLargestFile),
                     false);
    }
    std::error_code error;
    return fs::is_directory(word, error) ? folder(word) : file(word, false);
  }

 private:
  bool folder(const fs::path& path) {
    std::vector<fs::directory_entry> entries;
    std::error_code error;
    for (fs::directory_iterator each(path, error); !error && each != fs::directory_iterator(); each.increment(error)) {
      if (!each->path().filename().native().starts_with('.')) { entries.push_back(*each); }
    }
    if (error) {
      return m_visit(path,
                     failure(ErrorCode::kIo, tr("{} cannot be read: {}", path.string(), systemReason(error.value()))));
    }
    std::ranges::sort(entries, {}, [](const fs::directory_entry& entry) { return entry.path().native(); });
    return std::ranges::all_of(entries, [&](const fs::directory_entry& entry) {
      std::error_code ignored;
      if (entry.is_directory(ignored)) { return entry.is_symlink(ignored) || folder(entry.path()); }
      // A pipe or device in a folder would be waited for.
      return !entry.is_regular_file(ignored) || file(entry.path(), true);
    });
  }

  bool file(const fs::path& path, bool found) {
    std::error_code ignored;
    if (const auto size = fs::file_size(path, ignored); !ignored && size >= kLongFile && m_options.readingLongFile) {
      m_options.readingLongFile(path);
    }
    errno = 0;
    std::ifstream in(path, std::ios::binary);
    return content(path, readWhole(in, path, kLargestFile), found);
  }

  bool content(const std::string& name, Result<std::string> bytes, bool found) {
    if (!bytes) { return m_visit(name, failure(std::move(bytes.error()))); }
    BroughtFile brought{*std::move(bytes), {}, found};
    brought.what = recognised(brought.bytes);
    if (brought.what.kind == FileKind::kZip) { return zip(name, brought.bytes); }
    if (brought.what.kind == FileKind::kGzip) { return gzip(name, std::move(brought)); }
    return m_visit(name, std::move(brought));
  }

  bool zip(const std::string& name, std::string_view bytes) {
    bool goesOn = true;
    const Status done = visitZip(bytes, name, m_options.limits, [&](std::string_view member, Result<std::string> text) {
      const std::string memberName = name + "/" + std::string(member);
      return goesOn = text ? unpacked(memberName, *std::move(text), true)
                           : m_visit(memberName, failure(std::move(text.error())));
    });
    return done ? goesOn : m_visit(name, failure(done.error()));
  }

  bool gzip(const std::string& name, BroughtFile packed) {
    auto text = expandedGzip(packed.bytes, name, m_options.limits);
    packed.bytes.clear();
    packed.bytes.shrink_to_fit();
    return text ? unpacked(name, *std::move(text), packed.found) : m_visit(name, failure(std::move(text.error())));
  }

  /// What was in an archive; one in it is not opened.
  bool unpacked(const std::string& name, std::string bytes, bool found) {
    BroughtFile brought{std::move(bytes), {}, found};
    brought.what = recognised(brought.bytes);
    if (brought.what.kind == FileKind::kZip || brought.what.kind == FileKind::kGzip) {
      return m_visit(name, failure(ErrorCode::kUnsupported,
                                   tr("{} is an archive in an archive; unpack the outer one first", name)));
    }
    return m_visit(name, std::move(brought));
  }

  std::istream& m_standardInput;
  const InputOptions& m_options;
  const FileVisitor& m_visit;
};

}  // namespace

bool visitInput(const std::string& word, std::istream& standardInput, const InputOptions& options,
                const FileVisitor& visit) {
  return InputWalk(standardInput, options, visit).word(word);
}

}  // namespace orlocal::host
