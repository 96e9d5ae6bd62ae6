// Objects as arguments and results of public methods.

#include <zantrel/xml.h>

#include <gtest/gtest.h>

#include <utility>

namespace Zantrel {
namespace {

TEST(PublicXmlTest, AResultIsAnObjectOfItsOwn) {
  Xml xml;
  ASSERT_TRUE(xml.LoadXml(u"<a><b>\u00e4</b></a>"));
  const auto child = xml.GetChildWithTag("b");
  ASSERT_NE(child, nullptr);
  EXPECT_EQ(child->get_Content(), "\xC3\xA4");
  EXPECT_EQ(child->get_TreeId(), xml.get_TreeId());
  EXPECT_FALSE(child->get_LastMethodSuccess());  // nothing was called yet
  EXPECT_EQ(xml.GetChild(7), nullptr);
  EXPECT_FALSE(xml.get_LastMethodSuccess());
}

TEST(PublicXmlTest, AnObjectThatWasMovedFromIsRefusedAsAnArgument) {
  Xml xml, source;
  const Xml taken = std::move(source);
  EXPECT_FALSE(xml.AddChildTree(source));
  EXPECT_NE(xml.get_LastErrorText().find("An object given to the method was moved from."),
            std::string::npos);
  EXPECT_EQ(xml.SearchForTag(source, "a"), nullptr);
  EXPECT_EQ(xml.get_NumChildren(), 0);
}

TEST(PublicXmlTest, AnObjectCanBeItsOwnArgument) {
  Xml xml;
  EXPECT_TRUE(xml.Copy(xml));
  EXPECT_FALSE(xml.AddChildTree(xml));
}

}  // namespace
}  // namespace Zantrel
