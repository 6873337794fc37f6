// SPDX-License-Identifier: see LICENSE

#include "qxtestsupport.h"
#include "qxxmltesttree.h"

#include <chrono>

namespace
{

/// The value of the attribute `n` of an item, else its name; "-" for none.
std::string tell(qxXmlItem* item)
{
    if (!item) return "-";
    qxXmlElement* const element = dynamic_cast<qxXmlElement*>(item);
    return element ? element->getAttribute("n", element->getName()).getString()
                   : std::string(item->getName().getString());
}

std::string find(qxXmlItem& from, const std::string& path)
{
    return tell(from.findItem(path.c_str()));
}

/// All that the path leads to; findItem gives the first of it.
std::string findAll(qxXmlItem& from, const std::string& path)
{
    std::string all;
    for (qxXmlItem* item : from.findItems(path.c_str())) all += (all.empty() ? "" : " ") + tell(item);
    EXPECT_EQ(find(from, path), all.empty() ? "-" : all.substr(0, all.find(' ')));
    return all;
}

class qxXmlItemPath : public testing::Test
{
protected:
    qxXmlItemPath()
    {
        readText(document, "<r>"
                           "<a n='a1'/>"
                           "<b n='b1'>text</b>"
                           "<a n='a2' k='v'><b n='b2'/><c n='c1'><b n='b3'/></c><b n='b4' k='x/y' q=']'/></a>"
                           "<!--c--><?t d?>"
                           "<a n='a3' k='it is'><b n='b5'/></a>"
                           "</r>");
    }
    ~qxXmlItemPath() noexcept override {}

    /// Each row is "path => what findItem gives".
    template <class... Rows>
    void expectFound(const Rows&... rows)
    {
        expectRows([this](const std::string& path) { return find(document, path); }, rows...);
    }

