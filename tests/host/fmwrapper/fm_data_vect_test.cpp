#include <gtest/gtest.h>

#include "host/fmwrapper/fm_objects.h"

namespace fmx {
namespace {

using namespace orlocal::host::testing;
using orlocal::host::testing::Data;
using orlocal::host::testing::DataVect;

class FmDataVect : public ::testing::Test {
 protected:
  void push(std::u16string_view text) {
    fine([&](Exception* x) { FM_DataVect_PushBack(vector.get(), textData(text).get(), x); });
  }

  std::uint32_t size() const {
    return fine([&](Exception* x) { return FM_DataVect_Size(vector.get(), x); });
  }

  DataVect vector{fine([](Exception* x) { return FM_DataVect_Constructor1(x); })};
};

TEST_F(FmDataVect, IsEmptyWhenMade) {
  EXPECT_EQ(size(), 0U);
  EXPECT_TRUE(fine([&](Exception* x) { return FM_DataVect_IsEmpty(vector.get(), x); }));
}

TEST_F(FmDataVect, CopiesWhatItIsGiven) {
  push(u"abc");
  EXPECT_EQ(size(), 1U);
  EXPECT_EQ(unitsOf(fine([&](Exception* x) { return FM_DataVect_AtAsText(vector.get(), 0, x); })), u"abc");
}

TEST_F(FmDataVect, LendsItsElementsInEveryType) {
  push(u"11/2/2026 9:30");
  push(u"12");
  fine([&](Exception* x) {
    const fmx::Data* element = FM_DataVect_At(vector.get(), 0, x);
    EXPECT_EQ(FM_Data_GetNativeType(element, x), kText);
    EXPECT_EQ(FM_Data_GetAsText(element, x), FM_DataVect_AtAsText(vector.get(), 0, x));
    EXPECT_EQ(partsOf(FM_DataVect_AtAsDate(vector.get(), 0, x)), "2026-11-2 0:0:0");
    EXPECT_EQ(partsOf(FM_DataVect_AtAsTime(vector.get(), 0, x)), "0-0-0 9:30:0");
    EXPECT_EQ(partsOf(FM_DataVect_AtAsTimeStamp(vector.get(), 0, x)), "2026-11-2 9:30:0");
    EXPECT_EQ(wholeOf(FM_DataVect_AtAsNumber(vector.get(), 1, x)), 12);
    EXPECT_TRUE(FM_DataVect_AtAsBoolean(vector.get(), 1, x));
    EXPECT_EQ(FM_BinaryData_GetCount(FM_DataVect_AtAsBinaryData(vector.get(), 1, x), x), 0);
  });
}

TEST_F(FmDataVect, FailsBeyondItsEnd) {
  push(u"a");
  EXPECT_EQ(codeOf([&](Exception* x) { FM_DataVect_At(vector.get(), 1, x); }), 2);
  EXPECT_EQ(codeOf([&](Exception* x) { FM_DataVect_AtAsText(vector.get(), 1, x); }), 2);
  EXPECT_EQ(codeOf([&](Exception* x) { FM_DataVect_AtAsNumber(vector.get(), 0xFFFFFFFF, x); }), 2);
  EXPECT_EQ(codeOf([&](Exception* x) { FM_DataVect_AtAsDate(vector.get(), 1, x); }), 2);
  EXPECT_EQ(codeOf([&](Exception* x) { FM_DataVect_AtAsTime(vector.get(), 1, x); }), 2);
  EXPECT_EQ(codeOf([&](Exception* x) { FM_DataVect_AtAsTimeStamp(vector.get(), 1, x); }), 2);
  EXPECT_EQ(codeOf([&](Exception* x) { FM_DataVect_AtAsBoolean(vector.get(), 1, x); }), 2);
  EXPECT_EQ(codeOf([&](Exception* x) { FM_DataVect_AtAsBinaryData(vector.get(), 1, x); }), 2);
}

TEST_F(FmDataVect, GivesItsLastElementAway) {
  push(u"a");
  push(u"b");
  const Data last(fine([&](Exception* x) { return FM_DataVect_PopBack(vector.get(), x); }));
  EXPECT_EQ(textOf(last), u"b");
  EXPECT_EQ(size(), 1U);
}

TEST_F(FmDataVect, HasNothingToGiveAwayWhenEmpty) {
  EXPECT_EQ(codeOf([&](Exception* x) { FM_DataVect_PopBack(vector.get(), x); }), 2);
}

TEST_F(FmDataVect, ClearsItself) {
  push(u"a");
  fine([&](Exception* x) { FM_DataVect_Clear(vector.get(), x); });
  EXPECT_EQ(size(), 0U);
}

TEST_F(FmDataVect, TakesItsOwnElement) {
  push(u"a");
  fine([&](Exception* x) { FM_DataVect_PushBack(vector.get(), FM_DataVect_At(vector.get(), 0, x), x); });
  EXPECT_EQ(unitsOf(fine([&](Exception* x) { return FM_DataVect_AtAsText(vector.get(), 1, x); })), u"a");
}

TEST_F(FmDataVect, FailsWithoutAnObject) {
  EXPECT_EQ(codeOf([](Exception* x) { FM_DataVect_Size(nullptr, x); }), 2);
  EXPECT_EQ(codeOf([&](Exception* x) { FM_DataVect_PushBack(vector.get(), nullptr, x); }), 2);
}

}  // namespace
}  // namespace fmx
