#include "host/fmwrapper/value.h"

#include <algorithm>
#include <utility>

#include "host/fmwrapper/unicode.h"

namespace orlocal::host {

Value Value::ofText(std::u16string_view text) { return ofText(std::u16string(text)); }

Value Value::ofText(std::u16string&& text) {
  Value value;
  value.m_text = std::move(text);
  value.become(fmx::kText, kTextView, !value.m_text.empty());
  return value;
}

Value Value::ofUtf8(std::string_view text) { return ofText(toUtf16(text)); }

Value Value::ofNumber(const Number& number) {
  Value value;
  value.setNumber(number);
  return value;
}

Value Value::ofDate(const DateTime& date) {
  Value value;
  value.setDate(date);
  return value;
}

Value Value::ofTime(const DateTime& time) {
  Value value;
  value.setTime(time);
  return value;
}

Value Value::ofTimestamp(const DateTime& timestamp) {
  Value value;
  value.setTimestamp(timestamp);
  return value;
}

Value Value::invalid() {
  Value value;
  value.m_text = u"?";
  value.become(fmx::kInvalid, kTextView, true);
  return value;
}

void Value::become(fmx::NativeType type, View view, bool filled) noexcept {
  m_type = type;
  m_views = view;
  m_filled = filled;
}

bool Value::isEmpty() const noexcept { return !m_filled; }

void Value::clear(fmx::NativeType type) noexcept {
  m_type = type;
  m_views = 0;
  m_filled = false;
}

void Value::setText(std::u16string_view text) {
  m_text.assign(text);
  become(fmx::kText, kTextView, !m_text.empty());
}

void Value::setNumber(const Number& number) {
  if (!number.isNumber()) {
    m_text = u"?";
    return become(fmx::kInvalid, kTextView, true);
  }
  m_number = number;
  become(fmx::kNumber, kNumberView, true);
}

void Value::setBoolean(bool truth) {
  m_number = Number(truth ? 1 : 0);
  become(fmx::kBoolean, kNumberView, true);
}

void Value::setDate(const DateTime& date) {
  m_date = date.dateOnly();
  become(fmx::kDate, kDateView, m_date.hasDate());
}

void Value::setTime(const DateTime& time) {
  m_time = time.timeOnly();
  become(fmx::kTime, kTimeView, m_time.hasTime());
}

void Value::setTimestamp(const DateTime& timestamp) {
  m_timestamp = timestamp;
  if (timestamp.hasDate() && !timestamp.hasTime()) { m_timestamp.setTimeOf(DateTime::fromMicros(0)); }
  become(fmx::kTimeStamp, kTimestampView, !m_timestamp.isEmpty());
}

const std::u16string& Value::asText() const {
  if (!has(kTextView)) {
    m_text = makeText();
    m_views |= kTextView;
  }
  return m_text;
}

const Number& Value::asNumber() const {
  if (!has(kNumberView)) {
    m_number = makeNumber();
    m_views |= kNumberView;
  }
  return m_number;
}

const DateTime& Value::asDate() const {
  if (!has(kDateView)) {
    m_date = makeDate();
    m_views |= kDateView;
  }
  return m_date;
}

const DateTime& Value::asTime() const {
  if (!has(kTimeView)) {
    m_time = makeTime();
    m_views |= kTimeView;
  }
  return m_time;
}

const DateTime& Value::asTimestamp() const {
  if (!has(kTimestampView)) {
    m_timestamp = makeTimestamp();
    m_views |= kTimestampView;
  }
  return m_timestamp;
}

bool Value::asBoolean() const {
  const Number& number = asNumber();
  return number.isNumber() && !number.isZero();
}

std::string Value::utf8() const { return toUtf8(asText()); }

std::u16string Value::makeText() const {
  if (!m_filled) { return {}; }
  switch (m_type) {
    case fmx::kNumber:
    case fmx::kBoolean:
      return m_number.text();
    case fmx::kDate:
      return m_date.dateText();
    case fmx::kTime:
      return m_time.timeText();
    case fmx::kTimeStamp:
      return m_timestamp.timestampText();
    default:
      return {};
  }
}

Number Value::makeNumber() const {
  if (!m_filled) { return {}; }
  switch (m_type) {
    case fmx::kText:
      return Number::parse(m_text);
    case fmx::kDate:
      return m_date.days();
    case fmx::kTime:
      return m_time.secondsSinceMidnight();
    case fmx::kTimeStamp:
      return m_timestamp.secondsSinceEpoch();
    default:
      return Number::notANumber();
  }
}

DateTime Value::makeDate() const {
  if (!m_filled) { return {}; }
  switch (m_type) {
    case fmx::kText:
      return DateTime::parseDate(m_text).value_or(DateTime()).dateOnly();
    case fmx::kNumber:
    case fmx::kBoolean:
      return DateTime::fromDays(m_number).value_or(DateTime());
    case fmx::kTimeStamp:
      return m_timestamp.dateOnly();
    default:
      return {};
  }
}

DateTime Value::makeTime() const {
  if (!m_filled) { return {}; }
  switch (m_type) {
    case fmx::kText:
      return DateTime::parseTime(m_text).value_or(DateTime());
    case fmx::kNumber:
    case fmx::kBoolean:
      return DateTime::fromSeconds(m_number).value_or(DateTime());
    case fmx::kDate:
      return DateTime::fromMicros(0);
    case fmx::kTimeStamp:
      return m_timestamp.timeOnly();
    default:
      return {};
  }
}

DateTime Value::makeTimestamp() const {
  if (!m_filled) { return {}; }
  switch (m_type) {
    case fmx::kText:
      return DateTime::parseTimestamp(m_text).value_or(DateTime());
    case fmx::kNumber:
    case fmx::kBoolean:
    case fmx::kTime:
      return DateTime::fromSecondsSinceEpoch(asNumber()).value_or(DateTime());
    case fmx::kDate:
      return DateTime::combine(m_date, DateTime::fromMicros(0)).value_or(DateTime());
    default:
      return {};
  }
}

bool Value::convertTo(fmx::NativeType type) {
  if (type == m_type || type == fmx::kInvalid || type == fmx::kBinary) { return isValid(); }
  if (isEmpty()) {
    clear(type);
    return true;
  }
  if (m_type == fmx::kInvalid) { return false; }
  switch (type) {
    case fmx::kText:
      setText(std::u16string(asText()));
      return true;
    case fmx::kNumber:
      // A text without a digit holds no number, not the number 0.
      if (m_type == fmx::kText &&
          std::none_of(m_text.begin(), m_text.end(), [](char16_t u) { return u >= u'0' && u <= u'9'; })) {
        clear(type);
        return true;
      }
      setNumber(Number(asNumber()));
      return isValid();
    case fmx::kBoolean:
      setBoolean(asBoolean());
      return true;
    case fmx::kDate:
      setDate(DateTime(asDate()));
      break;
    case fmx::kTime:
      setTime(DateTime(asTime()));
      break;
    default:
      setTimestamp(DateTime(asTimestamp()));
      break;
  }
  if (m_filled) { return true; }
  m_text = u"?";
  become(fmx::kInvalid, kTextView, true);
  return false;
}

}  // namespace orlocal::host
