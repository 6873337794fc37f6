// SPDX-License-Identifier: see LICENSE

#include "qxkeydatabase.h"
#include "qxprogress.h"

#include "settings/qxsettingstest.h"

#include <cstdlib>
#include <string>
#include <vector>

namespace
{

typedef std::vector<std::string> Texts;

class qxKeyDatabaseTest : public Settings
{};

TEST_F(qxKeyDatabaseTest, findsValuesAtAnyDepth)
{
    ASSERT_TRUE(
        use("<root><?pi x?>\n"
            " <a><b><text> two words\n</text><cdata><![CDATA[ kept ]]></cdata>\n"
            "  <both><![CDATA[cdata]]>chars</both><blank>\n <![CDATA[behind it]]></blank><none> </none>\n"
            "  <refs>&lt;R &amp; D&gt;</refs><call>function:x</call><parts>a<!-- c -->b</parts>\n"
            "  <pieces><![CDATA[x]]><![CDATA[ ]]></pieces><empty><![CDATA[]]></empty></b></a>\n"
            " <b><text>second</text><only>b</only></b>\n"
            " <a:b><x><_x0031_st_x0020__x002F_>encoded</_x0031_st_x0020__x002F_></x></a:b>\n"
            " <list><item n='1'><v>one</v></item><item n='2'><v>two</v></item></list>\n"
            "</root>"));
    const struct {
        const char* path;
        const char* name;
        const char* value;
    } rows[] = {
        {"a/b", "text", "two words"},
        {"b", "text", "two words"},
        {"root/a/b", "text", "two words"},
        {"\\a\\\\b//", "text", "two words"},
        {"/a/b/", "cdata", " kept "},
        {"a/b", "both", "chars"},
        {"a/b", "blank", "behind it"},
        {"a/b", "none", "(none)"},
        {"a/b", "refs", "<R & D>"},
        {"a/b", "call", "function:x"},
        {"a/b", "parts", "a"},
        {"a/b", "pieces", "x "},
        {"a/b", "empty", ""},
        {"b", "only", "b"},
        {"a/b", "only", "(none)"},
        {"a", "text", "(none)"},
        {"a/b", "", "(none)"},
        {"a", "b/text", "two words"},
        {"a/b/QuaxoSDK", "text", "two words"},
        {"a/b/QuaxoSDK/QuaxoSDK", "text", "(none)"},
        {"QuaxoSDK", "text", "(none)"},
        {"a:b/x", "1st /", "encoded"},
        {"a:b/x", "_x0031_st_x0020__x002F_", "encoded"},
        {"list/item[2]", "v", "two"},
        {"list/item[n=1]", "v", "one"},
        {"list/item", "v", "one"},
        {"a/b/../../list/item", "v", "one"},
        {"\xFF", "text", "(none)"},
    };
    for (int round = 0; round < 2; ++round) { // found, then remembered
        for (const auto& row : rows) {
            SCOPED_TRACE(std::string(row.path) + " " + row.name);
            EXPECT_EQ(get(row.path, row.name), row.value);
        }
    }
}

TEST_F(qxKeyDatabaseTest, whatIsSetIsReadAgain)
{
    const std::string controls = "line\nfeed\ttab\rreturn";
    const std::string values[] = {
        "plain",
        "R & D <x> \"q\" 'a'",
        " blanks ",
        "\n",
        "]]>",
        " a]]>b]]> ",
        "]]]]>>",
        "function:call",
        controls,
        "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80",
        "&amp;",
        "<![CDATA[x]]>",
        "",
        std::string(65535, 'x'),
        std::string(65533, '&') + "]]",
        " " + std::string(65534, '>'),
    };
    for (const std::string& value : values) {
        SCOPED_TRACE(value.substr(0, 40));
        ASSERT_TRUE(set("a/b", "key", value));
        EXPECT_EQ(get("a/b", "key"), value);
        ASSERT_TRUE(qxKeyDatabase::setLocalRegistry(url().c_str()));
        EXPECT_EQ(get("a/b", "key"), value);
    }
}

TEST_F(qxKeyDatabaseTest, namesMayBeAnyText)
{
    const char* const names[] = {
        "two words",    "1st",    "a:b", "-",   "a/b",         "my_xml", "_x0041_",
        "\xE2\x82\xAC", "<&>\"'", "..",  "[1]", "caf\xC3\xA9", "a\nb",   "\xF0\x9F\x98\x80"};
    for (const char* const name : names) {
        SCOPED_TRACE(name);
        const std::string path = std::string(name) == "a/b" ? "x" : name;
        ASSERT_TRUE(set(path.c_str(), name, name));
        ASSERT_TRUE(qxKeyDatabase::setLocalRegistry(url().c_str()));
        EXPECT_EQ(get(path.c_str(), name), name);
        EXPECT_TRUE(remove(path.c_str(), name));
        EXPECT_EQ(get(path.c_str(), name), "(none)");
    }
}

TEST_F(qxKeyDatabaseTest, refusesWhatNoDocumentCanHold)
{
    ASSERT_TRUE(set("a", "x", "1"));
    const std::string before = content();
    MessageRecorder recorder;
    EXPECT_FALSE(set("a", "x", "\x01"));
    EXPECT_FALSE(set("a", "x", "\xFF"));
    EXPECT_FALSE(set("a", "", "1"));
    EXPECT_FALSE(set("\xC3", "x", "1"));
    EXPECT_FALSE(set("a", std::string(60000, ':').c_str(), "1"));
    const std::string start = "Could not save settings '" + url() + "' (";
    EXPECT_EQ(recorder.texts(),
              (Texts{start + "CharData is malformed)", start + "CharData is malformed)",
                     start + "that is no name)", start + "that is no name)", start + "that is no name)"}));
    EXPECT_EQ(content(), before);
    EXPECT_EQ(get("a", "x"), "1");
}

TEST_F(qxKeyDatabaseTest, aNewDocumentIsLaidOut)
{
    EXPECT_EQ(content(), "(none)");
    ASSERT_TRUE(set("", "first", "1"));
    ASSERT_TRUE(set("software", "x", " "));
    ASSERT_TRUE(set("other/path", "y", "2"));
    EXPECT_EQ(content(), HEADER + "<registry>\n"
                                  "  <software>\n"
                                  "    <Norvale>\n"
                                  "      <QuaxoSDK>\n"
                                  "        <first>1</first>\n"
                                  "      </QuaxoSDK>\n"
                                  "    </Norvale>\n"
                                  "    <x><![CDATA[ ]]></x>\n"
                                  "  </software>\n"
                                  "  <other>\n"
                                  "    <path>\n"
                                  "      <y>2</y>\n"
                                  "    </path>\n"
                                  "  </other>\n"
                                  "</registry>\n");
    EXPECT_TRUE(remove("software", "x"));
    EXPECT_TRUE(remove("other/path", "y"));
    EXPECT_FALSE(remove("other/path", "y"));
    EXPECT_EQ(content(), HEADER + "<registry>\n"
                                  "  <software>\n"
                                  "    <Norvale>\n"
                                  "      <QuaxoSDK>\n"
                                  "        <first>1</first>\n"
                                  "      </QuaxoSDK>\n"
                                  "    </Norvale>\n"
                                  "  </software>\n"
                                  "  <other>\n"
                                  "    <path>\n"
                                  "    </path>\n"
                                  "  </other>\n"
                                  "</registry>\n");
}

TEST_F(qxKeyDatabaseTest, aSaveKeepsEverythingElse)
{
    folder.write("more.xml", "<more><z>included</z></more>");
    const std::string start =
        "\n<!-- top -->\n<!DOCTYPE s [<!ENTITY e 'v'>]>\n<s kind=\"a &amp; b\">\n\t<?tool keep this?>\n"
        "\t<!-- a -->\n\t<?include more.xml?>\n\t<prose>some <b>bold</b> &e; text</prose>\n\t<n>";
    const std::string end = "</n>\n\t<call>&#102;unction:x</call>\n\t<empty/>\n</s>\n<!-- end -->\n";
    const std::string header = HEADER.substr(0, HEADER.size() - 1);
    ASSERT_TRUE(use(header + start + "1" + end));
    EXPECT_EQ(get("more", "z"), "included");

    ASSERT_TRUE(set("s", "n", "2"));
    EXPECT_EQ(content(), header + start + "2" + end);
}

TEST_F(qxKeyDatabaseTest, includedValuesAreNotChanged)
{
    folder.write("more.xml", "<more><z>included</z></more>");
    const std::string document = HEADER + "<s><?include more.xml?><own/></s>\n";
    ASSERT_TRUE(use(document));
    MessageRecorder recorder;
    EXPECT_FALSE(set("more", "z", "1"));
    EXPECT_FALSE(remove("more", "z"));
    EXPECT_EQ(recorder.texts(),
              Texts(2, "Could not save settings '" + url() + "' (an included document says what it is)"));
    EXPECT_EQ(content(), document);

    ASSERT_TRUE(set("more", "own", "1")); // in the document's own tree
    EXPECT_EQ(content(), HEADER + "<s><?include more.xml?><own/><more>\n  <own>1</own>\n</more></s>\n");
    EXPECT_EQ(get("more", "own"), "1");
}

TEST_F(qxKeyDatabaseTest, setChangesTheValueThatIsFound)
{
    const struct {
        const char* before;
        const char* path;
        const char* value;
        const char* after;
    } rows[] = {
        {"<r><a><n>1</n></a><b><a><n>2</n></a></b></r>", "a", "3",
         "<r><a><n>3</n></a><b><a><n>2</n></a></b></r>"},
        {"<r><a><n>1</n><n>2</n></a></r>", "a", " ", "<r><a><n><![CDATA[ ]]></n></a></r>"},
        {"<r><a><n/></a></r>", "a", "1", "<r><a><n>1</n></a></r>"},
        {"<r><a><n>1<!-- c --><m>x</m>2</n></a></r>", "a", "3", "<r><a><n><!-- c --><m>x</m>3</n></a></r>"},
        {"<r><n>1</n></r>", "r/QuaxoSDK", "2", "<r><n>2</n></r>"},
        {"<a><x/></a>", "a/b", "1", "<a><x/><b>\n  <n>1</n>\n</b></a>"},
        {"<r><x>text</x></r>", "x/y", "1", "<r><x>text<y>\n  <n>1</n>\n</y></x></r>"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.before);
        ASSERT_TRUE(use(HEADER + row.before));
        ASSERT_TRUE(set(row.path, "n", row.value));
        EXPECT_EQ(get(row.path, "n"), row.value);
        EXPECT_EQ(content(), HEADER + row.after + "\n");
    }
}

TEST_F(qxKeyDatabaseTest, removesEveryValueOfTheName)
{
    ASSERT_TRUE(
        use("<r><a><QuaxoSDK><n>1</n></QuaxoSDK><n>2<m>kept</m></n></a><a><n><![CDATA[3]]></n></a></r>"));
    EXPECT_TRUE(remove("a/QuaxoSDK", "n"));
    EXPECT_EQ(get("a/QuaxoSDK", "n"), "(none)");
    EXPECT_EQ(content(), HEADER + "<r><a><QuaxoSDK/><n><m>kept</m></n></a><a/></r>\n");
}

TEST_F(qxKeyDatabaseTest, userKeysAreThoseOfTheDefaultPath)
{
    EXPECT_EQ(qxKeyDatabase::getDefaultRegistry(), "software/Norvale/QuaxoSDK");
    EXPECT_EQ(qxKeyDatabase::getDefaultKeyHeader(), QX_KEY_USER);
    EXPECT_TRUE(qxKeyDatabase::setUserKey("key", "1"));
    EXPECT_EQ(get("software/Norvale/QuaxoSDK", "key"), "1");
    EXPECT_EQ(get("/", "key"), "1");
    EXPECT_EQ(qxKeyDatabase::getUserKey("key"), "1");
    EXPECT_EQ(qxKeyDatabase::getUserKey("key", QX_KEY_GLOBAL), "1"); // a document has one tree
    EXPECT_EQ(qxKeyDatabase::getDefaultUserKey("key", "2"), "1");
    EXPECT_EQ(qxKeyDatabase::getDefaultUserKey("none", "2"), "2");
    EXPECT_TRUE(qxKeyDatabase::setUserKey("key", ""));
    EXPECT_TRUE(qxKeyDatabase::existUserKey("key"));
    EXPECT_EQ(qxKeyDatabase::getDefaultUserKey("key", "2"), "2");

    qxKeyDatabase::setDefaultRegistry("elsewhere");
    EXPECT_FALSE(qxKeyDatabase::existUserKey("key"));
    EXPECT_TRUE(qxKeyDatabase::setUserKey("key", "3"));
    EXPECT_EQ(get("elsewhere", "key"), "3");
    qxKeyDatabase::setDefaultRegistry("software/Norvale/QuaxoSDK");
    EXPECT_TRUE(qxKeyDatabase::removeUserKey("key"));
    EXPECT_FALSE(qxKeyDatabase::existUserKey("key"));
}

TEST_F(qxKeyDatabaseTest, globalKeysAreScrambled)
{
    EXPECT_TRUE(qxKeyDatabase::setGlobalKey("password", "secret 1"));
    EXPECT_EQ(content().find("secret"), std::string::npos);
    EXPECT_EQ(content().find("password"), std::string::npos);
    EXPECT_EQ(qxKeyDatabase::getGlobalKey("password"), "secret 1");
    EXPECT_TRUE(qxKeyDatabase::existGlobalKey("password"));
    EXPECT_FALSE(qxKeyDatabase::existUserKey("password"));

    EXPECT_TRUE(qxKeyDatabase::setUserKey("plain", "as it stands"));
    EXPECT_EQ(qxKeyDatabase::getGlobalKey("plain"), "as it stands");
    EXPECT_EQ(qxKeyDatabase::getDefaultGlobalKey("none", "missing"), "missing");
    for (const char* const name : {"password", "plain"}) {
        EXPECT_TRUE(qxKeyDatabase::removeGlobalKey(name));
        EXPECT_FALSE(qxKeyDatabase::existGlobalKey(name));
        EXPECT_FALSE(qxKeyDatabase::removeGlobalKey(name));
    }
}

TEST_F(qxKeyDatabaseTest, removingAKeyRemovesItsVariable)
{
    static char user[] = "QX_TEST_USER_KEY=1";
    static char global[] = "QX_TEST_GLOBAL_KEY=1";
    putenv(user);
    putenv(global);
    EXPECT_EQ(qxKeyDatabase::getUserKey("QX_TEST_USER_KEY"), "");
    EXPECT_FALSE(qxKeyDatabase::removeUserKey("QX_TEST_USER_KEY"));
    EXPECT_FALSE(qxKeyDatabase::removeGlobalKey("QX_TEST_GLOBAL_KEY"));
    EXPECT_EQ(std::getenv("QX_TEST_USER_KEY"), nullptr);
    EXPECT_EQ(std::getenv("QX_TEST_GLOBAL_KEY"), nullptr);
}

TEST_F(qxKeyDatabaseTest, withoutADocumentThereIsNothing)
{
    ASSERT_TRUE(set("a", "x", "1"));
    EXPECT_TRUE(qxKeyDatabase::setLocalRegistry(""));
    EXPECT_EQ(qxKeyDatabase::getLocalRegistryURL(), "");
    EXPECT_EQ(get("a", "x"), "(none)");
    EXPECT_FALSE(set("a", "x", "2"));
    EXPECT_FALSE(remove("a", "x"));
    EXPECT_EQ(qxKeyDatabase::getLocalKeys().entries(), 0U);
    EXPECT_TRUE(qxKeyDatabase::setLocalRegistry(url().c_str()));
    EXPECT_EQ(get("a", "x"), "1");
}

TEST_F(qxKeyDatabaseTest, aDocumentThatCannotBeReadIsNotInForce)
{
    ASSERT_TRUE(use("<r><a><x>1</x></a></r>"));
    folder.write("broken.reg", "<r><a></r>");
    const std::string broken = url("broken.reg");
    MessageRecorder recorder;
    EXPECT_FALSE(qxKeyDatabase::setLocalRegistry(broken.c_str()));
    EXPECT_FALSE(qxKeyDatabase::setLocalRegistry(url("missing.reg").c_str()));
    EXPECT_FALSE(qxKeyDatabase::setLocalRegistry(folder.name().c_str()));
    EXPECT_FALSE(qxKeyDatabase::openLocalRegistry("no://such/scheme"));
    EXPECT_EQ(recorder.messages().size(), 4U);
    EXPECT_EQ(qxKeyDatabase::getLocalRegistryURL(), url().c_str());
    EXPECT_EQ(get("a", "x"), "(none)"); // the one before was let go
    EXPECT_EQ(folder.read("broken.reg"), "<r><a></r>");

    ASSERT_TRUE(set("a", "y", "2")); // it is read again
    EXPECT_EQ(get("a", "x"), "1");
}

TEST_F(qxKeyDatabaseTest, listsSortedAndWithoutTheRoot)
{
    ASSERT_TRUE(set("b", "z", "1"));
    ASSERT_TRUE(set("a/b c", "1", " x "));
    ASSERT_TRUE(set("a", "n", ""));
    ASSERT_TRUE(set("registry", "top", "2"));
    const auto list = [](const char* path) {
        std::string rows;
        for (const qxKeyEntry& entry : qxKeyDatabase::getLocalKeys(path))
            rows +=
                std::string(entry.path) + "|" + entry.name.getString() + "=" + entry.value.getString() + "\n";
        return rows;
    };
    EXPECT_EQ(list(""), "a|n=\na/b c|1= x \nb|z=1\nregistry|top=2\n");
    EXPECT_EQ(list("/a/"), "a|n=\na/b c|1= x \n");
    EXPECT_EQ(list("a/b"), "");
    ASSERT_TRUE(use("<software><a><x>1</x><x>2</x></a></software>"));
    EXPECT_EQ(list(""), "software/a|x=1\n");
}

TEST_F(qxKeyDatabaseTest, importsAllOrNothing)
{
    ASSERT_TRUE(set("a", "x", "1"));
    ASSERT_TRUE(set("a", "y", "2"));
    folder.write("other.reg", "<registry><a><y>3</y></a><b><z><![CDATA[ ]]></z></b></registry>");
    folder.write("broken.reg", "<registry><a><y>4</y></a>");
    MessageRecorder recorder;
    EXPECT_FALSE(qxKeyDatabase::importLocalRegistry(url("broken.reg").c_str()));
    EXPECT_EQ(get("a", "y"), "2");
    EXPECT_TRUE(qxKeyDatabase::importLocalRegistry(url("other.reg").c_str()));
    EXPECT_EQ(get("a", "x") + get("a", "y") + get("b", "z"), "13 ");
}

TEST_F(qxKeyDatabaseTest, readsWhatAnotherProgramHasSavedBeforeItSaves)
{
    ASSERT_TRUE(use("<r><a><x>1</x></a></r>"));
    folder.write("test.reg", "<r><a><x>one</x><y>2</y></a></r>");
    EXPECT_EQ(get("a", "y"), "(none)");
    ASSERT_TRUE(set("a", "z", "3"));
    EXPECT_EQ(get("a", "x") + get("a", "y") + get("a", "z"), "one23");

    folder.write("test.reg", "<r><a><x>changed</x></a></r>");
    EXPECT_TRUE(qxKeyDatabase::refreshLocalRegistry());
    EXPECT_EQ(get("a", "x"), "changed");
}

TEST_F(qxKeyDatabaseTest, neverReplacesADocumentThatIsBroken)
{
    ASSERT_TRUE(use("<r><a><x>1</x></a></r>"));
    folder.write("test.reg", "<r><a><x>2</x>");
    MessageRecorder recorder;
    EXPECT_FALSE(set("a", "x", "3"));
    EXPECT_FALSE(remove("a", "x"));
    EXPECT_FALSE(qxKeyDatabase::refreshLocalRegistry());
    EXPECT_EQ(content(), "<r><a><x>2</x>");
    EXPECT_EQ(get("a", "x"), "1"); // what was known stays

    for (const std::string& broken : {std::string(), std::string("x"), std::string(17 * 1024 * 1024, ' ')}) {
        folder.write("test.reg", broken);
        EXPECT_FALSE(set("a", "x", "3"));
        EXPECT_EQ(content().size(), broken.size());
    }
}

TEST_F(qxKeyDatabaseTest, aFolderThatIsMissingIsMade)
{
    ASSERT_TRUE(qxKeyDatabase::openLocalRegistry(url("new/folder/test.reg").c_str()));
    EXPECT_FALSE(remove("a", "x"));
    EXPECT_FALSE(std::filesystem::exists(folder.path() / "new"));
    ASSERT_TRUE(set("a", "x", "1"));
    EXPECT_NE(folder.read("new/folder/test.reg"), "(none)");
    std::filesystem::remove_all(folder.path() / "new");
    ASSERT_TRUE(set("a", "y", "2"));
    EXPECT_EQ(get("a", "x") + get("a", "y"), "(none)2");
}

TEST_F(qxKeyDatabaseTest, threadsLoseNoKey)
{
    onThreads(4, [](unsigned int thread) {
        for (int i = 0; i < 10; ++i) {
            const std::string name = "k" + std::to_string(thread) + "_" + std::to_string(i);
            EXPECT_TRUE(set("a/b", name.c_str(), name));
            EXPECT_EQ(get("a/b", name.c_str()), name);
        }
    });
    EXPECT_EQ(qxKeyDatabase::getLocalKeys("a/b").entries(), 40U);
    ASSERT_TRUE(qxKeyDatabase::setLocalRegistry(url().c_str()));
    EXPECT_EQ(qxKeyDatabase::getLocalKeys("a/b").entries(), 40U);
}

TEST_F(qxKeyDatabaseTest, nobodySeesADocumentThatIsHalfRead)
{
    std::string text = "<r>";
    for (int i = 0; i < 300; ++i) text += "<k" + std::to_string(i) + ">v</k" + std::to_string(i) + ">";
    ASSERT_TRUE(use(text + "</r>"));
    onThreads(3, [this](unsigned int thread) {
        for (int i = 0; i < 30; ++i) {
            if (thread == 0) {
                EXPECT_TRUE(qxKeyDatabase::setLocalRegistry(url().c_str()));
                continue;
            }
            const unsigned int count = qxKeyDatabase::getLocalKeys().entries();
            EXPECT_TRUE(count == 0 || count == 300) << count;
            EXPECT_TRUE(qxKeyDatabase::getRegKey(QX_KEY_USER, "r", "k299") == "v");
        }
    });
}

TEST_F(qxKeyDatabaseTest, readsWithoutReportsOfProgress)
{
    struct Receiver final : qxProgressInterface {
        Receiver() { qxProgress::setReceiver(this); }
        ~Receiver() override { qxProgress::setReceiver(nullptr); }
        void onProgress(const qxString&, unsigned int, const char*) override { ++count; }
        int count = 0;
    };
    const Receiver receiver;
    std::string document = "<registry>";
    for (int i = 0; i < 10000; ++i) document += "<a>some text</a>\n";
    EXPECT_TRUE(use(document + "</registry>"));
    EXPECT_EQ(receiver.count, 0);
}

} // namespace
