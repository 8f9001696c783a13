#pragma once

#include <string>
#include <string_view>

#include "host/fmwrapper/number.h"
#include "host/fmwrapper/unicode.h"

namespace orlocal::host {

inline std::string shown(const Number& number) { return toUtf8(number.text()); }
inline Number num(std::u16string_view text) { return Number::parse(text); }

}  // namespace orlocal::host
