#include "host/commands/installing/settings_entry.h"

#include <iostream>
#include <system_error>

#include <fmt/format.h>
#include <sys/stat.h>

#include "base/settings_text.h"
#include "base/text.h"
#include "base/translation.h"
#include "host/commands/command_line/output_file.h"

namespace orlocal::host {
namespace {

namespace fs = std::filesystem;

const std::string kHead =
    std::string("# Written by orlocal install-plugin; its --remove takes these lines away.\n") + "[store]\nfile = ";

}  // namespace

std::optional<std::string> storeNamedIn(std::string_view settings) {
  std::optional<std::string> named;
  for (const SettingLine& line : parseSettings(settings).lines) {
    if (line.section == "store" && line.name == "file" && !line.value.empty()) { named = line.value; }
  }
  return named;
}

std::string withStoreEntry(std::string_view settings, const fs::path& store) {
  std::string text(settings);
  if (!text.empty()) { text += text.ends_with('\n') ? "\n" : "\n\n"; }
  return text.append(kHead).append(store.string()).append("\n");
}

std::optional<std::string> withoutStoreEntry(std::string_view settings) {
  const auto at = settings.find(kHead);
  if (at == std::string_view::npos) { return std::nullopt; }
  const auto end = settings.find('\n', at + kHead.size());
  std::string_view before = settings.substr(0, at);
  // The empty line before the entry came with it.
  if (before.ends_with("\n\n")) { before.remove_suffix(1); }
  const std::string_view after = end == std::string_view::npos ? std::string_view() : settings.substr(end + 1);
  std::string text = std::string(before).append(after);
  return trimmed(text).empty() ? std::string() : text;
}

Status writeSettings(const fs::path& file, const std::string& text) {
  std::error_code error;
  if (text.empty()) {
    fs::remove(file, error);
    // The folder of the machine's settings goes with the last file in it.
    std::error_code ignored;
    if (file.parent_path().filename() == "orlocal") { fs::remove(file.parent_path(), ignored); }
    return error ? Status(failure(ErrorCode::kIo, fmt::format("{}: {}", file.string(), error.message()))) : Status();
  }
  const bool isNew = !fs::exists(file, error);
  bool madeFolder = false;
  if (isNew) {
    madeFolder = fs::create_directories(file.parent_path(), error);
    if (error) {
      return failure(ErrorCode::kIo,
                     tr("the folder {} cannot be made: {}", file.parent_path().string(), error.message()));
    }
  }
  Status written = writeOutput(file.string(), text, std::cout);
  if (written && isNew && ::chmod(file.c_str(), 0644) != 0) {
    fs::remove(file, error);
    return failure(ErrorCode::kIo, tr("{} cannot be made readable for all", file.string()));
  }
  if (!written && madeFolder) { fs::remove(file.parent_path(), error); }
  return written;
}

}  // namespace orlocal::host
