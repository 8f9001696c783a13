#include "store/contacts.h"

#include <algorithm>
#include <iterator>
#include <optional>

#include <fmt/format.h>

#include "base/hash.h"
#include "base/text.h"
#include "base/translation.h"
#include "base/try.h"
#include "base/whole_input.h"
#include "store/edits/item_writer.h"
#include "store/icalendar/content_line.h"
#include "store/time/zone_names.h"

namespace orlocal::store {

namespace {

bool hasWord(const ContentLine& line, std::string_view name, std::string_view word) {
  std::string_view rest = line.parameters;
  for (ContentParameter parameter; nextParameter(rest, parameter);) {
    // vCard 2.1 writes the value alone: "ADR;HOME;PREF:".
    if (parameter.text.find('=') == std::string_view::npos && equalsNoCase(parameter.name, word)) { return true; }
    if (!equalsNoCase(parameter.name, name)) { continue; }
    for (std::string_view value : splitUnescaped(parameter.value, ',')) {
      if (equalsNoCase(value, word)) { return true; }
    }
  }
  return false;
}

bool isPreferred(const ContentLine& line) {
  return hasWord(line, "TYPE", "PREF") || line.parameter("PREF").has_value();
}

bool isQuotedPrintable(const ContentLine& line) { return hasWord(line, "ENCODING", "QUOTED-PRINTABLE"); }

std::string fromQuotedPrintable(std::string_view value) {
  const auto digit = [](char c) {
    return c >= '0' && c <= '9'   ? c - '0'
           : c >= 'A' && c <= 'F' ? c - 'A' + 10
           : c >= 'a' && c <= 'f' ? c - 'a' + 10
                                  : -1;
  };
  std::string out;
  for (std::size_t i = 0; i < value.size(); ++i) {
    const bool coded = value[i] == '=' && i + 2 < value.size() && digit(value[i + 1]) >= 0 && digit(value[i + 2]) >= 0;
    if (coded) {
      out += static_cast<char>(digit(value[i + 1]) * 16 + digit(value[i + 2]));
      i += 2;
    } else {
      out += value[i];
    }
  }
  return isUtf8(out) ? out : fromWindows1252(out);
}

/// Joins the soft line breaks of quoted-printable values (vCard 2.1), which know no folding.
std::string withoutSoftBreaks(std::string_view bytes) {
  std::string out;
  bool coded = false;
  while (!bytes.empty()) {
    const std::size_t end = std::min(bytes.find('\n'), bytes.size() - 1) + 1;
    std::string_view line = bytes.substr(0, end);
    bytes.remove_prefix(end);
    const std::string_view head = line.substr(0, line.find(':'));
    for (std::size_t at = 0; !coded && at < head.size(); ++at) {
      coded = equalsNoCase(head.substr(at, 16), "QUOTED-PRINTABLE");
    }
    const std::string_view text = line.substr(0, line.find_last_not_of("\r\n") + 1);
    coded = coded && text.ends_with('=');
    out.append(coded ? text.substr(0, text.size() - 1) : line);
  }
  return out;
}

/// The lines of a text, without line breaks of another kind and without empty ends.
std::string tidy(std::string text) {
  std::erase(text, '\r');
  return std::string(trimmed(std::string_view(text), "\n "));
}

class CardReader {
 public:
  explicit CardReader(std::string_view bytes) : m_lines(bytes) {}

  ReadContacts read() {
    for (ContentLine line; m_lines.next(line);) {
      const std::string value = isQuotedPrintable(line) ? fromQuotedPrintable(line.value) : std::string(line.value);
      std::string_view name = line.name;
      if (const std::size_t dot = name.find('.'); dot != std::string_view::npos) {
        name.remove_prefix(dot + 1);  // "item1.EMAIL"
      }
      if (equalsNoCase(name, "BEGIN") && equalsNoCase(value, "VCARD")) {
        m_card = Contact();
        m_birthday.reset();
        m_line = line.line;
        m_open = true;
        m_addressRank = 0;
        m_structuredName.clear();
      } else if (m_open && equalsNoCase(name, "END")) {
        finish();
      } else if (m_open) {
        property(name, line, value);
      }
    }
    if (m_open) {
      m_made.problems.refuse(m_line, m_card.identifier, tr("the card is not closed: its END:VCARD is missing"));
    }
    return std::move(m_made);
  }

