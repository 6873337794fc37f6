// SPDX-License-Identifier: see LICENSE

#include "qxserializeadapterfile.h"
#include "qxxmldom.h"

#include "qxtestfolder.h"
#include "qxtestkeys.h"
#include "qxtestsupport.h"
#include "qxxmltesttree.h"

namespace
{

/// A folder of documents and one that is read.
class qxXmlDomInclude : public testing::Test
{
protected:
    ~qxXmlDomInclude() noexcept override {}

    /// Reads a file; returns the tree, or the error.
    std::string read(const std::string& file)
    {
        qxSerializeAdapterFile adapter(folder.name(file).c_str());
        document.read(&adapter);
        return document.hasError() ? document.getError().getString() : dump(document);
    }

    std::string urlOf(const std::string& file) const { return "file:" + folder.name(file); }

    TestFolder folder;
    qxXmlDom document;
    MessageRecorder messages;
};

TEST_F(qxXmlDomInclude, itemsTakeThePlaceOfTheInstruction)
{
    folder.write("a.xml", "<a>t<?include  sub/b.xml ?>u</a>");
    folder.write("sub/b.xml", "<?xml version='1.0'?><!--x--><b>v<?include c.xml?></b>");
    folder.write("sub/c.xml", "<c k='1'/>");
    EXPECT_EQ(read("a.xml"), "(a(\"t\" !--x-- b(\"v\" c k=\"1\") \"u\"))");
}

TEST_F(qxXmlDomInclude, includedDocumentsAreReadWithTheSameSwitches)
{
    folder.write("a.xml", "<a><?include b.xml?></a>");
    folder.write("b.xml", "<b> x&amp;<!--c--></b>");
    document.setSkipWhiteSpaceCharData(false);
    document.setMergeStandardReferences(false);
    document.disableNotifyItemType(QX_XML_COMMENT);
    EXPECT_EQ(read("a.xml"), "(a(b(\" x\" &amp;)))");
    document.setReadIncludedXml(false);
    EXPECT_EQ(read("a.xml"), "(a(?include b.xml))");
}

TEST_F(qxXmlDomInclude, functionsAreThoseOfTheDocumentAround)
{
    class Document : public qxXmlDom
    {
    public:
        qxString onFunction(const qxString& argument, unsigned int level) override
        {
            return qxString::str("%d:", level) + argument;
        }
    } around;
    folder.write("a.xml", "<a>function:x<?include b.xml?></a>");
    folder.write("b.xml", "<b k='function:y'><?include c.xml?></b>");
    folder.write("c.xml", "<c>function:z</c>");
    qxSerializeAdapterFile adapter(folder.name("a.xml").c_str());
    around.read(&adapter);
    EXPECT_EQ(dump(around), "(a(\"1:x\" b k=\"2:y\"(c(\"3:z\"))))");
}

TEST_F(qxXmlDomInclude, areWrittenAsTheInstructionOrInline)
{
    folder.write("a.xml", "<a><?include b.xml?><z/><?include c.xml?></a>");
    folder.write("b.xml", "<!--x--><b/><!--y-->");
    folder.write("c.xml", "<c/>");
    EXPECT_EQ(read("a.xml"), "(a(!--x-- b !--y-- z c))");

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
    EXPECT_EQ(read("a.xml"), "(a(!--x-- b z))");

    document.addItem("a/z", document.findItem("a/b"));
    EXPECT_EQ(writtenPlain(document), "<a><?include b.xml?><z><b/></z></a>");
    document.findItem("a")->removeChild(document.findItem("a/<comment>"));
    EXPECT_EQ(writtenPlain(document), "<a><z><b/></z></a>");
}

TEST_F(qxXmlDomInclude, aCircleLeavesTheInstruction)
{
    folder.write("a.xml", "<a><?include b.xml?></a>");
    folder.write("b.xml", "<b><?include a.xml?><?include b.xml?></b>");
    EXPECT_EQ(read("a.xml"), "(a(b(?include a.xml ?include b.xml)))");
    EXPECT_EQ(messages.texts(),
              (std::vector<std::string>{"Can not include '" + urlOf("a.xml") + "', which includes itself",
                                        "Can not include '" + urlOf("b.xml") + "', which includes itself"}));
}

TEST_F(qxXmlDomInclude, whatCanNotBeReadLeavesTheInstruction)
{
    folder.write("a.xml",
                 "<a><?include b.xml?><?include none.xml?><?include mem:16,16?><?include CON:?></a>");
    folder.write("b.xml", "<b><c></b>");
    EXPECT_EQ(read("a.xml"), "(a(?include b.xml ?include none.xml ?include mem:16,16 ?include CON:))");

    std::vector<std::string> texts = messages.texts();
    ASSERT_EQ(texts.size(), 5U);
    EXPECT_NE(texts[2].find("none.xml"), std::string::npos);
    texts.erase(texts.begin() + 2);
    EXPECT_EQ(texts, (std::vector<std::string>{"Expected end tag 'c' but got 'b' at (Line:1,Col:9)",
                                               "Can not include '" + urlOf("b.xml") + "', which is malformed",
                                               "Can not include 'mem:16,16': a document must not look into "
                                               "the memory, at the console or into the network of its reader",
                                               "Can not include 'CON:': a document must not look into the "
                                               "memory, at the console or into the network of its reader"}));
}

TEST_F(qxXmlDomInclude, depthIsBounded)
{
    for (int i = 0; i < 40; ++i) {
        folder.write("d" + std::to_string(i) + ".xml",
                     "<d><?include d" + std::to_string(i + 1) + ".xml?></d>");
    }
    read("d0.xml");
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
    read("d0.xml");
    EXPECT_EQ(document.findItems("//d").entries(), 1001U);
    ASSERT_EQ(messages.texts().size(), 1U);
    EXPECT_NE(messages.texts()[0].find("more than 1000 documents are included"), std::string::npos);

    read("d9.xml"); // the next read counts anew
    EXPECT_EQ(document.findItems("//d").entries(), 11U);
    EXPECT_EQ(messages.texts().size(), 1U);
}

TEST_F(qxXmlDomInclude, keysInTheUrlAreUserKeys)
{
    folder.write("a.xml", "<a><?include $(QX_TEST_FOLDER)/b.xml?></a>");
    folder.write("sub/b.xml", "<b/>");
    setUserKey("QX_TEST_FOLDER", "sub");
    EXPECT_EQ(read("a.xml"), "(a(b))");
}

} // namespace
