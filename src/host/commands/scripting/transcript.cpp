#include "host/commands/scripting/transcript.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include <fmt/format.h>

#include "base/try.h"
#include "host/commands/scripting/calc_file.h"
#include "host/commands/scripting/quoted_words.h"

namespace orlocal::host {

namespace {

constexpr std::string_view kFence = "```";
constexpr std::string_view kTranscriptFence = "```transcript";
constexpr std::string_view kPrompt = "$ ";

Failed refused(std::size_t line, std::string message) {
  return failure({.code = ErrorCode::kInvalid, .message = std::move(message), .place = line});
}

Result<std::vector<std::string>> wordsOf(std::string_view text, std::size_t line) {
  auto words = quotedWords(text);
  if (!words) { return refused(line, words.error().message); }
  return words;
}

using TextSetting = std::optional<std::string> TranscriptSettings::*;

struct TextDirective {
  std::string_view name;
  TextSetting setting;
};

constexpr TextDirective kTextDirectives[] = {
    {"@store", &TranscriptSettings::store},       {"@plugin", &TranscriptSettings::plugin},
    {"@timezone", &TranscriptSettings::timezone}, {"@system-minor", &TranscriptSettings::systemMinor},
    {"@now", &TranscriptSettings::now},           {"@language", &TranscriptSettings::language},
};

class Reader {
 public:
  Reader(std::string_view text, bool markdown) : m_lines(splitLines(text)), m_markdown(markdown) {}

  Result<Transcript> read() {
    m_inside = !m_markdown;
    while (m_at < m_lines.size()) { ORLOCAL_CHECK(readLine()); }
    return std::move(m_transcript);
  }

 private:
  Status readLine() {
    const std::string_view line = m_lines[m_at];
    if (m_markdown && line.starts_with(kFence)) {
      m_inside = line.starts_with(kTranscriptFence);
      m_expecting = false;
      ++m_at;
    } else if (!m_inside) {
      ++m_at;
    } else if (line.starts_with('>')) {
      readExample();
    } else if (line.starts_with('#')) {
      m_expecting = false;
      ++m_at;
    } else if (line.starts_with('@')) {
      m_expecting = false;
      ORLOCAL_TRY(std::vector<std::string> words, wordsOf(line, m_at + 1));
      ORLOCAL_CHECK(readDirective(std::move(words)));
      ++m_at;
    } else if (line.starts_with(kPrompt)) {
      ORLOCAL_TRY(std::vector<std::string> words, wordsOf(line.substr(kPrompt.size()), m_at + 1));
      if (words.empty() || words.front() != "orlocal") {
        return refused(m_at + 1, "what is typed begins with orlocal");
      }
      readStep(Example::Kind::kTyped, std::move(words));
      ++m_at;
    } else if (m_expecting) {
      m_transcript.examples.back().expected.emplace_back(line);
      ++m_at;
    } else {
      if (!isBlank(line)) { return refused(m_at + 1, "this line belongs to no calculation; one begins with > or $"); }
      ++m_at;
    }
    return {};
  }

  void readExample() {
    // Inside a transcript only the marker is taken off, so that columns in messages count from the calculation.
    const std::size_t first = m_at;
    const std::string_view line = m_lines[first];
    m_lines[first].remove_prefix(line.starts_with("> ") ? 2 : 1);
    std::string calculation = joinCalculation(m_lines, first, m_at);
    m_transcript.examples.push_back({first + 1, std::move(calculation), {}});
    m_expecting = true;
  }

  void readStep(Example::Kind kind, std::vector<std::string> words) {
    words.erase(words.begin());
    m_transcript.examples.push_back({m_at + 1, std::string(m_lines[m_at]), {}, kind, std::move(words)});
    m_expecting = true;
  }

  Status readDirective(std::vector<std::string> words) {
    const std::size_t line = m_at + 1;
    const std::string& name = words.front();
    if (name == "@register") {
      if (words.size() != 3) { return refused(line, "@register takes a file and a script"); }
      readStep(Example::Kind::kRegister, std::move(words));
      return {};
    }
    if (name == "@outside") {
      if (words.size() < 2) { return refused(line, "@outside needs a command"); }
      readStep(Example::Kind::kOutside, std::move(words));
      return {};
    }
    if (!m_transcript.examples.empty()) { return refused(line, "settings stand before the first calculation"); }
    TranscriptSettings& settings = m_transcript.settings;
    if (name == "@import" || name == "@import-contacts") {
      if (words.size() < 2) { return refused(line, name + " needs a file"); }
      settings.preparations.push_back({line, name.substr(1), {words.begin() + 1, words.end()}});
      return {};
    }
    if (words.size() != 2) { return refused(line, name + " takes one word"); }
    if (name == "@host-version") {
      ORLOCAL_TRY(settings.hostVersion, number(words[1], line));
      return {};
    }
    const auto* directive = std::ranges::find(kTextDirectives, name, &TextDirective::name);
    if (directive == std::end(kTextDirectives)) { return refused(line, fmt::format("{} is no setting", name)); }
    settings.*(directive->setting) = words[1];
    return {};
  }

  static Result<int> number(const std::string& word, std::size_t line) {
    int value = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
    if (error != std::errc{} || end != word.data() + word.size()) {
      return refused(line, fmt::format("{} is no number", word));
    }
    return value;
  }

  std::vector<std::string_view> m_lines;
  bool m_markdown;
  bool m_inside = true;
  bool m_expecting = false;
  std::size_t m_at = 0;
  Transcript m_transcript;
};

}  // namespace

Result<Transcript> parseTranscript(std::string_view text, bool markdown) { return Reader(text, markdown).read(); }

}  // namespace orlocal::host
