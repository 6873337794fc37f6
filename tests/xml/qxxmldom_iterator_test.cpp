// SPDX-License-Identifier: see LICENSE

#include "qxtestsupport.h"
#include "qxxmltesttree.h"

namespace
{

constexpr const char* DOCUMENT = "<r><a/>t<a><b/><c/><b/></a><!--x--></r>";

TEST(qxXMLDomIterator, goesThroughParentsBeforeTheirChildren)
{
    qxXmlDom document;
    readText(document, DOCUMENT);
    qxXMLDomIterator next(document);
    std::string contexts;
    std::string names;
    while (qxXmlItem* item = next()) {
        EXPECT_EQ(document.findItem(next.getContext()), item);
        contexts += std::string(next.getContext().getString()) + " ";
        names += std::string(next.getContextName().getString()) + " ";
    }
    EXPECT_EQ(contexts, "r r/a r/<char_data> r/a[2] r/a[2]/b r/a[2]/c r/a[2]/b[2] r/<comment> ");
    EXPECT_EQ(names, "r r/a r/<char_data> r/a r/a/b r/a/c r/a/b r/<comment> ");
    EXPECT_EQ(next(), nullptr);
    EXPECT_STREQ(next.getContext().getString(), "");
}

TEST(qxXMLDomIterator, goesOnBehindWhatItRemoved)
{
    // The name of what is removed; the names that are visited, and the tree that is left.
    const auto remaining = [](const std::string& removed) {
        qxXmlDom document;
        readText(document, DOCUMENT);
        qxXMLDomIterator next(document);
        EXPECT_FALSE(next.remove());
        std::string visited;
        while (qxXmlItem* item = next()) {
            visited += std::string(item->getName().getString()) + " ";
            if (item->getName() != removed.c_str()) continue;
            EXPECT_TRUE(next.remove());
            EXPECT_FALSE(next.remove());
            EXPECT_STREQ(next.getContext().getString(), "");
        }
        return visited + dump(document);
    };
    expectRows(remaining, "a => r a <char_data> a <comment> (r(\"t\" !--x--))",
               "b => r a <char_data> a b c b <comment> (r(a \"t\" a(c) !--x--))",
               "c => r a <char_data> a b c b <comment> (r(a \"t\" a(b b) !--x--))",
               "<comment> => r a <char_data> a b c b <comment> (r(a \"t\" a(b c b)))", "r => r ");
}

TEST(qxXMLDomIterator, anEmptyDocumentHasNothing)
{
    qxXmlDom document;
    EXPECT_EQ(qxXMLDomIterator(document)(), nullptr);
}

} // namespace
