#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "platform/bundle_strings.h"
#include "platform/text.h"

// What every store of localized strings promises. A test program includes this header once, and instantiates
// `BundleStringsContract` with its own subject.

namespace orlocal::contract {

/// The strings for a user who reads Italian, else French, else German. Built in is the table "Orlo", in which "Orlo
/// 128" is "Orlocal"; nothing is translated.
class BundleStringsSubject {
 public:
  virtual ~BundleStringsSubject() = default;
  virtual BundleStrings& strings() = 0;
  /// Adds a table of one string, before anything is asked.
  virtual void translate(const std::string& language, const std::string& table, const std::string& key,
                         const std::string& value) = 0;
};

using MakeBundleStringsSubject = std::unique_ptr<BundleStringsSubject> (*)();

class BundleStringsContract : public testing::TestWithParam<MakeBundleStringsSubject> {
 protected:
  std::string shown(std::string_view key = "Orlo 128", std::string_view table = "Orlo", std::uintptr_t bundle = 0) {
    const auto value = subject->strings().localizedString(bundle, key, table);
    return value ? utf8FromUtf16(*value) : "none";
  }

  std::unique_ptr<BundleStringsSubject> subject = GetParam()();
};

TEST_P(BundleStringsContract, HasTheBuiltInStringWhereNothingIsTranslated) { EXPECT_EQ(shown(), "Orlocal"); }

TEST_P(BundleStringsContract, ShowsTheFirstLanguageThatHasTheTable) {
  subject->translate("de", "Orlo", "Orlo 128", "deutsch");
  subject->translate("fr", "Orlo", "Orlo 128", "français");
  subject->translate("sv", "Orlo", "Orlo 128", "svenska");
  subject->translate("it", "Other", "Orlo 128", "italiano");
  EXPECT_EQ(shown(), "français");
  EXPECT_EQ(shown("Orlo 128", "Other"), "italiano");
}

TEST_P(BundleStringsContract, ShowsTheBuiltInStringWhereThatLanguageLacksTheKey) {
  subject->translate("fr", "Orlo", "Orlo 999", "français");
  subject->translate("de", "Orlo", "Orlo 128", "deutsch");
  EXPECT_EQ(shown(), "Orlocal");
}

TEST_P(BundleStringsContract, HasNothingUnderAKeyOrInATableThatIsNowhere) {
  EXPECT_EQ(shown("Orlo 999"), "none");
  EXPECT_EQ(shown("Orlo 128", "Other"), "none");
  EXPECT_EQ(shown(""), "none");
}

TEST_P(BundleStringsContract, LooksThroughTheHostsReferenceAtNothing) {
  EXPECT_EQ(shown("Orlo 128", "Orlo", 1), "Orlocal");
  EXPECT_EQ(shown("Orlo 128", "Orlo", ~std::uintptr_t{0}), "Orlocal");
}

}  // namespace orlocal::contract
