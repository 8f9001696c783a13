#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "backend/error_codes.h"
#include "platform/exception.h"
#include "platform/text.h"

namespace orlocal {

// What both back ends do in the same way with objects, lists and exceptions.

/// Whether `index`, which counts from 1, names one of `count` objects.
constexpr bool isWithin(std::int32_t index, std::size_t count) {
  return index >= 1 && static_cast<std::size_t>(index) <= count;
}

/// The calendars titled as the lines of `names`, in order, as `find` gives them. The first that it does not find sets
/// 9013 and gives none, whatever was found before.
template <class Calendar, class Find>
std::optional<std::vector<std::shared_ptr<Calendar>>> calendarsTitled(std::string_view names, Find find) {
  std::vector<std::shared_ptr<Calendar>> calendars;
  for (const auto& title : splitAtNewlines(names)) {
    std::shared_ptr<Calendar> calendar = find(title);
    if (!calendar) {
      failWith(kCalendarUidNotFound);
      return std::nullopt;
    }
    calendars.push_back(std::move(calendar));
  }
  return calendars;
}

/// The result of `work`; when it raises a platform exception, `failed`, with 9999 set and the reason in `reason`.
template <class Result, class Work>
Result catchingExceptions(OptionalText& reason, Result failed, Work work) {
  try {
    return work();
  } catch (const Exception& exception) {
    g_llasterror = kPlatformException;
    reason = exception.reason();
    return failed;
  }
}

}  // namespace orlocal
