#include "host/commands/describing/line_format.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "base/translation.h"
#include "base/try.h"
#include "host/commands/command_line/folded_text.h"
#include "host/commands/command_line/nearest_word.h"
#include "host/commands/command_line/terminal_text.h"
#include "host/commands/describing/time_format.h"
#include "host/commands/words/word_cursor.h"

namespace orlocal::host {
namespace {

using Json = nlohmann::json;

constexpr std::size_t kWidest = 1000;

Failed unknownField(std::string_view path, const RowShape& shape) {
  const auto known = shape.paths();
  if (const auto nearest = nearestWord(path, known)) {
    return failure(ErrorCode::kInvalid, tr("There is no field \"{}\", but there is \"{}\"", printable(path), *nearest));
  }
  return failure(ErrorCode::kInvalid,
                 tr("There is no field \"{}\"; there are {}", printable(path), fmt::join(known, ", ")));
}

std::string scalarText(const Json& value, const std::string& time) {
  if (value.is_null()) { return ""; }
  if (value.is_string()) {
    const auto& text = value.get_ref<const std::string&>();
    return printable(time.empty() ? text : formattedTime(text, time));
  }
  return printable(value.dump(-1, ' ', false, Json::error_handler_t::replace));
}

/// The texts of what `path` leads to, from its step `step` on.
void collect(const Json& value, const std::vector<std::string>& path, std::size_t step, const std::string& time,
             std::vector<std::string>& texts) {
  if (value.is_array()) {
    for (const Json& each : value) { collect(each, path, step, time, texts); }
  } else if (step == path.size()) {
    texts.push_back(scalarText(value, time));
  } else if (value.is_object()) {
    if (const auto member = value.find(path[step]); member != value.end()) {
      collect(*member, path, step + 1, time, texts);
    }
  }
}

std::string fitted(const std::string& text, std::size_t width, bool toTheRight) {
  if (width == 0) { return text; }
  const std::string part = shortened(text, width);
  return toTheRight ? std::string(width - std::min(width, displayWidth(part)), ' ') + part : padded(part, width);
}

}  // namespace

Result<LineFormat::Part> LineFormat::readField(std::string_view text, const RowShape& shape) {
  const std::size_t colon = text.find(':');
  const std::string_view path = text.substr(0, colon);
  const RowField* field = shape.field(path);
  if (field == nullptr) { return unknownField(path, shape); }
  Part part;
  for (std::string_view rest = path; !rest.empty();) {
    const std::string_view step = rest.substr(0, rest.find('.'));
    part.path.emplace_back(step);
    rest.remove_prefix(std::min(rest.size(), step.size() + 1));
  }
  if (colon == std::string_view::npos) { return part; }
  std::string_view how = text.substr(colon + 1);
  if (how.find('%') != std::string_view::npos) {
    if (!field->isTime) {
      return failure(ErrorCode::kInvalid, tr("\"{}\" is no day and no time; only those have such a format", path));
    }
    ORLOCAL_CHECK(checkTimeFormat(how));
    part.time = how;
    return part;
  }
  part.toTheRight = how.starts_with('>');
  if (part.toTheRight) { how.remove_prefix(1); }
  const auto width = wholeNumber(how);
  if (!width || *width < 1 || static_cast<std::size_t>(*width) > kWidest) {
    return failure(ErrorCode::kInvalid,
                   tr("\"{}\" after \"{}\" is no width and no format for times; write 20, >20 or %H:%M",
                      printable(text.substr(colon)), path));
  }
  part.width = static_cast<std::size_t>(*width);
  return part;
}

Result<LineFormat> LineFormat::read(std::string_view text, const RowShape& shape) {
  LineFormat format;
  std::string literal;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char c = text[at];
    const char next = at + 1 < text.size() ? text[at + 1] : '\0';
    if ((c == '{' || c == '}') && next == c) {
      literal += c;
      ++at;
    } else if (c == '}') {
      return failure(ErrorCode::kInvalid, tr("A \"}}\" closes nothing; write }}}} for the character"));
    } else if (c == '{') {
      const std::size_t end = text.find('}', at);
      if (end == std::string_view::npos) {
        return failure(ErrorCode::kInvalid,
                       tr("\"{}\" is not closed; write {{{{ for the character", printable(text.substr(at))));
      }
      ORLOCAL_TRY(Part part, readField(text.substr(at + 1, end - at - 1), shape));
      format.m_parts.push_back({.literal = std::exchange(literal, {})});
      format.m_parts.push_back(std::move(part));
      at = end;
    } else if (c == '\\') {
      const std::string_view meant = next == 'n' ? "\n" : next == 't' ? "\t" : next == '\\' ? "\\" : "";
      if (meant.empty()) {
        return failure(ErrorCode::kInvalid, tr("\"{}\" is none of \\n, \\t and \\\\", printable(text.substr(at, 2))));
      }
      literal += meant;
      ++at;
    } else {
      literal += c;
    }
  }
  format.m_parts.push_back({.literal = std::move(literal)});
  return format;
}

std::string LineFormat::line(const nlohmann::json& row) const {
  std::string text;
  for (const Part& part : m_parts) {
    text += part.literal;
    if (part.path.empty()) { continue; }
    std::vector<std::string> values;
    collect(row, part.path, 0, part.time, values);
    text += fitted(fmt::format("{}", fmt::join(values, ", ")), part.width, part.toTheRight);
  }
  return text + '\n';
}

}  // namespace orlocal::host
