#include "store/contacts.h"

#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "store/store_fixture.h"

namespace orlocal::store {
namespace {

Contact card(const std::string& lines) {
  const auto read = readContacts("BEGIN:VCARD\n" + lines + "END:VCARD\n", "x.vcf").value();
  return read.contacts.empty() ? Contact() : read.contacts.front();
}

TEST(Cards, HaveNameAddressesAndIdentifier) {
  const Contact contact = card(
      "VERSION:4.0\nUID:urn:uuid:1\nFN:Anna Berger\nEMAIL:a@x\nitem1.EMAIL;TYPE=home:mailto:b@x\nADR:;Apt 4;1 "
      "Road;Town;ST;12345;Land\n");
  EXPECT_EQ(contact.identifier, "urn:uuid:1");
  EXPECT_EQ(contact.name, "Anna Berger");
  EXPECT_EQ(contact.emails, (std::vector<std::string>{"a@x", "b@x"}));
  EXPECT_EQ(contact.address, "Apt 4\n1 Road\n12345 Town ST\nLand");
}

TEST(Cards, TakeTheStructuredNameOrTheOrganizationForWantOfAnother) {
  EXPECT_EQ(card("N:Berger;Anna;Maria;Dr.;PhD\n").name, "Dr. Anna Maria Berger PhD");
  EXPECT_EQ(card("ORG:Example Ltd;Sales\nEMAIL:a@x\n").name, "Example Ltd");
}

TEST(Cards, PreferTheAddressThatSaysSo) {
  EXPECT_EQ(card("FN:A\nADR:;;First;;;;\nADR;TYPE=home,pref:;;Second;;;;\n").address, "Second");
  EXPECT_EQ(card("FN:A\nADR;HOME:;;First;;;;\nADR;WORK;PREF:;;Second;;;;\n").address, "Second");
  EXPECT_EQ(card("FN:A\nADR:;;First;;;;\nADR;PREF=1:;;Second;;;;\n").address, "Second");
  EXPECT_EQ(card("FN:A\nLABEL:As\\nwritten\n").address, "As\nwritten");
  EXPECT_EQ(card("FN:A\nADR;LABEL=\"As^nwritten\":;;X;;;;\n").address, "As\nwritten");
}

TEST(Cards, MayBeQuotedPrintableWithSoftLineBreaks) {
  EXPECT_EQ(
      card("VERSION:2.1\nFN;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:J=C3=B6rg=\n M=C3=BC=\nller\nEMAIL:a@x\n").name,
      "Jörg Müller");
}

TEST(Cards, WithoutAUidAreNamedByNameAndEmail) {
  EXPECT_EQ(card("FN:A\nEMAIL:a@x\nADR:;;One;;;;\n").identifier, card("FN:A\nEMAIL:a@x\nADR:;;Two;;;;\n").identifier);
  EXPECT_NE(card("FN:A\nEMAIL:a@x\n").identifier, card("FN:A\nEMAIL:b@x\n").identifier);
}

TEST(Cards, WithNothingInThemAreReported) {
  const auto read =
      readContacts("BEGIN:VCARD\nVERSION:3.0\nEND:VCARD\nBEGIN:VCARD\nFN:B\nEND:VCARD\nBEGIN:VCARD\nFN:C\n", "x.vcf")
          .value();
  EXPECT_EQ(read.contacts.size(), 1U);
  ASSERT_EQ(read.problems.refused.size(), 2U);
  EXPECT_EQ(read.problems.refused[0].line, 1);
  EXPECT_EQ(read.problems.refused[1].message, "the card is not closed: its END:VCARD is missing");
}

TEST(Cards, AreMissedInAFileWithoutAny) {
  EXPECT_EQ(readContacts("hello\n", "x.vcf").error().message, "x.vcf is no vCard file: there is no card in it");
}

class CardsOfAFile : public StoreTest {};

TEST_F(CardsOfAFile, AreRefusedWithASentenceWhenItCannotBeRead) {
  // A folder opens like a file, and reading it fails as a broken disk does.
  const auto report = importContactsFile(*store, folder);
  ASSERT_FALSE(report);
  EXPECT_EQ(report.error().code, ErrorCode::kIo);
  EXPECT_NE(report.error().message.find(folder.string() + " cannot be read"), std::string::npos);
}

std::optional<Birthday> birthdayIn(const std::string& line) {
  return readContacts("BEGIN:VCARD\nFN:Ann\n" + line + "\nEND:VCARD\n", "x.vcf").value().birthdays.front();
}

TEST(BirthdayOfACard, IsReadAsEachVersionWritesIt) {
  const Birthday known{1985, 4, 12}, yearless{std::nullopt, 4, 12};
  EXPECT_EQ(birthdayIn("BDAY:1985-04-12"), known);
  EXPECT_EQ(birthdayIn("BDAY:19850412"), known);
  EXPECT_EQ(birthdayIn("BDAY;VALUE=date-time:1985-04-12T00:00:00Z"), known);
  EXPECT_EQ(birthdayIn("item1.BDAY;VALUE=date:19850412"), known);
  EXPECT_EQ(birthdayIn("BDAY:--0412"), yearless);
  EXPECT_EQ(birthdayIn("BDAY:--04-12"), yearless);
  EXPECT_EQ(birthdayIn("BDAY;X-APPLE-OMIT-YEAR=1604:1604-04-12"), yearless);
  EXPECT_EQ(birthdayIn("BDAY;X-APPLE-OMIT-YEAR=1985:1985-04-12"), yearless);
  EXPECT_EQ(birthdayIn("BDAY:--0229"), (Birthday{std::nullopt, 2, 29}));
}

TEST(BirthdayOfACard, IsNoneWhenTheCardNamesNoDay) {
  for (const char* value :
       {"1985", "1985-04", "---12", "circa 1800", "", "19850431", "1985-02-29", "--1301", "--0400"}) {
    EXPECT_EQ(birthdayIn(std::string("BDAY:") + value), std::nullopt) << value;
  }
}

class BirthdaysOfAStore : public StoreTest {
 protected:
  ImportReport imported(const std::string& lines) {
    const auto cards = folder / "cards.vcf";
    std::ofstream(cards) << "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:ann\r\n" << lines << "END:VCARD\r\n";
    return importContactsFile(*store, cards).value();
  }
  std::vector<Calendar> birthdayCalendars() {
    auto calendars = store->calendars(CalendarKind::kEvents).value();
    std::erase_if(calendars, [](const Calendar& each) { return each.type != Source::Type::kBirthday; });
    return calendars;
  }
  std::vector<Item> birthdays() {
    std::vector<Item> items;
    for (const Calendar& calendar : birthdayCalendars()) {
      EXPECT_TRUE(store->forEachItem(calendar.id, [&](const Item& main, const std::vector<Item>&) {
        items.push_back(main);
        return Status();
      }));
    }
    return items;
  }
  std::vector<std::string> daysOf(const std::string& from, const std::string& to) {
    const EventQuery query{at(from), at(to), {birthdayCalendars().front().id}};
    std::vector<std::string> days;
    const auto found = store->occurrences(query).value();
    for (std::size_t i = 0; i < found.size(); ++i) { days.push_back(shown(found[i].start).substr(0, 10)); }
    return days;
  }
};

TEST_F(BirthdaysOfAStore, AreYearlyEventsInAReadOnlyCalendar) {
  EXPECT_EQ(imported("FN:Ann Lee\r\nBDAY:1985-04-12\r\n").added, 1U);
  ASSERT_EQ(birthdayCalendars().size(), 1U);
  EXPECT_EQ(birthdayCalendars().front().title, "Birthdays");
  EXPECT_TRUE(birthdayCalendars().front().readOnly);
  ASSERT_EQ(birthdays().size(), 1U);
  EXPECT_EQ(birthdays().front().title, "Ann Lee’s birthday");
  EXPECT_TRUE(birthdays().front().allDay());
  EXPECT_EQ(daysOf("2026-01-01 00:00", "2028-01-01 00:00"), (std::vector<std::string>{"2026-04-12", "2027-04-12"}));
}

TEST_F(BirthdaysOfAStore, OfALeapDayComeEveryYear) {
  imported("FN:Ann\r\nBDAY:--0229\r\n");
  EXPECT_EQ(daysOf("2027-01-01 00:00", "2029-01-01 00:00"), (std::vector<std::string>{"2027-02-28", "2028-02-29"}));
}

TEST_F(BirthdaysOfAStore, MakeNoCalendarWithoutAny) {
  imported("FN:Ann\r\n");
  EXPECT_TRUE(birthdayCalendars().empty());
}

TEST_F(BirthdaysOfAStore, ChangeAndGoWithTheCard) {
  imported("FN:Ann\r\nBDAY:1985-04-12\r\n");
  const std::string identifier = birthdays().front().identifier;
  EXPECT_EQ(imported("FN:Ann\r\nBDAY:1985-04-12\r\n").unchanged, 1U);
  EXPECT_EQ(imported("FN:Ann\r\nBDAY:1985-04-13\r\n").updated, 1U);
  ASSERT_EQ(birthdays().size(), 1U);
  EXPECT_EQ(birthdays().front().identifier, identifier);
  EXPECT_EQ(birthdays().front().start->local, LocalTime(1985, 4, 13));
  imported("FN:Ann Lee\r\nBDAY:1985-04-13\r\n");
  EXPECT_EQ(birthdays().front().title, "Ann Lee’s birthday");
  EXPECT_EQ(imported("FN:Ann Lee\r\n").updated, 1U);
  EXPECT_TRUE(birthdays().empty());
}

}  // namespace
}  // namespace orlocal::store