 private:
  void property(std::string_view name, const ContentLine& line, const std::string& value) {
    if (equalsNoCase(name, "FN") && m_card.name.empty()) { m_card.name = tidy(unescapeText(value)); }
    if (equalsNoCase(name, "N")) { m_structuredName = nameOf(value); }
    if (equalsNoCase(name, "ORG") && m_organization.empty()) {
      m_organization = tidy(unescapeText(splitUnescaped(value, ';').front()));
    }
    if (equalsNoCase(name, "UID")) { m_card.identifier = tidy(unescapeText(value)); }
    if (equalsNoCase(name, "BDAY")) { birthday(line, value); }
    if (equalsNoCase(name, "EMAIL")) { email(tidy(unescapeText(value))); }
    if (equalsNoCase(name, "ADR")) {
      const auto label = line.parameter("LABEL");
      address(label && !label->empty() ? tidy(unescapeText(*label)) : addressOf(value), isPreferred(line) ? 4 : 2);
    }
    if (equalsNoCase(name, "LABEL")) { address(tidy(unescapeText(value)), isPreferred(line) ? 3 : 1); }
  }
  void birthday(const ContentLine& line, const std::string& value) {
    m_birthday = parseBirthday(tidy(value));
    // How some address books say in vCard 3.0 that the year is none.
    const auto omitted = line.parameter("X-APPLE-OMIT-YEAR");
    if (m_birthday && m_birthday->year && omitted == std::to_string(*m_birthday->year)) { m_birthday->year.reset(); }
  }
  void email(std::string address) {
    constexpr std::string_view kMailto = "mailto:";
    if (equalsNoCase(std::string_view(address).substr(0, kMailto.size()), kMailto)) {
      address.erase(0, kMailto.size());
    }
    if (!address.empty()) { m_card.emails.push_back(std::move(address)); }
  }
  void address(std::string text, int rank) {
    if (text.empty() || rank <= m_addressRank) { return; }
    m_card.address = std::move(text);
    m_addressRank = rank;
  }
  /// Family; given; additional; prefixes; suffixes.
  static std::string nameOf(std::string_view value) {
    const auto parts = splitUnescaped(value, ';');
    std::string name;
    for (const std::size_t part : {3U, 1U, 2U, 0U, 4U}) {
      if (part >= parts.size()) { continue; }
      const std::string text = tidy(unescapeText(parts[part]));
      if (!text.empty()) { name += (name.empty() ? "" : " ") + text; }
    }
    return name;
  }
  /// Post-office box; extended; street; city; region; postal code; country: as lines, the way an envelope has them.
  static std::string addressOf(std::string_view value) {
    std::vector<std::string> parts;
    for (std::string_view part : splitUnescaped(value, ';')) { parts.push_back(tidy(unescapeText(part))); }
    parts.resize(7);
    std::string city = parts[5];
    for (const std::string& part : {parts[3], parts[4]}) {
      if (!part.empty()) { city += (city.empty() ? "" : " ") + part; }
    }
    std::string text;
    for (const std::string& line : {parts[0], parts[1], parts[2], city, parts[6]}) {
      if (!line.empty()) { text += (text.empty() ? "" : "\n") + line; }
    }
    return text;
  }
  void finish() {
    m_open = false;
    if (m_card.name.empty()) { m_card.name = !m_structuredName.empty() ? m_structuredName : m_organization; }
    m_organization.clear();
    if (m_card.name.empty() && m_card.emails.empty() && !m_card.address) {
      m_made.problems.refuse(m_line, m_card.identifier,
                             tr("the card has no name, e-mail or address; it was not imported"));
      return;
    }
    if (m_card.identifier.empty()) {
      m_card.identifier = fmt::format(
          "content-{:016x}", contentHash(m_card.name + "\n" + (m_card.emails.empty() ? "" : m_card.emails.front())));
    }
    m_made.contacts.push_back(m_card);
    m_made.birthdays.push_back(m_birthday);
  }

  ContentLines m_lines;
  ReadContacts m_made;
  Contact m_card;
  std::optional<Birthday> m_birthday;
  std::string m_structuredName, m_organization;
  int m_line = 0;
  int m_addressRank = 0;  ///< of what the address came from
  bool m_open = false;
};

}  // namespace

Result<ReadContacts> readContacts(std::string bytes, const std::string& name) {
  if (bytes.starts_with("\xEF\xBB\xBF")) { bytes.erase(0, 3); }
  bytes = withoutSoftBreaks(bytes);
  ReadContacts made = CardReader(bytes).read();
  if (made.contacts.empty() && made.problems.refused.empty()) {
    return failure(ErrorCode::kInvalid, tr("{} is no vCard file: there is no card in it", name));
  }
  return made;
}

Result<ImportReport> importContactsFile(CalendarStore& store, const std::filesystem::path& file) {
  ORLOCAL_TRY(std::string bytes, readWholeFile(file));
  return importContactsText(store, std::move(bytes), file.string());
}

Result<ImportReport> importContactsText(CalendarStore& store, std::string text, const std::string& name) {
  ORLOCAL_TRY(ReadContacts read, readContacts(std::move(text), name));
  ORLOCAL_TRY(const auto writer, store.startWriting());
  ImportReport report;
  BirthdayCalendar birthdays(*writer);
  for (std::size_t i = 0; i < read.contacts.size(); ++i) {
    Contact& contact = read.contacts[i];
    ORLOCAL_TRY(PutOutcome outcome, writer->putContact(contact));
    const auto birthday = birthdays.put(contact, read.birthdays[i]);
    if (birthday) {
      if (outcome == PutOutcome::kUnchanged && *birthday != PutOutcome::kUnchanged) { outcome = PutOutcome::kUpdated; }
    } else if (birthday.error().code == ErrorCode::kInvalid || birthday.error().code == ErrorCode::kRefused ||
               birthday.error().code == ErrorCode::kTooLarge) {
      read.problems.refuse(0, contact.identifier, "the birthday was not imported: " + birthday.error().message);
    } else {
      return failure(birthday.error());
    }
    report.added += outcome == PutOutcome::kNew ? 1U : 0U;
    report.updated += outcome == PutOutcome::kUpdated ? 1U : 0U;
    report.unchanged += outcome == PutOutcome::kUnchanged ? 1U : 0U;
  }
  ORLOCAL_CHECK(writer->commit());
  report.problems = std::move(read.problems.refused);
  report.refused = report.problems.size();
  return report;
}

}  // namespace orlocal::store
