#include "platform/bundle_strings_contract.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "platform/linux/bundle_strings.h"

namespace orlocal::contract {
namespace {

class LinuxBundleStringsSubject final : public BundleStringsSubject {
 public:
  LinuxBundleStringsSubject() {
    std::string pattern = (std::filesystem::temp_directory_path() / "orlocal-XXXXXX").string();
    m_folder = ::mkdtemp(pattern.data());
    m_strings = makeBundleStrings(m_folder, {"it", "fr", "de", "en"});
  }
  ~LinuxBundleStringsSubject() override {
    std::error_code ignored;
    std::filesystem::remove_all(m_folder, ignored);
  }
  BundleStrings& strings() override { return *m_strings; }
  void translate(const std::string& language, const std::string& table, const std::string& key,
                 const std::string& value) override {
    std::filesystem::create_directories(m_folder / (language + ".lproj"));
    std::ofstream(m_folder / (language + ".lproj") / (table + ".strings"), std::ios::binary)
        << "\"" << key << "\" = \"" << value << "\";\n";
  }

 private:
  std::filesystem::path m_folder;
  std::unique_ptr<BundleStrings> m_strings;
};

INSTANTIATE_TEST_SUITE_P(Linux, BundleStringsContract, testing::Values([]() -> std::unique_ptr<BundleStringsSubject> {
                           return std::make_unique<LinuxBundleStringsSubject>();
                         }));

}  // namespace
}  // namespace orlocal::contract
