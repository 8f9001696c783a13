#include "bridge/strings.h"

#include <algorithm>
#include <array>

#include "bridge/bridge_fixture.h"

namespace orlocal {
namespace {

constexpr char16_t kUntouched = u'#';

/// Counts look-ups, and keeps what it was asked.
class CountingStrings : public fakes::FakeBundleStrings {
 public:
  std::vector<std::string> asked;
  std::uintptr_t bundle = 0;

  std::optional<std::u16string> localizedString(std::uintptr_t reference, std::string_view key,
                                                std::string_view table) override {
    bundle = reference;
    asked.push_back(std::string(table) + "/" + std::string(key));
    return FakeBundleStrings::localizedString(reference, key, table);
  }
};

class Strings : public BridgeTest {
 protected:
  Strings() {
    strings = std::make_shared<CountingStrings>();
    system->m_bundleStrings = strings;
    buffer.fill(kUntouched);
  }

  std::u16string loaded() const {
    return std::u16string(buffer.data(), std::find(buffer.begin(), buffer.end(), u'\0'));
  }
  bool isUntouched() const {
    return std::all_of(buffer.begin(), buffer.end(), [](char16_t c) { return c == kUntouched; });
  }
  std::string registrationText(std::uint32_t id, bool nameOnly) {
    HostText text;
    text.assign("old");
    Do_GetString(id, text, nameOnly);
    return textOf(text.get()).value_or("");
  }

  std::shared_ptr<CountingStrings> strings;
  std::array<char16_t, 2048> buffer;
};

TEST_F(Strings, CopyUnitsAndAnEndAndGiveTheLength) {
  addString(153, u"Grüße 🗓");
  EXPECT_EQ(Sub_OSXLoadString(153, buffer.data(), 100), 8);
  EXPECT_EQ(loaded(), u"Grüße 🗓");
  EXPECT_EQ(buffer[9], kUntouched);
}

TEST_F(Strings, AreAskedForWithoutABundleBeforeTheHostHasCalled) {
  strings->bundle = 1;
  gFMX_ExternCallPtr = nullptr;
  addString(153, u"Text");
  EXPECT_EQ(Sub_OSXLoadString(153, buffer.data(), 100), 4);
  EXPECT_EQ(strings->bundle, 0U);
}

TEST_F(Strings, AreAskedForInThePluginsOwnBundle) {
  m_record.instanceID = 4711;
  Sub_OSXLoadString(153, buffer.data(), 100);
  EXPECT_EQ(strings->bundle, 4711U);
  EXPECT_EQ(strings->asked, std::vector<std::string>{"Orlo/Orlo 153"});
}

TEST_F(Strings, NeedABufferAndRoomForTwoUnits) {
  addString(153, u"");
  EXPECT_EQ(Sub_OSXLoadString(153, nullptr, 100), 0);
  EXPECT_EQ(Sub_OSXLoadString(153, buffer.data(), 1), 0);
  EXPECT_EQ(Sub_OSXLoadString(153, buffer.data(), 0), 0);
  EXPECT_EQ(Sub_OSXLoadString(153, buffer.data(), -5), 0);
  EXPECT_TRUE(strings->asked.empty());
  EXPECT_TRUE(isUntouched());
}

TEST_F(Strings, LeaveTheBufferAloneWhenThereIsNoSuchString) {
  EXPECT_EQ(Sub_OSXLoadString(999, buffer.data(), 100), 0);
  EXPECT_TRUE(isUntouched());
}

TEST_F(Strings, AreRefusedWhenTheyFitExactlyWithTheirEnd) {
  addString(153, u"abcd");
  EXPECT_EQ(Sub_OSXLoadString(153, buffer.data(), 5), 0);
  EXPECT_TRUE(isUntouched());
  EXPECT_EQ(Sub_OSXLoadString(153, buffer.data(), 4), 0);
  EXPECT_EQ(Sub_OSXLoadString(153, buffer.data(), 6), 4);
}

TEST_F(Strings, MayBeEmpty) {
  addString(153, u"");
  EXPECT_EQ(Sub_OSXLoadString(153, buffer.data(), 2), 0);
  EXPECT_EQ(buffer[0], u'\0');
}

TEST_F(Strings, AnswerTheOptionsRequestWithStringOne) {
  addString(1, u"Orlo1nnYYnn");
  Do_GetString(131U, 7U, 100, buffer.data());
  EXPECT_EQ(loaded(), u"Orlo1nnYYnn");
}

TEST_F(Strings, LoadTheHelpAddressTwice) {
  addString(132, u"file:///help");
  Do_GetString(132U, 0U, 100, buffer.data());
  EXPECT_EQ(loaded(), u"file:///help");
  EXPECT_EQ(strings->asked, (std::vector<std::string>{"Orlo/Orlo 132", "Orlo/Orlo 132"}));
}

TEST_F(Strings, AnswerAnyOtherRequestUnderItsNumber) {
  addString(129, u"Settings");
  Do_GetString(129U, 0U, 100, buffer.data());
  EXPECT_EQ(loaded(), u"Settings");
  EXPECT_EQ(strings->asked.size(), 1U);
}

TEST_F(Strings, GiveRegistrationTheFullPrototype) {
  addString(153, u"Orlo_OpenItemAt( type ; index )");
  EXPECT_EQ(registrationText(153, false), "Orlo_OpenItemAt( type ; index )");
}

TEST_F(Strings, GiveRegistrationTheNameBeforeTheParenthesis) {
  addString(153, u"Orlo_OpenItemAt( type ; f(x) )");
  EXPECT_EQ(registrationText(153, true), "Orlo_OpenItemAt");
}

TEST_F(Strings, KeepBlanksBeforeTheParenthesisInTheName) {
  addString(153, u"Orlo_OpenItemAt  ( type )");
  EXPECT_EQ(registrationText(153, true), "Orlo_OpenItemAt  ");
}

TEST_F(Strings, GiveAPrototypeWithoutParenthesisAsTheName) {
  addString(165, u"Orlo_RemoveRecurrence");
  EXPECT_EQ(registrationText(165, true), "Orlo_RemoveRecurrence");
}

TEST_F(Strings, GiveRegistrationAnEmptyTextForAMissingString) {
  EXPECT_EQ(registrationText(153, false), "");
  EXPECT_EQ(registrationText(153, true), "");
}

TEST_F(Strings, GiveRegistrationTheOptionsUnderTheirRequest) {
  addString(1, u"Orlo1nnYYnn");
  EXPECT_EQ(registrationText(131, false), "Orlo1nnYYnn");
}

TEST_F(Strings, HaveRoomFor1022UnitsInARegistration) {
  addString(153, std::u16string(1022, u'a'));
  EXPECT_EQ(registrationText(153, false), std::string(1022, 'a'));
  addString(154, std::u16string(1023, u'a'));
  EXPECT_EQ(registrationText(154, false), "");
}

}  // namespace
}  // namespace orlocal
