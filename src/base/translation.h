#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include <fmt/format.h>

namespace orlocal {

/// Messages in another language. They are found by the English ones that stand in the code.
class Catalogue {
 public:
  virtual ~Catalogue() = default;

  /// What stands for `english`; `english` itself where nothing does. Any thread; the text lives as long as the
  /// catalogue.
  virtual const char* message(const char* english) const = 0;
  /// The same of a message that depends on a number: `one` for 1 and `many` otherwise, in English.
  virtual const char* message(const char* one, const char* many, std::size_t count) const = 0;
};

/// From now on messages are those of `catalogue`, which is borrowed for good; null is English. Before other threads
/// start. Nobody does so in the plug-in, so what stands below it speaks English there.
void useCatalogue(const Catalogue* catalogue);

/// A text that stands in a table of constants: it is gathered for translators here, and translated by `translated`
/// where it is shown.
constexpr const char* translatable(const char* english) { return english; }
std::string translated(const char* english);
inline std::string translated(const std::string& english) { return translated(english.c_str()); }

/// `english` in the user's language, put together with the arguments. Where the placeholders of a translation don't fit
/// them, English is taken.
template <class... Args>
std::string tr(fmt::format_string<Args...> english, Args&&... args);

/// The same for what depends on a number; `count` chooses, and is shown only where it is among the arguments.
template <class... Args>
std::string trn(fmt::format_string<Args...> one, fmt::format_string<Args...> many, std::size_t count, Args&&... args);

namespace translation {
/// What `tr` does, for a format in a table of `translatable` ones, whose arguments nobody checks.
std::string put(const char* english, fmt::format_args args);
std::string put(const char* one, const char* many, std::size_t count, fmt::format_args args);
}  // namespace translation

// Formats are literals, which end in a null character.
template <class... Args>
std::string tr(fmt::format_string<Args...> english, Args&&... args) {
  return translation::put(fmt::string_view(english).data(), fmt::make_format_args(args...));
}

template <class... Args>
std::string trn(fmt::format_string<Args...> one, fmt::format_string<Args...> many, std::size_t count, Args&&... args) {
  return translation::put(fmt::string_view(one).data(), fmt::string_view(many).data(), count,
                          fmt::make_format_args(args...));
}

}  // namespace orlocal
