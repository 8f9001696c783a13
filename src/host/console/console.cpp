#include "host/console/console.h"

#include <ostream>
#include <vector>

#include <fmt/format.h>

#include "base/text.h"
#include "base/translation.h"
#include "host/calc/calc_failure.h"
#include "host/calc/line_joiner.h"
#include "host/calc/rendering.h"
#include "host/console/completion.h"
#include "host/console/language_help.h"
#include "host/console/plugin_words.h"

namespace orlocal::host {

namespace {

constexpr std::string_view kPrompt = "> ";
/// What the plug-in's functions return when they could not do their work.
constexpr std::string_view kErrorResult = "!!ERROR!!";
constexpr std::string_view kContinuation = "… ";

constexpr const char* kHelp = translatable(
    "Type a calculation; it goes on over several lines while a bracket is open.\n"
    "  help NAME    shows what a function or a keyword of the plug-in means, and the\n"
    "               functions whose names begin so\n"
    "  variables    shows the $ and $$ variables that hold something\n"
    "  .agenda      runs that command of the program, with its words; .help lists all\n"
    "  quit         ends (or Ctrl-D); Ctrl-C clears the line\n"
    "The tab key completes names, and within texts keywords and titles of calendars.\n");

/// An entry of several lines is recalled as one, unless a comment to the end of a line would swallow the rest.
std::vector<std::string> recallable(const std::vector<std::string>& lines) {
  std::string joined;
  for (const std::string& line : lines) {
    if (lines.size() > 1 && line.find("//") != std::string::npos) { return lines; }
    joined += joined.empty() ? line : " " + std::string(trimmed(line));
  }
  return {joined};
}

/// ".agenda", and not ".5".
bool isCommand(std::string_view word) {
  const char second = word.size() > 1 ? asciiLower(word[1]) : '\0';
  return word.starts_with('.') && second >= 'a' && second <= 'z';
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
    m_parts.out << translated(kHelp);
  } else if (equalsNoCase(word.substr(0, 5), "help ")) {
    help(std::string(trimmed(word.substr(5))));
  } else if (equalsNoCase(word, "variables")) {
    for (const std::string& name : m_parts.variables()) {
      m_parts.out << calc::harmless(name) << " = ";
      show(m_parts.evaluate(name), name);
    }
  } else if (isCommand(word)) {
    m_parts.out.flush();
    m_failed = !m_parts.command(word.substr(1)) || m_failed;
  } else {
    show(m_parts.evaluate(entry), entry);
  }
  m_parts.out.flush();
}

void Console::help(const std::string& name) {
  const bool function = helpOnFunction(name);
  if (helpOnKeyword(name) || function) { return; }
  m_parts.out << tr("no function's name begins with {}, and it is no keyword\n", calc::harmless(name));
}

bool Console::helpOnFunction(const std::string& name) {
  const Completion found = complete(name, candidatesFor(m_parts.library, {}));
  for (const Candidate& candidate : found.matching) { m_parts.out << calc::harmless(candidate.prototype) << '\n'; }
  const LanguageHelp* own = languageHelpOn(name);
  if (own != nullptr) {
    m_parts.out << (found.matching.empty() ? fmt::format("{}\n", own->example) : "")
                << fmt::format("    {}\n", translated(own->meaning))
                << (own->result.empty() ? "" : tr("    Example: {} is {}\n", own->example, own->result));
  }
  for (const calc::Signature& signature : m_parts.library.signatures()) {
    if (!equalsNoCase(signature.name, name)) { continue; }
    // The text of a description stands behind its type-ahead words.
    const std::size_t bar = signature.description.find('|');
    const std::string text = signature.description.substr(bar + 1);
    m_parts.out << "    " << calc::harmless(trimmed(text)) << '\n';
    if (const auto example = exampleOf(name); !example.empty()) { m_parts.out << tr("    Example: {}\n", example); }
  }
  return own != nullptr || !found.matching.empty();
}

bool Console::helpOnKeyword(const std::string& name) {
  bool known = false;
  for (const PluginWord& row : pluginWords()) {
    if (!equalsNoCase(row.word, name)) { continue; }
    m_parts.out << fmt::format("\"{}\" ({}): {}\n", row.word, translated(nameOf(row.kind)), translated(row.meaning));
    known = true;
  }
  return known;
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
    m_parts.out << dim(tr("(empty)")) << '\n';
  } else if (lines.size() == 1) {
    const auto reason = lines.front() == kErrorResult ? m_parts.lastError() : std::nullopt;
    m_parts.out << shown(lines.front()) << "  " << dim(fmt::format("({})", type))
                << (reason ? "  " + calc::harmless(*reason) : "") << '\n';
  } else {
    for (const std::string& line : lines) { m_parts.out << shown(line) << '\n'; }
    m_parts.out << dim(trn("({}, {} line)", "({}, {} lines)", lines.size(), type, lines.size())) << '\n';
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