    qxXmlDom document;
};

TEST_F(qxXmlItemPath, stepsGoByName)
{
    // All candidates of a step are tried: the second a has a b.
    expectFound("r => r", "/r => r", "r/a => a1", "r/b => b1", "r/a/b => b2", "r/a/c/b => b3",
                "r/./a/. => a1", "./r => r", "r/b/<char_data> => <char_data>", "r/<comment> => <comment>",
                "r/<pi> => <pi>", "r/b/.. => r", "r/a/b/.. => a2", "r/b/../a/c => c1", "r/.. => ",
                "r/../.. => -", ".. => -", " => ", "/ => ", ". => ", "r/ => r", "a => -", "r/x => -",
                "R => -");
}

TEST_F(qxXmlItemPath, anIndexSelectsAmongCandidates)
{
    expectFound("r/a[1] => a1", "r/a[3] => a3", "r/a[003] => a3", "r/a[ 2 ] => a2", "r/a[last()] => a3",
                "r/b[last()] => b1", "r/a[0] => -", "r/a[4] => -", "r/a[4294967297] => -",
                "r/a[99999999999999999999] => -", "r/a[-1] => -", "r/a[2]/b[2] => b4", "r/a/b[2] => b4",
                "r/a[last()]/b[last()] => b5", "r/a[k=v] => a2", "r/a[@k=v] => a2", "r/a[@k = \"v\"] => a2",
                "r/a[k='it is'] => a3", "r/a[k=it is] => a3", "r/a/b[k=x/y] => b4", "r/a/b[q=']'] => b4",
                "r/a[k=w] => -", "r/a[x=v] => -", "r/a[k] => -", "r/a[] => -", "r/a[2 => -", "r/a[2]x => -",
                "r/[2] => -", "r/..[1] => -", "r/a[k='v] => -", "r/<pi>[k=v] => -");
}

TEST_F(qxXmlItemPath, twoSlashesLookAtAnyDepth)
{
    const auto all = [this](const std::string& path) { return findAll(document, path); };
    // An index counts among the children of one parent.
    expectRows(all, "//b => b1 b2 b3 b4 b5", "r//b => b1 b2 b3 b4 b5", "///b => b1 b2 b3 b4 b5",
               "r/a//b => b2 b3 b4 b5", "r/a[2]//b => b2 b3 b4", "//a/b => b2 b4 b5", "//c//b => b3",
               "//a//b => b2 b3 b4 b5", "//b[1] => b1 b2 b3 b5", "//b[last()] => b1 b3 b4 b5",
               "//b[k='x/y'] => b4", "//b/.. => r a2 c1 a3", "//b/../b => b1 b2 b4 b3 b5", "//./c => c1",
               "r// => r", "//x => ");
}

TEST_F(qxXmlItemPath, startsAtTheItem)
{
    qxXmlItem* const item = document.findItem("r/a[2]");
    expectRows([item](const std::string& path) { return find(*item, path); }, "b => b2", "../b => b1",
               "/r/b => b1", "//b => b1", ".//b => b2", "../.. => ", "../../.. => -");

    const qxRefPointer<qxXmlItem> alone(item->clone());
    EXPECT_EQ(find(*alone, "/b"), "b2");
    EXPECT_EQ(find(*alone, ".."), "-");
}

TEST_F(qxXmlItemPath, addItemAddsWhereThePathLeads)
{
    const qxRefPointer<qxXmlItem> item(new qxXmlElement("new"));

    EXPECT_FALSE(document.addItem("r/x", item));
    EXPECT_EQ(item->getRef(), 1U);
    EXPECT_EQ(item->getParent(), nullptr);
    EXPECT_TRUE(document.addItem("r/a/c", item));
    EXPECT_EQ(item->getParent(), document.findItem("r/a/c"));
}

/// Knows an expression of its own: "odd".
class Numbered : public qxXmlElement
{
public:
    explicit Numbered(int value) : qxXmlElement("n"), number(value) {}
    bool indexEvalExpression(const qxString& name, const qxString& expression) override
    {
        if (expression == "odd") return name == "n" && number % 2 != 0;
        return qxXmlElement::indexEvalExpression(name, expression);
    }
    int number;
};

TEST(qxXmlItemExpression, classesOfApplicationsMayKnowMore)
{
    qxXmlElement parent("p");
    for (int i = 2; i <= 5; ++i) parent.addChild(new Numbered(i));
    static_cast<qxXmlElement*>(parent.getLastChild())->setAttributeText("x", "y");

    EXPECT_EQ(static_cast<Numbered*>(parent.findItem("n[odd]"))->number, 3);
    EXPECT_EQ(static_cast<Numbered*>(parent.findItem("n[x=y]"))->number, 5);
    EXPECT_EQ(parent.findItems("n[odd]").entries(), 2U);
}

// Documents are chosen by others: whatever the path, the time grows with the document, not with its square.
TEST(qxXmlItemSearch, staysFastInDeepAndWideDocuments)
{
    constexpr unsigned int COUNT = 20000;
    qxXmlElement deep("a");
    qxXmlItem* innermost = &deep;
    for (unsigned int i = 0; i < COUNT; ++i) {
        innermost->addChild(new qxXmlElement("a"));
        innermost = innermost->getFirstChild();
    }
    qxXmlElement wide("a");
    for (unsigned int i = 0; i < COUNT; ++i) wide.addChild(new qxXmlElement("a"));

    const auto start = std::chrono::steady_clock::now();
    for (const char* path : {"//a//a//b", "//a/a//a/b", "//a[1]//a[last()]/b", "//a/../b", "a/../a/../b"}) {
        EXPECT_EQ(deep.findItem(path), nullptr);
        EXPECT_EQ(wide.findItem(path), nullptr);
    }
    EXPECT_EQ(wide.findItems("a/../a").entries(), COUNT);
    EXPECT_LT(std::chrono::steady_clock::now() - start,
              std::chrono::seconds(20)); // far less; squares take minutes
}

} // namespace
