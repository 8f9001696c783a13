#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "host/fmwrapper/date_time.h"
#include "host/fmwrapper/export.h"
#include "host/fmwrapper/number.h"
#include "platform/host/fm_api.h"

namespace orlocal::host {

/// The language rules that a value was written with; only its kind matters here.
struct Locale {
  std::int32_t type = fmx::kLocaleSystem;
};

/// A container's contents. Our host has none, so it counts no streams.
struct Binary {};

/// A value of the host: a text, number, date, time, timestamp or boolean that converts to all the others as the host
/// converts. This is what an argument or result of a plug-in's function is.
///
/// The views that `as…` lend live in the value: each stays valid until the value changes or ends. They are made when
/// first asked for, so a value is for one thread at a time.
///
/// A value without contents is empty, whatever its type; its views are "", 0 and empty dates. A value that could not be
/// made (the date of "tomorrow", a division by zero) is the invalid value: type `kInvalid`, text "?".
class ORLOCAL_HOST_API Value {
 public:
  Value() noexcept = default;

  static Value ofText(std::u16string_view text);
  static Value ofText(std::u16string&& text);
  static Value ofText(const char16_t* text) { return ofText(std::u16string_view(text)); }
  static Value ofUtf8(std::string_view text);
  /// "Not a number" makes the invalid value.
  static Value ofNumber(const Number& number);
  /// The date part only; an empty one makes an empty value.
  static Value ofDate(const DateTime& date);
  static Value ofTime(const DateTime& time);
  static Value ofTimestamp(const DateTime& timestamp);
  static Value invalid();

  fmx::NativeType type() const noexcept { return m_type; }
  bool isEmpty() const noexcept;
  bool isValid() const noexcept { return m_type != fmx::kInvalid || !m_filled; }

  /// Numbers as the host writes them, dates and times in the system format, booleans as "1" and "0".
  const std::u16string& asText() const;
  /// Texts by Number::parse, dates in days, times and timestamps in seconds.
  const Number& asNumber() const;
  /// Texts as users type them, numbers as days, the date part of timestamps. Empty when there is no date in it; a time
  /// alone holds none.
  const DateTime& asDate() const;
  /// Texts, numbers as seconds, the time part of timestamps. A date alone is midnight.
  const DateTime& asTime() const;
  /// Texts, numbers as seconds since the epoch, dates at midnight.
  const DateTime& asTimestamp() const;
  /// Whether the number it converts to is other than zero.
  bool asBoolean() const;
  const Binary& asBinary() const noexcept { return m_binary; }
  const Locale& locale() const noexcept { return m_locale; }

  std::string utf8() const;

  /// Empties the value and leaves it with a type and its locale.
  void clear(fmx::NativeType type) noexcept;
  void setText(std::u16string_view text);
  void setNumber(const Number& number);
  void setBoolean(bool truth);
  void setDate(const DateTime& date);
  void setTime(const DateTime& time);
  void setTimestamp(const DateTime& timestamp);
  void setLocale(Locale locale) noexcept { m_locale = locale; }

  /// Makes the view of that type the value itself. What cannot be read as that type becomes the invalid value; an empty
  /// value stays empty. Types that hold no text (invalid, binary) change nothing. False when it became invalid.
  bool convertTo(fmx::NativeType type);

 private:
  enum View : std::uint8_t { kTextView = 1, kNumberView = 2, kDateView = 4, kTimeView = 8, kTimestampView = 16 };

  bool has(View view) const noexcept { return (m_views & view) != 0; }
  void become(fmx::NativeType type, View view, bool filled) noexcept;
  std::u16string makeText() const;
  Number makeNumber() const;
  DateTime makeDate() const;
  DateTime makeTime() const;
  DateTime makeTimestamp() const;

  fmx::NativeType m_type = fmx::kInvalid;
  bool m_filled = false;
  mutable std::uint8_t m_views = 0;  ///< which of the views below are made; the one of m_type always is when filled
  Locale m_locale;
  [[no_unique_address]] Binary m_binary;
  mutable std::u16string m_text;
  mutable Number m_number;
  mutable DateTime m_date;
  mutable DateTime m_time;
  mutable DateTime m_timestamp;
};

}  // namespace orlocal::host
