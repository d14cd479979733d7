#include "host/web/HTMLUtils.h"

#include <gtest/gtest.h>

#include "tests/host/core/PrintText.h"

namespace {

using HTMLUtils::screenDefault;

TEST(HTMLUtils, EscapesWhatMeansSomethingInMarkup) {
    EXPECT_EQ(HTMLUtils::escape(L"a & b < c > d \" e ' f"), L"a &amp; b &lt; c &gt; d &quot; e &#39; f");
    EXPECT_EQ(HTMLUtils::escape(L"&amp;"), L"&amp;amp;");
    EXPECT_EQ(HTMLUtils::escape(L"plain \u00e9"), L"plain \u00e9");
    EXPECT_TRUE(HTMLUtils::escape(WideString()).isEmpty());
}

TEST(HTMLUtils, ALinkHasItsTextAndItsAddress) {
    EXPECT_EQ(HTMLUtils::makeLink(L"Terms of Service", L"https://h/legal/terms"),
              L"<a href=\"https://h/legal/terms\">Terms of Service</a>");
}

TEST(HTMLUtils, NeitherTextNorAddressEndsTheLink) {
    EXPECT_EQ(HTMLUtils::makeLink(L"</a><script>", L"\"><script>x='&"),
              L"<a href=\"&quot;&gt;&lt;script&gt;x=&#39;&amp;\">&lt;/a&gt;&lt;script&gt;</a>");
}

TEST(HTMLUtils, AParagraphWithTheScreensOwnLookHasNoStyle) {
    EXPECT_EQ(HTMLUtils::addParagraphTags(L"a <b>bold</b> text", screenDefault, screenDefault),
              L"<p>a <b>bold</b> text</p>");
    EXPECT_EQ(screenDefault, 4294967295U);
}

TEST(HTMLUtils, AParagraphHasTheWidthAndTheColourThatAreGiven) {
    EXPECT_EQ(HTMLUtils::addParagraphTags(L"t", 300, screenDefault), L"<p style=\"width:300px;\">t</p>");
    EXPECT_EQ(HTMLUtils::addParagraphTags(L"t", screenDefault, 0xff), L"<p style=\"color:#0000ff;\">t</p>");
    EXPECT_EQ(HTMLUtils::addParagraphTags(L"t", 0, 0xffa0b0c0),
              L"<p style=\"width:0px;color:#a0b0c0;\">t</p>");
}

TEST(HTMLUtils, AMinorNotePassesRichTextOn) {
    EXPECT_EQ(HTMLUtils::incidentalText(L"see <a href=\"x\">y</a>"),
              L"<small>see <a href=\"x\">y</a></small>");
}

} // namespace
