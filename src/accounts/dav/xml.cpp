#include "accounts/dav/xml.h"

#include <algorithm>
#include <array>
#include <limits>
#include <memory>

#include <libxml/xmlreader.h>

#include "base/text.h"
#include "base/utf.h"

namespace orlocal::accounts {
namespace {

struct KnownSpace {
  XmlSpace space;
  std::string_view prefix;  ///< in what we write
  std::string_view uri;
};
constexpr std::array<KnownSpace, 4> kSpaces{{
    {XmlSpace::kDav, "D", "DAV:"},
    {XmlSpace::kCalDav, "C", "urn:ietf:params:xml:ns:caldav"},
    {XmlSpace::kCalendarServer, "S", "http://calendarserver.org/ns/"},
    {XmlSpace::kApple, "A", "http://apple.com/ns/ical/"},
}};

// Answers nest about ten deep; privileges and reports are the deepest.
constexpr std::size_t kMostDepth = 64;

std::string_view viewOf(const xmlChar* text) {
  return text == nullptr ? std::string_view() : reinterpret_cast<const char*>(text);
}

XmlSpace spaceOf(std::string_view uri) {
  const auto* known =
      std::find_if(kSpaces.begin(), kSpaces.end(), [&](const KnownSpace& one) { return one.uri == uri; });
  return known == kSpaces.end() ? XmlSpace::kOther : known->space;
}

XmlElement elementAt(xmlTextReader* reader) {
  XmlElement element;
  element.space = spaceOf(viewOf(xmlTextReaderConstNamespaceUri(reader)));
  element.local = viewOf(xmlTextReaderConstLocalName(reader));
  while (xmlTextReaderMoveToNextAttribute(reader) == 1) {
    if (xmlTextReaderIsNamespaceDecl(reader) == 1) { continue; }
    element.attributes.emplace_back(viewOf(xmlTextReaderConstLocalName(reader)),
                                    viewOf(xmlTextReaderConstValue(reader)));
  }
  xmlTextReaderMoveToElement(reader);
  return element;
}

/// The element that the reader stands on, with all that is in it.
class TreeReader {
 public:
  /// `take` gets the children of the root; without it they stay in the tree.
  TreeReader(xmlTextReader* reader, const std::function<void(XmlElement)>& take) : m_reader(reader), m_take(take) {}

  std::optional<XmlElement> read() {
    int more = 0;
    while ((more = xmlTextReaderRead(m_reader)) == 1) {
      if (!take()) { return std::nullopt; }
    }
    if (more != 0 || !m_open.empty()) { return std::nullopt; }
    return std::move(m_root);
  }

 private:
  bool take() {
    switch (xmlTextReaderNodeType(m_reader)) {
      case XML_READER_TYPE_ELEMENT: {
        XmlElement element = elementAt(m_reader);
        const bool ends = xmlTextReaderIsEmptyElement(m_reader) == 1;
        m_open.push_back(std::move(element));
        if (ends) { endElement(); }
        return m_open.size() <= kMostDepth;
      }
      case XML_READER_TYPE_END_ELEMENT:
        endElement();
        return true;
      case XML_READER_TYPE_TEXT:
      case XML_READER_TYPE_CDATA:
      case XML_READER_TYPE_WHITESPACE:
      case XML_READER_TYPE_SIGNIFICANT_WHITESPACE:
        if (!m_open.empty()) { m_open.back().text += viewOf(xmlTextReaderConstValue(m_reader)); }
        return true;
      case XML_READER_TYPE_DOCUMENT_TYPE:
      case XML_READER_TYPE_ENTITY:
      case XML_READER_TYPE_ENTITY_REFERENCE:
        return false;
      default:
        return true;
    }
  }

  void endElement() {
    XmlElement element = std::move(m_open.back());
    m_open.pop_back();
    if (m_open.empty()) {
      m_root = std::move(element);
    } else if (m_open.size() == 1 && m_take) {
      m_take(std::move(element));
    } else {
      m_open.back().children.push_back(std::move(element));
    }
  }

