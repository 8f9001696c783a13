#pragma once

#include <memory>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "platform/host/fm_api.h"

/// Host objects as a plug-in makes them: through the interface, ended with the class's own delete function.
namespace orlocal::host::testing {

/// Runs one call of the interface, gives the code in its exception record.
template <class Call>
std::int32_t codeOf(Call call) {
  fmx::Exception x;
  call(&x);
  return x.code;
}

/// Runs one call that must succeed.
template <class Call>
auto fine(Call call) {
  fmx::Exception x;
  struct Check {
    fmx::Exception& x;
    ~Check() { EXPECT_EQ(x.code, 0); }
  } check{x};
  return call(&x);
}

template <class Opaque, void (*Delete)(void*, fmx::Exception*)>
struct End {
  void operator()(Opaque* object) const {
    fmx::Exception x;
    Delete(object, &x);
    EXPECT_EQ(x.code, 0);
  }
};

template <class Opaque, void (*Delete)(void*, fmx::Exception*)>
using Owned = std::unique_ptr<Opaque, End<Opaque, Delete>>;

using QuadChar = Owned<fmx::QuadChar, fmx::FM_QuadChar_Delete>;
using Text = Owned<fmx::Text, fmx::FM_Text_Delete>;
using Data = Owned<fmx::Data, fmx::FM_Data_Delete>;
using DataVect = Owned<fmx::DataVect, fmx::FM_DataVect_Delete>;
using FixPt = Owned<fmx::FixPt, fmx::FM_FixPt_Delete>;
using Moment = Owned<fmx::DateTime, fmx::FM_DateTime_Delete>;
using LocalePtr = Owned<fmx::Locale, fmx::FM_Locale_Delete>;
using ExprEnv = Owned<fmx::ExprEnv, fmx::FM_ExprEnv_Delete>;
using BinaryData = Owned<fmx::BinaryData, fmx::FM_BinaryData_Delete>;

inline QuadChar quad(std::string_view four) {
  return QuadChar(
      fine([&](fmx::Exception* x) { return fmx::FM_QuadChar_Constructor2(four[0], four[1], four[2], four[3], x); }));
}

inline Text text(std::u16string_view units = {}) {
  Text result(fine([](fmx::Exception* x) { return fmx::FM_Text_Constructor1(x); }));
  fine([&](fmx::Exception* x) {
    fmx::FM_Text_AssignUnicodeWithLength(result.get(), units.data(), static_cast<std::uint32_t>(units.size()), x);
  });
  return result;
}

inline std::u16string unitsOf(const fmx::Text* text) {
  const auto size = fine([&](fmx::Exception* x) { return fmx::FM_Text_GetSize(text, x); });
  std::u16string units(size, u'\0');
  fine([&](fmx::Exception* x) { fmx::FM_Text_GetUnicode(text, units.data(), 0, size, x); });
  return units;
}

inline std::u16string unitsOf(const Text& text) { return unitsOf(text.get()); }

inline Data data() {
  return Data(fine([](fmx::Exception* x) { return fmx::FM_Data_Constructor1(x); }));
}

inline Data textData(std::u16string_view units) {
  Data result = data();
  const Text value = text(units);
  fine([&](fmx::Exception* x) {
    EXPECT_EQ(fmx::FM_Data_SetAsText(result.get(), value.get(), fmx::FM_Data_GetLocale(result.get(), x), fmx::kText, x),
              0);
  });
  return result;
}

inline std::u16string textOf(const Data& data) {
  return unitsOf(fine([&](fmx::Exception* x) { return fmx::FM_Data_GetAsText(data.get(), x); }));
}

inline FixPt number(std::int64_t value = 0) {
  FixPt result(fine([](fmx::Exception* x) { return fmx::FM_FixPt_Constructor1(0, 16, x); }));
  fine([&](fmx::Exception* x) { fmx::FM_FixPt_AssignInt64(result.get(), value, x); });
  return result;
}

inline FixPt number(double value) {
  FixPt result = number();
  fine([&](fmx::Exception* x) { fmx::FM_FixPt_AssignDouble(result.get(), value, x); });
  return result;
}

inline FixPt number(int value) { return number(std::int64_t{value}); }

inline std::int64_t wholeOf(const fmx::FixPt* number) {
  return fine([&](fmx::Exception* x) { return fmx::FM_FixPt_AsLong64(number, x); });
}

inline double doubleOf(const fmx::FixPt* number) {
  return fine([&](fmx::Exception* x) { return fmx::FM_FixPt_AsFloat(number, x); });
}

inline LocalePtr locale(std::int32_t type = fmx::kLocaleSystem) {
  return LocalePtr(fine([&](fmx::Exception* x) { return fmx::FM_Locale_Constructor1(type, x); }));
}

inline Moment moment() {
  return Moment(fine([](fmx::Exception* x) { return fmx::FM_DateTime_Constructor1(x); }));
}

inline Moment moment(std::u16string_view written) {
  const Text value = text(written);
  const LocalePtr rules = locale();
  return Moment(fine([&](fmx::Exception* x) { return fmx::FM_DateTime_Constructor3(value.get(), rules.get(), x); }));
}

/// The parts of a date-time as "year-month-day hour:minute:second".
inline std::string partsOf(const fmx::DateTime* moment) {
  return fine([&](fmx::Exception* x) {
    std::string parts = std::to_string(fmx::FM_DateTime_GetYear(moment, x));
    parts += "-" + std::to_string(fmx::FM_DateTime_GetMonth(moment, x));
    parts += "-" + std::to_string(fmx::FM_DateTime_GetDay(moment, x));
    parts += " " + std::to_string(fmx::FM_DateTime_GetHour(moment, x));
    parts += ":" + std::to_string(fmx::FM_DateTime_GetMinute(moment, x));
    return parts + ":" + std::to_string(fmx::FM_DateTime_GetSec(moment, x));
  });
}

inline std::string partsOf(const Moment& moment) { return partsOf(moment.get()); }

}  // namespace orlocal::host::testing
