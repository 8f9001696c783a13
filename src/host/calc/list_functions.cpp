#include <algorithm>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "host/calc/arguments.h"
#include "host/calc/builtins.h"
#include "host/calc/operators.h"
#include "host/calc/text_tools.h"
#include "host/fmwrapper/unicode.h"

namespace orlocal::host::calc {

namespace {

using Values = std::vector<std::u16string_view>;

Value list(CallContext&, Arguments a) {
  std::u16string result;
  bool first = true;
  for (const Value& value : a) {
    if (value.isEmpty() && value.isValid()) { continue; }
    if (!first) { result += kReturn; }
    first = false;
    result += value.asText();
  }
  return Value::ofText(std::move(result));
}

Value valueCount(CallContext&, Arguments a) {
  return Value::ofNumber(static_cast<std::int64_t>(valuesOf(a[0].asText()).size()));
}

Value getValue(CallContext&, Arguments a) {
  const Values values = valuesOf(a[0].asText());
  const std::size_t number = countAt(a, 1);
  return Value::ofText(number >= 1 && number <= values.size() ? values[number - 1] : std::u16string_view{});
}

/// A list whose last value ends with a return too; solutions append to it as it is.
template <class Range>
Value terminated(const Range& values) {
  std::u16string result;
  for (const auto& value : values) {
    result += value;
    result += kReturn;
  }
  return Value::ofText(std::move(result));
}

Value valueRange(const Values& values, std::size_t first, std::size_t count) {
  first = std::min(first, values.size());
  return terminated(std::span(values).subspan(first, std::min(count, values.size() - first)));
}

Value leftValues(CallContext&, Arguments a) { return valueRange(valuesOf(a[0].asText()), 0, countAt(a, 1)); }
Value rightValues(CallContext&, Arguments a) {
  const Values values = valuesOf(a[0].asText());
  const std::size_t count = std::min(countAt(a, 1), values.size());
  return valueRange(values, values.size() - count, count);
}
Value middleValues(CallContext&, Arguments a) {
  const Part part = partAt(a, 1, 2);
  return valueRange(valuesOf(a[0].asText()), part.first, part.count);
}

Value filterValues(CallContext&, Arguments a) {
  std::set<std::u16string> allowed;
  for (const std::u16string_view value : valuesOf(a[1].asText())) { allowed.insert(foldCase(value)); }
  Values kept;
  for (const std::u16string_view value : valuesOf(a[0].asText())) {
    if (allowed.contains(foldCase(value))) { kept.push_back(value); }
  }
  return terminated(kept);
}

/// Data types of UniqueValues and SortValues: 1 text, 2 number, 3 date, 4 time, 5 timestamp, as the native types are
/// numbered. Values that cannot be read so stay texts.
Value typedValue(std::u16string_view text, std::int32_t type) {
  Value value = Value::ofText(text);
  if (type < fmx::kNumber || type > fmx::kTimeStamp) { return value; }
  Value read = type == fmx::kNumber ? numberOf(value) : value;
  if (type != fmx::kNumber && !read.convertTo(static_cast<fmx::NativeType>(type))) { return value; }
  return read;
}

/// A value of a list as it is compared: what could be read as the wanted type, else its text without case, folded once.
struct Sortable {
  std::u16string_view text;
  std::optional<Value> value;
  std::u16string folded;
};

std::vector<Sortable> sortables(Arguments a, std::int32_t type) {
  std::vector<Sortable> result;
  for (const std::u16string_view text : valuesOf(a[0].asText())) {
    Value value = typedValue(text, type);
    if (value.type() == fmx::kText) {
      result.push_back({text, std::nullopt, foldCase(text)});
    } else {
      result.push_back({text, std::move(value), {}});
    }
  }
  return result;
}

bool before(const Sortable& left, const Sortable& right) {
  // Values that could not be read stand after those that could, so that the order is one.
  if (left.value.has_value() != right.value.has_value()) { return left.value.has_value(); }
  return left.value ? compareValues(*left.value, *right.value) < 0 : left.folded < right.folded;
}

Value sortValues(CallContext&, Arguments a) {
  const std::int32_t order = a.size() > 1 ? smallAt(a, 1) : 1;
  std::vector<Sortable> values = sortables(a, order < 0 ? -order : order);
  if (order < 0) {
    std::ranges::stable_sort(values, [](const Sortable& left, const Sortable& right) { return before(right, left); });
  } else {
    std::ranges::stable_sort(values, before);
  }
  Values texts;
  for (const Sortable& value : values) { texts.push_back(value.text); }
  return terminated(texts);
}

Value uniqueValues(CallContext&, Arguments a) {
  const std::vector<Sortable> values = sortables(a, a.size() > 1 ? smallAt(a, 1) : 1);
  const auto earlier = [](const Sortable* left, const Sortable* right) { return before(*left, *right); };
  std::set<const Sortable*, decltype(earlier)> seen(earlier);
  Values texts;
  for (const Sortable& value : values) {
    if (seen.insert(&value).second) { texts.push_back(value.text); }
  }
  return terminated(texts);
}

constexpr Builtin kFunctions[] = {
    {"FilterValues", "FilterValues ( textToFilter ; filterValues )", 2, 2, Form::kFunction, filterValues},
    {"GetValue", "GetValue ( listOfValues ; valueNumber )", 2, 2, Form::kFunction, getValue},
    {"LeftValues", "LeftValues ( text ; numberOfValues )", 2, 2, Form::kFunction, leftValues},
    {"List", "List ( value {; value...} )", 1, -1, Form::kFunction, list},
    {"MiddleValues", "MiddleValues ( text ; startingValue ; numberOfValues )", 3, 3, Form::kFunction, middleValues},
    {"RightValues", "RightValues ( text ; numberOfValues )", 2, 2, Form::kFunction, rightValues},
    {"SortValues", "SortValues ( values {; datatype} )", 1, 2, Form::kFunction, sortValues},
    {"UniqueValues", "UniqueValues ( values {; datatype} )", 1, 2, Form::kFunction, uniqueValues},
    {"ValueCount", "ValueCount ( text )", 1, 1, Form::kFunction, valueCount},
};

}  // namespace

std::span<const Builtin> listFunctions() { return kFunctions; }

}  // namespace orlocal::host::calc
