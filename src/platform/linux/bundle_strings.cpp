#include "platform/linux/bundle_strings.h"

#include <fstream>
#include <map>
#include <optional>
#include <system_error>
#include <utility>

#include <dlfcn.h>

#include "base/languages.h"
#include "platform/linux/strings_table.h"

namespace orlocal {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kBuiltInTable = "Orlo";
constexpr std::string_view kEnglish = "en";
/// No table of ours comes near it; a longer file is not one.
constexpr std::uintmax_t kLongestFile = 1 << 20;

std::optional<std::string> contentsOf(const fs::path& file) {
  std::error_code failure;
  if (!fs::is_regular_file(file, failure)) { return std::nullopt; }
  const auto size = fs::file_size(file, failure);
  if (failure || size > kLongestFile) { return std::nullopt; }
  std::ifstream in(file, std::ios::binary);
  std::string text(static_cast<std::size_t>(size), '\0');
  if (!in.read(text.data(), static_cast<std::streamsize>(size))) { return std::nullopt; }
  return text;
}

fs::path ownResources() {
  Dl_info info{};
  if (dladdr(reinterpret_cast<const void*>(&ownResources), &info) == 0 || info.dli_fname == nullptr) { return {}; }
  return fs::path(info.dli_fname).replace_extension(".resources");
}

class LinuxBundleStrings : public BundleStrings {
 public:
  LinuxBundleStrings(fs::path folder, std::vector<std::string> languages)
      : m_folder(std::move(folder)), m_languages(std::move(languages)) {}

  std::optional<std::u16string> localizedString(std::uintptr_t, std::string_view key, std::string_view table) override {
    for (const auto& strings : tablesOf(table)) {
      if (const auto found = strings.find(key); found != strings.end()) { return found->second; }
    }
    return std::nullopt;
  }

 private:
  using Tables = std::vector<StringsTable>;

  /// The table in the first language that has it, then the built-in one for keys that it lacks.
  const Tables& tablesOf(std::string_view name) {
    if (const auto known = m_tables.find(name); known != m_tables.end()) { return known->second; }
    Tables tables;
    for (const auto& language : m_languages) {
      if (const auto text = contentsOf(m_folder / (language + ".lproj") / (std::string(name) + ".strings"))) {
        tables.push_back(parseStringsTable(*text));
        break;
      }
      if (language == kEnglish) { break; }
    }
    if (name == kBuiltInTable) { tables.push_back(parseStringsTable(builtInStrings())); }
    return m_tables.emplace(name, std::move(tables)).first->second;
  }

  fs::path m_folder;
  std::vector<std::string> m_languages;
  std::map<std::string, Tables, std::less<>> m_tables;
};

}  // namespace

std::unique_ptr<BundleStrings> makeBundleStrings(fs::path folder, std::vector<std::string> languages) {
  return std::make_unique<LinuxBundleStrings>(std::move(folder), std::move(languages));
}

std::unique_ptr<BundleStrings> makeBundleStrings() { return makeBundleStrings(ownResources(), preferredLanguages()); }

}  // namespace orlocal
