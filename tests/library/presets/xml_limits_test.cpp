#include "library/presets/xml_limits.h"

#include <string>

#include <gtest/gtest.h>

namespace kelmora {
namespace {

std::string Times(int count, const std::string& text)
{
    std::string all;
    all.reserve(text.size() * static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        all += text;
    return all;
}

std::string Nested(int depth)
{
    return Times(depth, "<a>") + Times(depth, "</a>");
}

std::string WithAttributes(int count)
{
    std::string element = "<a";
    for (int i = 0; i < count; ++i)
        element += " n" + std::to_string(i) + "=\"v\"";
    return element + "/>";
}

TEST(XmlLimits, Depth_EndsAt64)
{
    EXPECT_TRUE(IsWithinXmlLimits(Nested(1)));
    EXPECT_TRUE(IsWithinXmlLimits(Nested(63)));
    EXPECT_TRUE(IsWithinXmlLimits(Nested(64)));
    EXPECT_FALSE(IsWithinXmlLimits(Nested(65)));
    EXPECT_FALSE(IsWithinXmlLimits(Nested(4000)));
    EXPECT_FALSE(IsWithinXmlLimits(Times(1000000, "<a>")));
    EXPECT_FALSE(IsWithinXmlLimits("text" + Times(65, " <_a x=1> ")));
    EXPECT_FALSE(IsWithinXmlLimits(Times(65, "<\xC3\xA9>")));
}

TEST(XmlLimits, ElementsBesideEachOther_AreNotNested)
{
    EXPECT_TRUE(IsWithinXmlLimits(Times(1000, "<a></a>")));
    EXPECT_TRUE(IsWithinXmlLimits(Times(1000, "<a/>")));
    EXPECT_TRUE(IsWithinXmlLimits(Times(1000, "<a x='1' />")));
    EXPECT_TRUE(IsWithinXmlLimits(Times(1000, "<a x=1/>")));
    EXPECT_TRUE(IsWithinXmlLimits(Times(63, "<a>") + Times(1000, "<b></b><b/>")));
    EXPECT_FALSE(IsWithinXmlLimits(Times(64, "<a>") + "<b/>"));
}

TEST(XmlLimits, EndTagsInAdvance_GiveNoCredit)
{
    EXPECT_FALSE(IsWithinXmlLimits(Times(100, "</a>") + Nested(65)));
}

TEST(XmlLimits, WhatStandsInQuotesCommentsAndData_IsNoElement)
{
    const std::string many = Times(100, "<a>");
    EXPECT_TRUE(IsWithinXmlLimits("<p x=\"" + many + "\"/>"));
    EXPECT_TRUE(IsWithinXmlLimits("<p x='" + many + "'/>"));
    EXPECT_TRUE(IsWithinXmlLimits("<!-- " + many + " -->"));
    EXPECT_TRUE(IsWithinXmlLimits("<![CDATA[" + many + "]]>"));
    EXPECT_TRUE(IsWithinXmlLimits("<?xml version=\"" + many + "\" ?>"));
}

// Each of these once hid an end tag, or showed one, to this check alone.
TEST(XmlLimits, EndTagsThatTheParserDoesNotSee_DoNotCount)
{
    for (const std::string& hidden : {
             std::string("<a x=\"</a>\">"), std::string("<a x='</a>'>"), std::string("<a><!-- </a> -->"),
             std::string("<a><!--></a>-->"), std::string("<a><![CDATA[</a>]]>"),
             std::string("<a><?xml version=\"</a>\"?>"), std::string("<a><?XML version='></a>' ?>"),
             std::string("<a x=\"'\" y='</a>'>"), std::string("<a><?xml foo=\"x version=\"></a>\" ?>"),
             std::string("<a><?xml-stylesheet x version='></a>'?>"),
             std::string("<a><?xml version-2.0:x_=\"></a>\"?>"),
             std::string("<a><?xml version=1/ standalone='></a>'?>"),
             std::string("<a><?xml VERSION='></a>'?>"),
             std::string("<a><?xml \xEF\xBB\xBFversion='></a>'?>"), // a mark that may count as a blank
             std::string("<a><?xml x\xA0version='></a>'?>"),        // as may this
         })
        EXPECT_FALSE(IsWithinXmlLimits(Times(65, hidden))) << hidden;
}

TEST(XmlLimits, ElementsThatTheParserDoesSee_Count)
{
    const std::string many = Nested(65);
    for (const std::string& prefix : {
             std::string("<? \" ?>"),       // quotes mean nothing in other instructions,
             std::string("<!DOCTYPE \" >"), // nor in a document type,
             std::string("\""),             // nor in text
             std::string("<1 ' >"),
             std::string("<!- -- >"),
             std::string("<![cdata[ >"),
             std::string("<?xml ?version=\"?>"),
             std::string("<?xml x\" version='1' y\" ?>"),
             std::string("<?xml-stylesheet href='?>"),
             std::string("<?xml version=x/version=\"?>"),
             std::string("<?xml xversion='>"),
             std::string("<?xml version=\"1.0\" standalone='no' >"),
             std::string("</ \">"),
         })
        EXPECT_FALSE(IsWithinXmlLimits(prefix + many + "\" ' -->]]>")) << prefix;
}

TEST(XmlLimits, Attributes_EndAt64)
{
    EXPECT_TRUE(IsWithinXmlLimits(WithAttributes(0)));
    EXPECT_TRUE(IsWithinXmlLimits(WithAttributes(64)));
    EXPECT_FALSE(IsWithinXmlLimits(WithAttributes(65)));
    EXPECT_FALSE(IsWithinXmlLimits(WithAttributes(20000)));
    EXPECT_TRUE(IsWithinXmlLimits("<a x='" + std::string(1000, '=') + "'/>"));
    EXPECT_TRUE(IsWithinXmlLimits(Times(100, WithAttributes(64))));
}

TEST(XmlLimits, Items_EndAt500000)
{
    EXPECT_TRUE(IsWithinXmlLimits(Times(500000, "<a/>")));
    EXPECT_FALSE(IsWithinXmlLimits(Times(500001, "<a/>")));
    EXPECT_TRUE(IsWithinXmlLimits(Times(250000, "<a></a>"))); // an end tag counts as well
    EXPECT_FALSE(IsWithinXmlLimits(Times(250000, "<a></a>") + "<a/>"));
    EXPECT_TRUE(IsWithinXmlLimits(Times(125000, "<a x='1' y='2' z='3'/>")));
    EXPECT_FALSE(IsWithinXmlLimits(Times(125000, "<a x='1' y='2' z='3'/>") + "<a/>"));
    EXPECT_FALSE(IsWithinXmlLimits(Times(500001, "<!---->")));
    EXPECT_FALSE(IsWithinXmlLimits(Times(500001, "<!x>")));
    EXPECT_FALSE(IsWithinXmlLimits(Times(500001, "<![CDATA[]]>")));
}

TEST(XmlLimits, Declaration_InItsUsualForms_IsRead)
{
    for (const char* declaration : {
             "<?xml version=\"1.0\" standalone=\"no\" ?>",
             "<?xml version=\"1.0\"  standalone='no' >",
             "<?xml version = '1.0' encoding= \"UTF-8\"?>",
             "<?xml\n\tversion='1.0'\n?>",
             "<?xml?>",
             "<?xml >",
             "<?xml-stylesheet type=\"text/xsl\" href='a.xsl'?>",
             "<?xml version=\"1.0\" unknown other=\"1 > 0\"?>",
             "<?xml version=1.0?>",
             "<?xml version=1.0/encoding=x versions='1' ?>",
         })
        EXPECT_TRUE(IsWithinXmlLimits(std::string(declaration) + "<a/>")) << declaration;
}

TEST(XmlLimits, TextThatBreaksOff_IsTheParsersMatter)
{
    const std::string whole = "<?xml version='1'?><!-- c --><![CDATA[d]]><a b=\"c\">t</a>";
    for (std::size_t length = 0; length < whole.size(); ++length) {
        const std::string cut = whole.substr(0, length);
        EXPECT_TRUE(IsWithinXmlLimits(cut)) << cut;
    }
    // A name of the declaration without a value: nothing behind it is read.
    EXPECT_TRUE(IsWithinXmlLimits("<?xml version ?>" + Nested(65)));
    EXPECT_FALSE(IsWithinXmlLimits("<?xml version\xEF\xBB\xBF='1' ?>" + Nested(65)));
}

TEST(XmlLimits, WhatStandsBehindAZero_DoesNotCount)
{
    EXPECT_TRUE(IsWithinXmlLimits("<a/>" + std::string(1, '\0') + Nested(65)));
}

} // namespace
} // namespace kelmora
