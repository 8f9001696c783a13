#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orlocal::accounts {

/// The namespaces that mean something to us; servers choose prefixes as they like, and change them half-way.
enum class XmlSpace : std::uint8_t {
  kDav,             ///< "DAV:"
  kCalDav,          ///< "urn:ietf:params:xml:ns:caldav"
  kCalendarServer,  ///< "http://calendarserver.org/ns/": getctag
  kApple,           ///< "http://apple.com/ns/ical/": calendar-color, calendar-order
  kOther,
};

struct XmlName {
  XmlSpace space = XmlSpace::kOther;
  std::string_view local;

  friend bool operator==(const XmlName&, const XmlName&) = default;
};

/// An element as it was read.
struct XmlElement {
  XmlSpace space = XmlSpace::kOther;
  std::string local;
  std::string text;  ///< its own, pieces joined
  std::vector<std::pair<std::string, std::string>> attributes;
  std::vector<XmlElement> children;

  bool is(XmlName name) const { return space == name.space && local == name.local; }
  /// The first child of that name; none when there is none.
  const XmlElement* child(XmlName name) const;
  /// The text without blanks and line ends around it.
  std::string_view word() const;
  std::optional<std::string_view> attribute(std::string_view local) const;
};

/// Reads a document with its namespaces. None for what is not well formed, has a document type (nobody needs one, and
/// entities are a way to make much of little), or is nested deeper than any answer of a calendar server.
std::optional<XmlElement> readXml(std::string_view document);

/// Writes a document; every text is escaped, and characters that XML has no way to write are left out. Elements end in
/// the order in which they began.
class XmlWriter {
 public:
  explicit XmlWriter(XmlName root);

  XmlWriter& begin(XmlName name);
  XmlWriter& begin(XmlName name, std::string_view attribute, std::string_view value);
  XmlWriter& end();
  XmlWriter& text(std::string_view text);
  XmlWriter& empty(XmlName name) { return begin(name).end(); }
  XmlWriter& element(XmlName name, std::string_view words) { return begin(name).text(words).end(); }
  /// The document; ends what has begun.
  std::string take();

 private:
  void open(XmlName name);
  void close();

  std::string m_text;
  std::vector<std::string> m_open;
};

}  // namespace orlocal::accounts
