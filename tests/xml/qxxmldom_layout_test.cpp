// SPDX-License-Identifier: see LICENSE

#include "qxxmldom.h"

#include "qxserializeadaptermemory.h"
#include "qxtestrows.h"
#include "qxtestsupport.h"

#include <string>

namespace
{

void read(qxXmlDom& document, std::string text)
{
    qxSerializeAdapterMemory adapter(text.data(), static_cast<unsigned int>(text.size()));
    document.read(&adapter);
    ASSERT_FALSE(document.hasError()) << document.getError().getString();
}

std::string write(qxXmlDom& document)
{
    std::string room(4096, '\0');
    qxSerializeAdapterMemory adapter(room.data(), static_cast<unsigned int>(room.size()));
    document.write(&adapter);
    return room.substr(0, adapter.getCurrentPos());
}

TEST(qxXmlDom, keepsTheDocumentType)
{
    const std::string type = "<!DOCTYPE r [<!ENTITY x 'a>b'><!-- ]> -->]>";
    qxXmlDom document;
    document.setEncoding("none");
    read(document, "<!--c-->" + type + "<r>&x;</r>");
    EXPECT_EQ(document.getDocumentType().getString(), type);
    document.setEncoding("none");
    EXPECT_EQ(write(document), "\n<!--c-->\n" + type + "\n<r>&x;</r>");
    EXPECT_EQ(write(document), "\n<!--c-->\n" + type + "\n<r>&x;</r>");

    const qxRefPointer<qxXmlDom> copy = document.clone();
    EXPECT_EQ(copy->getDocumentType().getString(), type);
    read(document, "<r/>");
    EXPECT_TRUE(document.getDocumentType().isEmpty());
}

TEST(qxXmlDom, leavesOutADocumentTypeThatIsTooLong)
{
    std::string type = "<!DOCTYPE r [";
    for (int i = 0; i < 1000; ++i)
        type += "<!ENTITY e" + std::to_string(i) + " '" + std::string(60, 'x') + "'>";
    type += "]>";
    qxXmlDom document;
    const MessageRecorder recorder;
    read(document, type + "<r/>");
    EXPECT_TRUE(document.getDocumentType().isEmpty());
    EXPECT_EQ(recorder.texts(),
              std::vector<std::string>{"A document type of more than 65535 bytes is not kept"});
}

TEST(qxXmlDom, indentsAroundMixedContentOnly)
{
    const auto format = [](const std::string& text) {
        qxXmlDom document;
        document.setSkipWhiteSpaceCharData(false);
        document.setKeepMixedContent(true);
        read(document, text);
        document.setEncoding("none");
        const std::string result = write(document);
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
    read(document, "<r>t</r>");
    document.findItem("r")->addChild(new qxXmlCharData("\x01"));
    EXPECT_THROW(write(document), qxParserException);
    EXPECT_FALSE(document.isPlainOutput());
}

} // namespace
