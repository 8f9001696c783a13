#include "fakes/fake_platform.h"
#include "platform/bundle_strings_contract.h"

namespace orlocal::contract {
namespace {

class FakeBundleStringsSubject final : public BundleStringsSubject {
 public:
  FakeBundleStringsSubject() {
    m_strings.m_strings[{"Orlo", "Orlo 128"}] = u"Orlocal";
    m_strings.m_languages = {"it", "fr", "de"};
  }
  BundleStrings& strings() override { return m_strings; }
  void translate(const std::string& language, const std::string& table, const std::string& key,
                 const std::string& value) override {
    m_strings.m_translations[{language, table}][key] = utf16FromUtf8(value);
  }

 private:
  fakes::FakeBundleStrings m_strings;
};

INSTANTIATE_TEST_SUITE_P(Fake, BundleStringsContract, testing::Values([]() -> std::unique_ptr<BundleStringsSubject> {
                           return std::make_unique<FakeBundleStringsSubject>();
                         }));

}  // namespace
}  // namespace orlocal::contract