  xmlTextReader* m_reader;
  const std::function<void(XmlElement)>& m_take;
  std::vector<XmlElement> m_open;
  std::optional<XmlElement> m_root;
};

bool isXmlCharacter(char32_t c) {
  return c == '\t' || c == '\n' || c == '\r' || (c >= 0x20 && c != 0xFFFE && c != 0xFFFF);
}

std::string escaped(std::string_view text) {
  std::string result;
  for (std::size_t at = 0; at < text.size();) {
    const char32_t c = nextCodePoint(text, at);
    switch (c) {
      case '&':
        result += "&amp;";
        break;
      case '<':
        result += "&lt;";
        break;
      case '>':
        result += "&gt;";
        break;
      case '"':
        result += "&quot;";
        break;
      case '\r':
        result += "&#13;";
        break;  // a bare one would be read as a line feed
      default:
        if (isXmlCharacter(c)) { append(result, c); }
    }
  }
  return result;
}

std::string qualified(XmlName name) {
  const auto* known =
      std::find_if(kSpaces.begin(), kSpaces.end(), [&](const KnownSpace& one) { return one.space == name.space; });
  return known == kSpaces.end() ? std::string(name.local) : std::string(known->prefix) + ":" + std::string(name.local);
}

}  // namespace

const XmlElement* XmlElement::child(XmlName name) const {
  const auto found =
      std::find_if(children.begin(), children.end(), [&](const XmlElement& one) { return one.is(name); });
  return found == children.end() ? nullptr : &*found;
}

std::string_view XmlElement::word() const { return trimmed(std::string_view(text), " \t\r\n"); }

std::optional<std::string_view> XmlElement::attribute(std::string_view name) const {
  for (const auto& [known, value] : attributes) {
    if (known == name) { return value; }
  }
  return std::nullopt;
}

std::optional<XmlElement> readXml(std::string_view document) { return readXml(document, nullptr); }

std::optional<XmlElement> readXml(std::string_view document, const std::function<void(XmlElement)>& take) {
  if (document.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) { return std::nullopt; }
  // HUGE lifts limits on the length of one text, which an item with attachments passes, and on depth and entities,
  // which are ours.
  constexpr int kOptions = XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_HUGE;
  const std::unique_ptr<xmlTextReader, decltype(&xmlFreeTextReader)> reader(
      xmlReaderForMemory(document.data(), static_cast<int>(document.size()), nullptr, nullptr, kOptions),
      &xmlFreeTextReader);
  return reader ? TreeReader(reader.get(), take).read() : std::nullopt;
}

XmlWriter::XmlWriter(XmlName root)
    : m_text(R"(<?xml version="1.0" encoding="utf-8"?>)"
             "\n") {
  open(root);
  for (const KnownSpace& known : kSpaces) {
    m_text.append(" xmlns:").append(known.prefix).append("=\"").append(known.uri).append("\"");
  }
  close();
}

void XmlWriter::open(XmlName name) {
  m_open.push_back(qualified(name));
  m_text.append("<").append(m_open.back());
}
void XmlWriter::close() { m_text += '>'; }

XmlWriter& XmlWriter::begin(XmlName name) {
  open(name);
  close();
  return *this;
}

XmlWriter& XmlWriter::begin(XmlName name, std::string_view attribute, std::string_view value) {
  open(name);
  m_text.append(" ").append(attribute).append("=\"").append(escaped(value)).append("\"");
  close();
  return *this;
}

XmlWriter& XmlWriter::end() {
  m_text.append("</").append(m_open.back()).append(">");
  m_open.pop_back();
  return *this;
}

XmlWriter& XmlWriter::text(std::string_view text) {
  m_text += escaped(text);
  return *this;
}

std::string XmlWriter::take() {
  while (!m_open.empty()) { end(); }
  return std::move(m_text);
}

}  // namespace orlocal::accounts
