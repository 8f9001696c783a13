#include "host/console/completion.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

#include "base/text.h"
#include "base/translation.h"
#include "host/calc/builtins.h"
#include "host/calc/lexer.h"
#include "host/console/plugin_words.h"

namespace orlocal::host {

namespace {

bool isNameByte(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '$' ||
         (static_cast<unsigned char>(c) & 0x80U) != 0;
}

std::string_view nameAtEnd(std::string_view text) {
  std::size_t begin = text.size();
  while (begin > 0 && isNameByte(text[begin - 1])) { --begin; }
  return text.substr(begin);
}

/// True when the name stands directly inside `Get (`.
bool isInsideGet(std::string_view before) {
  const auto tokens = calc::tokenize(before);
  if (!tokens || tokens->size() < 3) { return false; }
  const calc::Token& open = (*tokens)[tokens->size() - 2];
  const calc::Token& name = (*tokens)[tokens->size() - 3];
  return open.kind == calc::TokenKind::kOpen && name.kind == calc::TokenKind::kName && equalsNoCase(name.text, "get");
}

/// How far the names agree, without case.
std::size_t agreement(const std::vector<Candidate>& candidates) {
  std::size_t length = candidates.front().name.size();
  for (const Candidate& candidate : candidates) {
    std::size_t same = 0;
    while (same < length && same < candidate.name.size() &&
           equalsNoCase(candidate.name.substr(same, 1), candidates.front().name.substr(same, 1))) {
      ++same;
    }
    length = same;
  }
  // Letters beyond ASCII are kept whole.
  const auto isWithinLetter = [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; };
  while (length > 0 && length < candidates.front().name.size() && isWithinLetter(candidates.front().name[length])) {
    --length;
  }
  return length;
}

/// In order, and as far as they agree behind what was typed.
Completion completionOf(std::vector<Candidate> matching, std::size_t typed) {
  Completion completion{.insertion = {}, .matching = std::move(matching)};
  if (completion.matching.empty()) { return completion; }
  std::ranges::sort(completion.matching, {}, &Candidate::name);
  const std::size_t agreed = std::max(agreement(completion.matching), typed);
  completion.insertion = completion.matching.front().name.substr(typed, agreed - typed);
  return completion;
}

Completion completeText(const TextPlace& place, std::vector<Candidate> candidates) {
  std::erase_if(candidates, [&](const Candidate& candidate) { return !candidate.name.starts_with(place.typed); });
  Completion completion = completionOf(std::move(candidates), place.typed.size());
  if (completion.matching.size() == 1) { completion.insertion += '"'; }
  return completion;
}

}  // namespace

std::vector<Candidate> candidatesFor(const calc::FunctionLibrary& library, const std::vector<std::string>& variables) {
  std::vector<Candidate> candidates;
  for (const calc::Builtin* function : calc::allBuiltins()) {
    candidates.push_back({std::string(function->name), std::string(function->prototype), function->maximum != 0});
  }
  for (const calc::Signature& signature : library.signatures()) {
    candidates.push_back({signature.name, signature.prototype, signature.minimum != 0});
  }
  for (const std::string& variable : variables) { candidates.push_back({variable, variable, false}); }
  return candidates;
}

std::vector<Candidate> keywordsFor(const TextPlace& place) {
  std::vector<Candidate> keywords;
  for (const WordKind kind : kindsFor(place.function, place.argument)) {
    for (const PluginWord& row : pluginWords()) {
      if (row.kind == kind) {
        keywords.push_back({std::string(row.word), fmt::format("{}  {}", row.word, translated(row.meaning)), false});
      }
    }
  }
  return keywords;
}

Completion complete(std::string_view beforeCursor, const std::vector<Candidate>& candidates,
                    const TextCandidates& texts) {
  if (const auto place = textPlaceAt(beforeCursor)) { return completeText(*place, texts(*place)); }
  std::vector<Candidate> matching;
  const std::string_view typed = nameAtEnd(beforeCursor);
  const auto take = [&](const Candidate& candidate) {
    if (equalsNoCase(std::string_view(candidate.name).substr(0, typed.size()), typed)) {
      matching.push_back(candidate);
    }
  };
  if (isInsideGet(beforeCursor.substr(0, beforeCursor.size() - typed.size()))) {
    for (const calc::GetEntry& entry : calc::allGets()) {
      take({std::string(entry.name), std::string(entry.name), false});
    }
  } else if (!typed.empty()) {
    std::ranges::for_each(candidates, take);
  }
  Completion completion = completionOf(std::move(matching), typed.size());
  if (completion.matching.size() == 1 && completion.matching.front().opens) { completion.insertion += " ( "; }
  return completion;
}

}  // namespace orlocal::host
