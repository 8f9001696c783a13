#pragma once

#include <string>
#include <string_view>
#include <vector>

// The text of a calendar object resource taken apart by its lines, so that what is to change can be changed and
// everything else stays as it came.
namespace orlocal::accounts {

/// A content line, unfolded, with the name of its property in capitals.
struct TextLine {
  std::string name;
  std::string text;

  friend bool operator==(const TextLine&, const TextLine&) = default;
};

/// An event, reminder or anything else between a BEGIN and its END.
struct TextComponent {
  std::string name;  ///< in capitals
  std::vector<TextLine> lines;
  std::vector<TextComponent> inner;

  /// The first line of that property; null when there is none.
  const TextLine* line(std::string_view property) const;
  friend bool operator==(const TextComponent&, const TextComponent&) = default;
};

/// The component in which everything stands ("VCALENDAR"); a text without one gets one. What is not closed is closed.
TextComponent takenApart(std::string_view text);
/// In folded lines.
std::string putTogether(const TextComponent& component);

}  // namespace orlocal::accounts
