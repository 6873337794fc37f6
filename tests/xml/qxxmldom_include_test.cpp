// SPDX-License-Identifier: see LICENSE

#include "qxserializeadapterfile.h"
#include "qxxmldom.h"

#include "qxtestfolder.h"
#include "qxtestsupport.h"
#include "qxxmltesttree.h"

#include <cstdlib>

namespace
{

/// A folder of documents.
class qxXmlDomInclude : public testing::Test
{
protected:
    ~qxXmlDomInclude() noexcept override {}

    std::string readFile(qxXmlDom& document, const std::string& file)
    {
        qxSerializeAdapterFile adapter(folder.name(file).c_str());
        document.read(&adapter);
        return document.getError().getString();
    }

    /// The tree of a file, or the error.
    std::string treeOfFile(const std::string& file)
    {
        qxXmlDom document;
        const std::string error = readFile(document, file);
        return error.empty() ? dump(document) : error;
    }

    std::string urlOf(const std::string& file) const { return "file:" + folder.name(file); }

    TestFolder folder;
};

TEST_F(qxXmlDomInclude, itemsTakeThePlaceOfTheInstruction)
{
    folder.write("a.xml", "<a>t<?include  sub/b.xml ?>u</a>");
    folder.write("sub/b.xml", "<?xml version='1.0'?><!--x--><b>v<?include c.xml?></b>");
    folder.write("sub/c.xml", "<c k='1'/>");
    EXPECT_EQ(treeOfFile("a.xml"), "(a(\"t\" !--x-- b(\"v\" c k=\"1\") \"u\"))");
}

TEST_F(qxXmlDomInclude, includedDocumentsAreReadWithTheSameSwitches)
{
    folder.write("a.xml", "<a><?include b.xml?></a>");
    folder.write("b.xml", "<b> x&amp;<!--c--></b>");
    qxXmlDom document;
    document.setSkipWhiteSpaceCharData(false);
    document.setMergeStandardReferences(false);
    document.disableNotifyItemType(QX_XML_COMMENT);
    ASSERT_EQ(readFile(document, "a.xml"), "");
    EXPECT_EQ(dump(document), "(a(b(\" x\" &amp;)))");
}

TEST_F(qxXmlDomInclude, areInstructionsWhenNotWanted)
{
    folder.write("a.xml", "<a><?include b.xml?></a>");
    folder.write("b.xml", "<b/>");
    qxXmlDom document;
    document.setReadIncludedXml(false);
    ASSERT_EQ(readFile(document, "a.xml"), "");
    EXPECT_EQ(dump(document), "(a(?include b.xml))");
}

TEST_F(qxXmlDomInclude, areWrittenAsTheInstructionOrInline)
{
    folder.write("a.xml", "<a><?include b.xml?><z/><?include c.xml?></a>");
    folder.write("b.xml", "<!--x--><b/><!--y-->");
    folder.write("c.xml", "<c/>");
    qxXmlDom document;
    ASSERT_EQ(readFile(document, "a.xml"), "");

    EXPECT_EQ(writtenPlain(document), "<a><?include b.xml?><z/><?include c.xml?></a>");
    const qxRefPointer<qxXmlDom> copy(document.clone());
    copy->addItem("a", copy->findItem("a/z")); // to the end
    EXPECT_EQ(writtenPlain(*copy), "<a><?include b.xml?><?include c.xml?><z/></a>");
    document.setWriteIncludedXml(true);
    EXPECT_EQ(writtenPlain(document), "<a><!--x--><b/><!--y--><z/><c/></a>");
}

TEST_F(qxXmlDomInclude, anItemThatLeavesIsIncludedNoMore)
{
    folder.write("a.xml", "<a><?include b.xml?><z/></a>");
    folder.write("b.xml", "<!--x--><b/>");
    qxXmlDom document;
    ASSERT_EQ(readFile(document, "a.xml"), "");

    document.addItem("a/z", document.findItem("a/b"));
    EXPECT_EQ(writtenPlain(document), "<a><?include b.xml?><z><b/></z></a>");
    document.findItem("a")->removeChild(document.findItem("a/<comment>"));
    EXPECT_EQ(writtenPlain(document), "<a><z><b/></z></a>");
}

TEST_F(qxXmlDomInclude, aCircleLeavesTheInstruction)
{
    folder.write("a.xml", "<a><?include b.xml?></a>");
    folder.write("b.xml", "<b><?include a.xml?><?include b.xml?></b>");
    MessageRecorder messages;

    EXPECT_EQ(treeOfFile("a.xml"), "(a(b(?include a.xml ?include b.xml)))");

    EXPECT_EQ(messages.texts(),
              (std::vector<std::string>{"Can not include '" + urlOf("a.xml") + "', which includes itself",
                                        "Can not include '" + urlOf("b.xml") + "', which includes itself"}));
}

TEST_F(qxXmlDomInclude, whatCanNotBeReadLeavesTheInstruction)
{
    folder.write("a.xml", "<a><?include b.xml?><?include none.xml?><?include mem:16,16?></a>");
    folder.write("b.xml", "<b><c></b>");
    MessageRecorder messages;

    EXPECT_EQ(treeOfFile("a.xml"), "(a(?include b.xml ?include none.xml ?include mem:16,16))");

    const std::vector<std::string> texts = messages.texts();
    ASSERT_EQ(texts.size(), 4U);
    EXPECT_EQ(texts[0], "Expected end tag 'c' but got 'b' at (Line:1,Col:9)");
    EXPECT_EQ(texts[1], "Can not include '" + urlOf("b.xml") + "', which is malformed");
    EXPECT_NE(texts[2].find("none.xml"), std::string::npos);
    EXPECT_EQ(texts[3],
              "Can not include 'mem:16,16': a document must not look into the memory of its reader");
}

TEST_F(qxXmlDomInclude, depthIsBounded)
{
    for (int i = 0; i < 40; ++i) {
        folder.write("d" + std::to_string(i) + ".xml",
                     "<d><?include d" + std::to_string(i + 1) + ".xml?></d>");
    }
    MessageRecorder messages;
    qxXmlDom document;
    ASSERT_EQ(readFile(document, "d0.xml"), "");

    EXPECT_EQ(document.findItems("//d").entries(), 33U); // the first, and 32 inside each other
    EXPECT_EQ(messages.texts(), (std::vector<std::string>{"Can not include '" + urlOf("d33.xml") +
                                                          "': more than 32 documents include each other"}));
}

TEST_F(qxXmlDomInclude, theNumberOfDocumentsIsBounded)
{
    // Ten documents, each of which includes the next one ten times: ten billion, if nobody stopped it.
    for (int i = 0; i < 10; ++i) {
        std::string text = "<d>";
        for (int k = 0; k < 10; ++k) text += "<?include d" + std::to_string(i + 1) + ".xml?>";
        folder.write("d" + std::to_string(i) + ".xml", text + "</d>");
    }
    folder.write("d10.xml", "<d/>");
    MessageRecorder messages;
    qxXmlDom document;
    ASSERT_EQ(readFile(document, "d0.xml"), "");

    EXPECT_EQ(document.findItems("//d").entries(), 1001U);
    ASSERT_EQ(messages.texts().size(), 1U);
    EXPECT_NE(messages.texts()[0].find("more than 1000 documents are included"), std::string::npos);

    messages.clear();
    ASSERT_EQ(readFile(document, "d9.xml"), ""); // the next read counts anew
    EXPECT_EQ(document.findItems("//d").entries(), 11U);
    EXPECT_TRUE(messages.texts().empty());
}

TEST_F(qxXmlDomInclude, keysInTheUrlAreUserKeys)
{
    folder.write("a.xml", "<a><?include $(QX_TEST_FOLDER)/b.xml?></a>");
    folder.write("sub/b.xml", "<b/>");
    setenv("QX_TEST_FOLDER", "sub", 1);
    EXPECT_EQ(treeOfFile("a.xml"), "(a(b))");
    unsetenv("QX_TEST_FOLDER");
}

} // namespace
