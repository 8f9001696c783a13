#include "store/contacts.h"

#include <string>

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

}  // namespace
}  // namespace orlocal::store
