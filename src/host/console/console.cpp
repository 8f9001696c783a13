#include "host/console/console.h"

#include <ostream>
#include <vector>

#include <fmt/format.h>

#include "base/text.h"
#include "host/calc/calc_failure.h"
#include "host/calc/line_joiner.h"
#include "host/calc/rendering.h"
#include "host/console/completion.h"

namespace orlocal::host {

namespace {

constexpr std::string_view kPrompt = "> ";
constexpr std::string_view kContinuation = "… ";

constexpr std::string_view kHelp =
    "Type a calculation; it goes on over several lines while a bracket is open.\n"
    "  help NAME    shows the functions whose names begin so, with their arguments\n"
    "  variables    shows the $ and $$ variables that hold something\n"
    "  quit         ends (or Ctrl-D); Ctrl-C clears the line\n"
    "The tab key completes names.\n";

/// An entry of several lines is recalled as one, unless a comment to the end of a line would swallow the rest.
std::vector<std::string> recallable(const std::vector<std::string>& lines) {
  std::string joined;
  for (const std::string& line : lines) {
    if (lines.size() > 1 && line.find("//") != std::string::npos) { return lines; }
    joined += joined.empty() ? line : " " + std::string(trimmed(line));
  }
  return {joined};
}

bool asksToStop(const std::string& entry) {
  return equalsNoCase(trimmed(entry), "quit") || equalsNoCase(trimmed(entry), "exit");
}

}  // namespace

bool Console::run() {
  std::vector<std::string> lines;
  std::string entry;
  for (;;) {
    const LineSource::Line line = m_parts.lines.read(std::string(lines.empty() ? kPrompt : kContinuation));
    if (line.outcome == LineSource::Outcome::kCancelled) {
      lines.clear();
      entry.clear();
      continue;
    }
    const bool ended = line.outcome == LineSource::Outcome::kEnd;
    if (ended && lines.empty()) {
      // The shell prompt that follows Ctrl-D begins on a line of its own.
      if (m_parts.colors) { m_parts.out << '\n'; }
      break;
    }
    if (!ended) {
      if (lines.empty() && trimmed(line.text).empty()) { continue; }
      entry += (lines.empty() ? "" : "\n") + line.text;
      lines.push_back(line.text);
      if (calc::completenessOf(entry) == calc::Completeness::kOpen) { continue; }
    }
    if (asksToStop(entry)) { break; }
    for (const std::string& recalled : recallable(lines)) { m_parts.lines.remember(recalled); }
    obey(entry);
    lines.clear();
    entry.clear();
  }
  m_parts.out.flush();
  return !m_failed;
}

void Console::obey(const std::string& entry) {
  const std::string_view word = trimmed(entry);
  if (equalsNoCase(word, "help")) {
    m_parts.out << kHelp;
  } else if (equalsNoCase(word.substr(0, 5), "help ")) {
    help(std::string(trimmed(word.substr(5))));
  } else if (equalsNoCase(word, "variables")) {
    for (const std::string& name : m_parts.variables()) {
      m_parts.out << calc::harmless(name) << " = ";
      show(m_parts.evaluate(name), name);
    }
  } else {
    show(m_parts.evaluate(entry), entry);
  }
  m_parts.out.flush();
}

void Console::help(const std::string& name) {
  const Completion found = complete(name, candidatesFor(m_parts.library, {}));
  if (found.matching.empty()) { m_parts.out << "no function's name begins with " << calc::harmless(name) << '\n'; }
  for (const Candidate& candidate : found.matching) { m_parts.out << calc::harmless(candidate.prototype) << '\n'; }
  for (const calc::Signature& signature : m_parts.library.signatures()) {
    // The text of a description stands behind its type-ahead words.
    const std::size_t bar = signature.description.find('|');
    if (equalsNoCase(signature.name, name)) {
      m_parts.out << "    " << calc::harmless(signature.description.substr(bar + 1)) << '\n';
    }
  }
}

void Console::show(const Result<calc::Outcome>& outcome, const std::string& entry) {
  if (!outcome) {
    m_failed = true;
    m_parts.out << calc::harmlessLines(calc::describe(entry, outcome.error())) << '\n';
    return;
  }
  const std::vector<std::string> lines = calc::linesOf(outcome->value);
  const std::string_view type = calc::typeName(outcome->value);
  const auto shown = [&](const std::string& line) { return m_parts.colors ? calc::harmless(line) : line; };
  if (outcome->value.isEmpty() && outcome->value.isValid()) {
    m_parts.out << dim("(empty)") << '\n';
  } else if (lines.size() == 1) {
    m_parts.out << shown(lines.front()) << "  " << dim(fmt::format("({})", type)) << '\n';
  } else {
    for (const std::string& line : lines) { m_parts.out << shown(line) << '\n'; }
    m_parts.out << dim(fmt::format("({}, {} lines)", type, lines.size())) << '\n';
  }
  for (const std::string& failure : outcome->failures) {
    m_failed = true;
    m_parts.out << "! " << shown(failure) << '\n';
  }
}

std::string Console::dim(const std::string& text) const {
  return m_parts.colors ? fmt::format("\x1B[2m{}\x1B[0m", text) : text;
}

}  // namespace orlocal::host
