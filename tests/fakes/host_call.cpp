#include "fakes/host_call.h"

#include <cstdio>

namespace orlocal::fakes {
namespace {

std::string dateText(const HostDateTimeParts& parts) {
  char text[64];
  std::snprintf(text, sizeof text, "%d-%.2d-%.2d", parts.year, parts.month, parts.day);
  return text;
}

std::string timeText(const HostDateTimeParts& parts) {
  char text[64];
  std::snprintf(text, sizeof text, "%.2d:%.2d:%.2d", parts.hour, parts.minute, parts.second);
  return text;
}

}  // namespace

std::string HostCall::shown() const {
  switch (type()) {
    case fmx::kNumber:
      return "number " + text();
    case fmx::kDate:
      return "date " + dateText(date());
    case fmx::kTimeStamp:
      return "timestamp " + dateText(timeStamp()) + " " + timeText(timeStamp());
    case fmx::kText:
      return isEmpty() && text().empty() ? "text" : "text " + text();
    default:
      return isEmpty() ? "empty" : "type " + std::to_string(type());
  }
}

}  // namespace orlocal::fakes
