#include "accounts/dav/xml.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "accounts/dav/names.h"

namespace orlocal::accounts {
namespace {

TEST(ReadingXml, GoesByNamespaceAndNotByPrefix) {
  const auto root = readXml(R"(<d:multistatus xmlns:d="DAV:"><d:prop>
      <calendar xmlns="urn:ietf:params:xml:ns:caldav"><d:href xmlns:d="urn:ietf:params:xml:ns:caldav">x</d:href></calendar>
      <d:href>y</d:href></d:prop></d:multistatus>)");
  ASSERT_TRUE(root);
  EXPECT_TRUE(root->is(dav::kMultistatus));
  const XmlElement* prop = root->child(dav::kProp);
  ASSERT_NE(prop, nullptr);
  const XmlElement* calendar = prop->child(dav::kCalendar);
  ASSERT_NE(calendar, nullptr);
  EXPECT_EQ(calendar->child(dav::kHref), nullptr) << "there the prefix means another namespace";
  EXPECT_NE(calendar->child({XmlSpace::kCalDav, "href"}), nullptr);
  EXPECT_EQ(prop->child(dav::kHref)->word(), "y");
}

TEST(ReadingXml, DoesNotTakeNamesWithoutNamespaceForOurs) {
  const auto root = readXml("<multistatus><response/></multistatus>");
  ASSERT_TRUE(root);
  EXPECT_FALSE(root->is(dav::kMultistatus));
}

TEST(ReadingXml, JoinsTextsAndResolvesWhatIsEscaped) {
  const auto root = readXml("<a> R&amp;D <!-- no --><![CDATA[<b>&amp;]]>&#x20AC;&#13;</a>");
  ASSERT_TRUE(root);
  EXPECT_EQ(root->text, " R&D <b>&amp;\xE2\x82\xAC\r");
  EXPECT_EQ(root->word(), "R&D <b>&amp;\xE2\x82\xAC");
}

TEST(ReadingXml, KeepsAttributesButForNamespaces) {
  const auto root = readXml(R"(<C:comp xmlns:C="urn:ietf:params:xml:ns:caldav" name="VEVENT"/>)");
  ASSERT_TRUE(root);
  EXPECT_EQ(root->attribute("name"), "VEVENT");
  EXPECT_EQ(root->attribute("C"), std::nullopt);
  EXPECT_EQ(root->attributes.size(), 1U);
}

TEST(ReadingXml, HandsOutTheChildrenOfTheRootOneByOneAndKeepsNone) {
  std::vector<std::string> taken;
  const auto root = readXml("<a n=\"1\">x<b><c>1</c></b><b/>y</a>", [&](XmlElement child) {
    taken.push_back(child.local + std::to_string(child.children.size()));
  });
  ASSERT_TRUE(root);
  EXPECT_EQ(root->attribute("n"), "1");
  EXPECT_EQ(root->text, "xy");
  EXPECT_TRUE(root->children.empty());
  EXPECT_EQ(taken, (std::vector<std::string>{"b1", "b0"}));
}

TEST(ReadingXml, GivesNoRootWhenWhatFollowsTheChildrenIsBroken) {
  EXPECT_FALSE(readXml("<a><b/>", [](XmlElement) {}));
}

TEST(ReadingXml, TakesOtherEncodingsThanUtf8) {
  const auto root = readXml("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><a>gr\xFCn</a>");
  ASSERT_TRUE(root);
  EXPECT_EQ(root->text, "gr\xC3\xBCn");
}

TEST(ReadingXml, RefusesWhatIsNotWellFormed) {
  for (const char* document :
       {"", "no", "<a>", "<a></b>", "<a><b></a></b>", "<a/><b/>", "<a>&nbsp;</a>", "<x:a/>x", "<a>\x01</a>"}) {
    EXPECT_FALSE(readXml(document)) << document;
  }
}

TEST(ReadingXml, RefusesDocumentTypesWithAllTheirEntities) {
  EXPECT_FALSE(readXml("<!DOCTYPE a [<!ENTITY e \"x\">]><a>&e;</a>"));
  EXPECT_FALSE(readXml("<!DOCTYPE a SYSTEM \"http://127.0.0.1/a.dtd\"><a/>"));
  EXPECT_FALSE(readXml("<!DOCTYPE html><html/>"));
}

TEST(ReadingXml, RefusesWhatIsNestedWithoutEnd) {
  const auto nested = [](int depth) {
    std::string document;
    for (int i = 0; i < depth; ++i) { document += "<a>"; }
    for (int i = 0; i < depth; ++i) { document += "</a>"; }
    return document;
  };
  EXPECT_TRUE(readXml(nested(60)));
  EXPECT_FALSE(readXml(nested(70)));
  EXPECT_FALSE(readXml(nested(100'000)));
}

TEST(ReadingXml, TakesTextsLongerThanTenMegabytes) {
  const std::string text(11'000'000, 'x');
  const auto root = readXml("<a>" + text + "</a>");
  ASSERT_TRUE(root);
  EXPECT_EQ(root->text.size(), text.size());
}

TEST(WritingXml, ComesBackAsItWas) {
  XmlWriter writer(dav::kPropertyUpdate);
  const std::string text = "R&D <\"'> ]]> \xE2\x82\xAC\r\n\t.";
  writer.element(dav::kDisplayName, text).begin(dav::kComp, "name", text.substr(0, 8)).end();
  const auto root = readXml(writer.take());
  ASSERT_TRUE(root);
  EXPECT_EQ(root->child(dav::kDisplayName)->text, text);
  EXPECT_EQ(root->child(dav::kComp)->attribute("name"), text.substr(0, 8));
}

TEST(WritingXml, LeavesOutWhatXmlHasNoWayToWrite) {
  XmlWriter writer(dav::kProp);
  writer.text(
      std::string("a\0b\x01\x1B"
                  "c\xEF\xBF\xBF"
                  "d",
                  10));
  const auto root = readXml(writer.take());
  ASSERT_TRUE(root);
  EXPECT_EQ(root->text, "abcd");
}

}  // namespace
}  // namespace orlocal::accounts
