#include <algorithm>
#include <iterator>
#include <string>
#include <unordered_set>
#include <vector>

#include <fmt/format.h>

#include "base/text.h"
#include "base/translation.h"
#include "host/calc/arguments.h"
#include "host/calc/builtins.h"
#include "host/calc/operators.h"
#include "host/calc/text_tools.h"
#include "host/fmwrapper/unicode.h"

namespace orlocal::host::calc {

namespace {

constexpr std::u16string_view kPilcrow = u"\u00B6";
/// Digits of one character in the numbers of Code and Char.
constexpr std::size_t kCodeDigits = 5;
constexpr std::int64_t kLastCodePoint = 0x10FFFF;

Value left(CallContext&, Arguments a) { return Value::ofText(characters(a[0].asText(), 0, countAt(a, 1))); }

Value right(CallContext&, Arguments a) {
  const std::u16string& text = a[0].asText();
  const std::size_t size = characterCount(text);
  const std::size_t count = std::min(countAt(a, 1), size);
  return Value::ofText(characters(text, size - count, count));
}

Value middle(CallContext&, Arguments a) {
  const Part part = partAt(a, 1, 2);
  return Value::ofText(characters(a[0].asText(), part.first, part.count));
}

Value length(CallContext&, Arguments a) {
  return Value::ofNumber(static_cast<std::int64_t>(characterCount(a[0].asText())));
}

Value position(CallContext&, Arguments a) {
  const std::u16string& text = a[0].asText();
  const std::int64_t start = std::max<std::int64_t>(a[2].asNumber().toInt64(), 1);
  const std::size_t from = unitOfCharacter(text, static_cast<std::size_t>(start) - 1);
  const std::size_t found = findIgnoringCase(text, a[1].asText(), from, a[3].asNumber().toInt64());
  if (found == kNotFound) { return Value::ofNumber(0); }
  return Value::ofNumber(static_cast<std::int64_t>(characterCount(std::u16string_view(text).substr(0, found))) + 1);
}

Value patternCount(CallContext&, Arguments a) {
  return Value::ofNumber(static_cast<std::int64_t>(countOf(foldCase(a[0].asText()), foldCase(a[1].asText()))));
}

Value substitute(CallContext& context, Arguments a) {
  std::u16string text = a[0].asText();
  for (std::size_t pair = 1; pair + 1 < a.size(); pair += 2) {
    const std::u16string& from = a[pair].asText();
    const std::u16string& to = a[pair + 1].asText();
    if (to.size() > from.size()) {
      const std::size_t room = context.textLimit() - std::min(context.textLimit(), text.size());
      if (countOf(text, from) > room / (to.size() - from.size())) {
        context.note(tr("a text would be longer than {} characters", context.textLimit()));
        return Value::invalid();
      }
    }
    text = replaceAll(text, from, to);
  }
  return Value::ofText(std::move(text));
}

Value replace(CallContext&, Arguments a) {
  const std::u16string& text = a[0].asText();
  const Part part = partAt(a, 1, 2);
  const std::size_t begin = unitOfCharacter(text, part.first);
  const std::size_t end = begin + unitOfCharacter(std::u16string_view(text).substr(begin), part.count);
  return Value::ofText(text.substr(0, begin) + a[3].asText() + text.substr(end));
}

Value upper(CallContext&, Arguments a) { return Value::ofText(toUpper(a[0].asText())); }
Value lower(CallContext&, Arguments a) { return Value::ofText(toLower(a[0].asText())); }

bool isWordSeparator(char32_t point) {
  if (point < 0x80) {
    return !((point >= U'0' && point <= U'9') || (point >= U'A' && point <= U'Z') || (point >= U'a' && point <= U'z') ||
             point == U'\'' || point == U'_');
  }
  if (point == 0x2019) {
    return false;  // the apostrophe inside a word
  }
  return point == 0xA0 || point == 0xAB || point == 0xBB || point == 0xA1 || point == 0xBF || point == 0xB6 ||
         (point >= 0x2000 && point <= 0x206F) || (point >= 0x3000 && point <= 0x3003);
}

/// Where the words of a text stand, in units.
struct Word {
  std::size_t begin = 0;
  std::size_t end = 0;
};

std::vector<Word> wordsOf(std::u16string_view text) {
  std::vector<Word> words;
  bool inside = false;
  for (std::size_t unit = 0; unit < text.size(); ++unit) {
    if (isWordSeparator(codePointAt(text, unit))) {
      inside = false;
    } else {
      if (!inside) { words.push_back({unit, unit}); }
      inside = true;
      words.back().end = unit + 1;
    }
  }
  return words;
}

/// From the beginning of one word to the end of another, with what stands between them.
Value wordRange(const std::u16string& text, const std::vector<Word>& words, std::size_t first, std::size_t count) {
  if (first >= words.size() || count == 0) { return Value::ofText(std::u16string{}); }
  const std::size_t last = std::min(words.size() - first, count) + first - 1;
  return Value::ofText(text.substr(words[first].begin, words[last].end - words[first].begin));
}

Value wordCount(CallContext&, Arguments a) {
  return Value::ofNumber(static_cast<std::int64_t>(wordsOf(a[0].asText()).size()));
}
Value leftWords(CallContext&, Arguments a) {
  return wordRange(a[0].asText(), wordsOf(a[0].asText()), 0, countAt(a, 1));
}
Value rightWords(CallContext&, Arguments a) {
  const std::vector<Word> words = wordsOf(a[0].asText());
  const std::size_t count = std::min(countAt(a, 1), words.size());
  return wordRange(a[0].asText(), words, words.size() - count, count);
}
Value middleWords(CallContext&, Arguments a) {
  const Part part = partAt(a, 1, 2);
  return wordRange(a[0].asText(), wordsOf(a[0].asText()), part.first, part.count);
}

Value proper(CallContext&, Arguments a) {
  const std::u16string text = toLower(a[0].asText());
  std::u16string result;
  std::size_t at = 0;
  for (const Word& word : wordsOf(text)) {
    const std::size_t first = word.begin + characters(std::u16string_view(text).substr(word.begin), 0, 1).size();
    result += text.substr(at, word.begin - at);
    result += toUpper(std::u16string_view(text).substr(word.begin, first - word.begin));
    at = first;
  }
  return Value::ofText(result + text.substr(at));
}

Value trim(CallContext&, Arguments a) {
  return Value::ofText(std::u16string(trimmed(std::u16string_view(a[0].asText()), u" ")));
}

Value filter(CallContext&, Arguments a) {
  const std::u16string& text = a[0].asText();
  const std::u16string& allowed = a[1].asText();
  // Halves of a pair that stand alone in the text find themselves in the pairs of the filter, too.
  std::unordered_set<char32_t> points(allowed.begin(), allowed.end());
  for (std::size_t unit = 0; unit + 1 < allowed.size(); ++unit) { points.insert(codePointAt(allowed, unit)); }
  std::u16string result;
  for (std::size_t unit = 0; unit < text.size();) {
    const std::u16string_view character = characters(std::u16string_view(text).substr(unit, 2), 0, 1);
    if (points.contains(codePointAt(character, 0))) { result += character; }
    unit += character.size();
  }
  return Value::ofText(std::move(result));
}

Value exact(CallContext&, Arguments a) { return truth(a[0].asText() == a[1].asText()); }

/// A text literal that gives the text back when it is evaluated.
Value quote(CallContext&, Arguments a) {
  std::u16string result = u"\"";
  for (const char16_t unit : a[0].asText()) {
    if (unit == u'"' || unit == u'\\' || unit == kPilcrow.front()) { result += u'\\'; }
    if (unit == kReturn) {
      result += kPilcrow;
    } else {
      result += unit;
    }
  }
  return Value::ofText(result + u"\"");
}

/// The character of a code; several characters, the last one leftmost, in a code of five digits each.
Value fromCode(CallContext&, Arguments a) {
  const Number number = truncate(a[0].asNumber());
  if (!a[0].isValid() || number.isNegative()) { return Value::invalid(); }
  if (number <= Number(kLastCodePoint)) {
    const auto point = static_cast<char32_t>(number.toInt64());
    if (point >= 0xD800 && point <= 0xDFFF) { return Value::invalid(); }
    return Value::ofText(point == 0 ? std::u16string{} : fromCodePoint(point));
  }
  std::u16string digits = number.text();
  std::u16string result;
  while (!digits.empty()) {
    const std::size_t width = std::min(kCodeDigits, digits.size());
    const auto point =
        static_cast<char32_t>(Number::parse(std::u16string_view(digits).substr(digits.size() - width)).toInt64());
    if (point >= 0xD800 && point <= 0xDFFF) { return Value::invalid(); }
    result += fromCodePoint(point);
    digits.resize(digits.size() - width);
  }
  return Value::ofText(std::move(result));
}

Value toCode(CallContext&, Arguments a) {
  const std::u16string& text = a[0].asText();
  if (text.empty()) { return numberOf(Value{}); }
  std::vector<char32_t> points;
  for (std::size_t unit = 0; unit < text.size();) {
    points.push_back(codePointAt(text, unit));
    unit += points.back() > 0xFFFF ? 2 : 1;
  }
  std::string digits;
  for (auto point = points.rbegin(); point != points.rend(); ++point) {
    fmt::format_to(std::back_inserter(digits), "{:05}", static_cast<std::uint32_t>(*point));
  }
  return Value::ofNumber(Number::parse(toUtf16(digits)));
}

Value converted(const Value& value, fmx::NativeType type) {
  Value result = value;
  result.convertTo(type);
  return result;
}

Value getAsText(CallContext&, Arguments a) { return Value::ofText(a[0].asText()); }
Value getAsNumber(CallContext&, Arguments a) { return numberOf(a[0]); }
Value getAsDate(CallContext&, Arguments a) { return converted(a[0], fmx::kDate); }
Value getAsTime(CallContext&, Arguments a) { return converted(a[0], fmx::kTime); }
Value getAsTimestamp(CallContext&, Arguments a) { return converted(a[0], fmx::kTimeStamp); }
Value getAsBoolean(CallContext&, Arguments a) { return a[0].isValid() ? truth(a[0].asBoolean()) : a[0]; }

constexpr Builtin kFunctions[] = {
    {"Char", "Char ( number )", 1, 1, Form::kFunction, fromCode},
    {"Code", "Code ( text )", 1, 1, Form::kFunction, toCode},
    {"Exact", "Exact ( originalText ; comparisonText )", 2, 2, Form::kFunction, exact},
    {"Filter", "Filter ( textToFilter ; filterText )", 2, 2, Form::kFunction, filter},
    {"GetAsBoolean", "GetAsBoolean ( data )", 1, 1, Form::kFunction, getAsBoolean},
    {"GetAsDate", "GetAsDate ( text )", 1, 1, Form::kFunction, getAsDate},
    {"GetAsNumber", "GetAsNumber ( text )", 1, 1, Form::kFunction, getAsNumber},
    {"GetAsText", "GetAsText ( data )", 1, 1, Form::kFunction, getAsText},
    {"GetAsTime", "GetAsTime ( text )", 1, 1, Form::kFunction, getAsTime},
    {"GetAsTimestamp", "GetAsTimestamp ( text )", 1, 1, Form::kFunction, getAsTimestamp},
    {"Left", "Left ( text ; numberOfCharacters )", 2, 2, Form::kFunction, left},
    {"LeftWords", "LeftWords ( text ; numberOfWords )", 2, 2, Form::kFunction, leftWords},
    {"Length", "Length ( text )", 1, 1, Form::kFunction, length},
    {"Lower", "Lower ( text )", 1, 1, Form::kFunction, lower},
    {"Middle", "Middle ( text ; start ; numberOfCharacters )", 3, 3, Form::kFunction, middle},
    {"MiddleWords", "MiddleWords ( text ; startingWord ; numberOfWords )", 3, 3, Form::kFunction, middleWords},
    {"PatternCount", "PatternCount ( text ; searchString )", 2, 2, Form::kFunction, patternCount},
    {"Position", "Position ( text ; searchString ; start ; occurrence )", 4, 4, Form::kFunction, position},
    {"Proper", "Proper ( text )", 1, 1, Form::kFunction, proper},
    {"Quote", "Quote ( text )", 1, 1, Form::kFunction, quote},
    {"Replace", "Replace ( text ; start ; numberOfCharacters ; replacementText )", 4, 4, Form::kFunction, replace},
    {"Right", "Right ( text ; numberOfCharacters )", 2, 2, Form::kFunction, right},
    {"RightWords", "RightWords ( text ; numberOfWords )", 2, 2, Form::kFunction, rightWords},
    {"Substitute", "Substitute ( text ; searchString ; replaceString )", 3, -1, Form::kSubstitute, substitute},
    {"Trim", "Trim ( text )", 1, 1, Form::kFunction, trim},
    {"Upper", "Upper ( text )", 1, 1, Form::kFunction, upper},
    {"WordCount", "WordCount ( text )", 1, 1, Form::kFunction, wordCount},
};

}  // namespace

std::span<const Builtin> textFunctions() { return kFunctions; }

}  // namespace orlocal::host::calc
