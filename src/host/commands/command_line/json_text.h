#pragma once

#include <optional>
#include <ostream>
#include <string>

#include <nlohmann/json.hpp>

namespace orlocal::host {

/// Null for an absent text.
inline nlohmann::json jsonText(const std::optional<std::string>& text) {
  return text ? nlohmann::json(*text) : nlohmann::json(nullptr);
}

/// Indented, with malformed text replaced instead of refused: a listing shows what there is.
template <class Json>
void printJson(const Json& json, std::ostream& out) {
  out << json.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

}  // namespace orlocal::host
