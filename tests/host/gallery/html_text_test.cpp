#include "host/gallery/html_text.h"

#include <gtest/gtest.h>

namespace kelmora::host {
namespace {

TEST(HtmlText, Letters_StayAsTheyAre)
{
    EXPECT_EQ(HtmlText(""), "");
    EXPECT_EQ(HtmlText("Air Brush, 50 %"), "Air Brush, 50 %");
    EXPECT_EQ(HtmlText("\xC3\xA4"), "\xC3\xA4");
}

TEST(HtmlText, WhatHtmlReads_IsWrittenOut)
{
    EXPECT_EQ(HtmlText("Ebb && Flow"), "Ebb &amp;&amp; Flow");
    EXPECT_EQ(HtmlText("<b>\"it's\"</b>"), "&lt;b&gt;&quot;it&#39;s&quot;&lt;/b&gt;");
}

} // namespace
} // namespace kelmora::host
