// SPDX-License-Identifier: see LICENSE

#include "qxxmldom.h"

#include "qxtestsupport.h"
#include "qxxmltesttree.h"

namespace
{

TEST(qxXmlDom, keepsTheDocumentType)
{
    const std::string type = "<!DOCTYPE r [<!ENTITY x 'a>b'><!-- ]> -->]>";
    qxXmlDom document;
    readText(document, "<!--c-->" + type + "<r>&x;</r>");
    EXPECT_EQ(document.getDocumentType().getString(), type);
    document.setEncoding("none");
    EXPECT_EQ(written(document), "\n<!--c-->\n" + type + "\n<r>&x;</r>");
    EXPECT_EQ(written(document), "\n<!--c-->\n" + type + "\n<r>&x;</r>");

    const qxRefPointer<qxXmlDom> copy = document.clone();
    EXPECT_EQ(copy->getDocumentType().getString(), type);
    readText(document, "<r/>");
    EXPECT_TRUE(document.getDocumentType().isEmpty());
}

TEST(qxXmlDom, indentsAroundMixedContentOnly)
{
    const auto format = [](const std::string& text) {
        qxXmlDom document;
        document.setSkipWhiteSpaceCharData(false);
        document.setKeepMixedContent(true);
        readText(document, text);
        document.setEncoding("none");
        const std::string result = written(document);
        EXPECT_FALSE(document.isPlainOutput());
        return result;
    };
    expectRows(format, "<r><a><b/></a></r> => \n<r>\n\t<a>\n\t\t<b/>\n\t</a>\n</r>",
               "<r><p>t<b><i/></b><i/></p><p/></r> => \n<r>\n\t<p>t<b><i/></b><i/></p>\n\t<p/>\n</r>",
               "<r><p><![CDATA[c]]><!--d--></p></r> => \n<r>\n\t<p><![CDATA[c]]><!--d--></p>\n</r>",
               "<r><p>&x;<b/></p></r> => \n<r>\n\t<p>&x;<b/></p>\n</r>",
               "<r> <b><c/></b> </r> => \n<r> <b><c/></b> </r>");
}

TEST(qxXmlDom, plainOutputDoesNotOutlastARefusedText)
{
    qxXmlDom document;
    document.setKeepMixedContent(true);
    readText(document, "<r>t</r>");
    document.findItem("r")->addChild(new qxXmlCharData("\x01"));
    EXPECT_THROW(written(document), qxParserException);
    EXPECT_FALSE(document.isPlainOutput());
}

} // namespace
