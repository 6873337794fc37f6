// SPDX-License-Identifier: see LICENSE

#include "tools/qxtooltest.h"

#include <cstdlib>
#include <string>

namespace
{

const char DOCUMENT[] =
    "<registry><software><Norvale><QuaxoSDK><name>my value</name></QuaxoSDK></Norvale></software>"
    "<a><one>1</one><two><![CDATA[ 2\n]]></two><none><![CDATA[]]></none></a></registry>";

TEST_F(Tool, settingsAreSetAndRead)
{
    expectAnswers("", "conf --file s.reg set name 'my value' => ", "conf set --file s.reg a/b/x 1 => ",
                  "conf get --file=s.reg name a/b/x => my value\n1\n",
                  "conf --file s.reg set a/b/x -- -2 => ", "conf --file s.reg get a/b/x => -2\n",
                  "conf --file s.reg set empty '' => ", "conf --file s.reg get empty => \n",
                  "conf --file s.reg list => a/b/x=-2\nsoftware/Norvale/QuaxoSDK/empty=\n"
                  "software/Norvale/QuaxoSDK/name=my value\n",
                  "conf --file s.reg list a => a/b/x=-2\n", "conf --file s.reg unset a/b/x => ",
                  "conf --file s.reg unset a/b/x => 1 qx: no key 'a/b/x'\n",
                  "conf --file s.reg where => s.reg\n");
}

TEST_F(Tool, settingsThatAreNotThereAreSuggested)
{
    file("s.reg", DOCUMENT);
    expectAnswers("", "conf --file s.reg get nme => 1 qx: no key 'nme'; did you mean 'name'?\n",
                  "conf --file s.reg get a/on a/one => 1 1\nqx: no key 'a/on'; did you mean 'a/one'?\n",
                  "conf --file s.reg get elsewhere/x => 1 qx: no key 'elsewhere/x'\n",
                  "conf --file none.reg get x => 1 qx: no key 'x'\n", "conf --file none.reg list => ");
    EXPECT_EQ(run("conf --file s.reg get a/"), 2);
    EXPECT_EQ(run("conf --file mem:1,2 get a"), 2);
    EXPECT_EQ(run("conf --file s.reg get"), 2);
}

TEST_F(Tool, aBrokenDocumentOfSettingsStaysAsItIs)
{
    const std::string broken = "<registry><a></registry>";
    file("s.reg", broken);
    for (const char* const words :
         {"set x 1", "unset x", "get x", "list", "export", "import s.reg", "watch"}) {
        SCOPED_TRACE(words);
        EXPECT_EQ(run(std::string("conf --file s.reg ") + words), 3);
        EXPECT_EQ(err.find("s.reg:1:"), 0U) << err;
    }
    EXPECT_EQ(content("s.reg"), broken);
    EXPECT_EQ(countFiles(), 1);
    EXPECT_EQ(run("conf --file . set x 1"), 4);
    EXPECT_EQ(run("conf --file s2.reg set x '\x01'"), 3);
}

TEST_F(Tool, comparesSettings)
{
    file("a.reg", DOCUMENT);
    file("b.reg", "<registry><a><one>1</one><two>2</two><three>\"3</three></a></registry>");
    EXPECT_EQ(answer("conf diff a.reg a.reg"), "");
    EXPECT_EQ(answer("conf diff a.reg b.reg"), "1 a/none: \"\" -> (none)\n"
                                               "a/three: (none) -> \"\\\"3\"\n"
                                               "a/two: \" 2\\n\" -> 2\n"
                                               "software/Norvale/QuaxoSDK/name: my value -> (none)\n");
    EXPECT_EQ(answer("conf diff a.reg none.reg"), "4 qx: error: there is no document 'none.reg'\n");
}

TEST_F(Tool, exportsAndImportsSettings)
{
    file("a.reg", "<registry><?include more.xml?><a><one>1</one></a></registry>");
    file("more.xml", "<more><x>2</x></more>");
    EXPECT_EQ(run("conf --file a.reg export"), 0);
    EXPECT_NE(out.find("<registry><more><x>2</x></more><a><one>1</one></a></registry>\n"), std::string::npos)
        << out;
    EXPECT_EQ(answer("conf --file a.reg export b.reg"), "");
    EXPECT_EQ(content("b.reg"), out + content("b.reg").substr(out.size()));
    file("c.reg", "<registry><a><one>old</one><keep>3</keep></a></registry>");
    EXPECT_EQ(answer("conf --file c.reg import b.reg"), "");
    EXPECT_EQ(answer("conf --file c.reg list"), "a/keep=3\na/one=1\nmore/x=2\n");
    EXPECT_EQ(run("conf --file c.reg import none.reg"), 4);
}

TEST_F(Tool, theSurroundingsChooseTheDocument)
{
    file("named.reg", DOCUMENT);
    static char named[] = "QUAXO_SETTINGS=named.reg";
    static char memory[] = "QUAXO_SETTINGS=mem:16,64";
    static char nothing[] = "QUAXO_SETTINGS=";
    putenv(named);
    EXPECT_EQ(answer("conf where"), "named.reg\n");
    EXPECT_EQ(answer("conf get a/one"), "1\n");
    EXPECT_EQ(answer("conf --file other.reg where"), "other.reg\n");
    for (char* const variable : {nothing, memory}) { // memory is for callers only
        putenv(variable);
        EXPECT_EQ(run("conf where"), 0);
        EXPECT_TRUE(out.ends_with("/quaxosdk/quaxosdk.reg\n")) << out;
    }
    putenv(nothing);
}

} // namespace
