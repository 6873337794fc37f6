// SPDX-License-Identifier: see LICENSE

#include "qxserializeadapterfile.h"

#include "qxtestfolder.h"
#include "qxteststream.h"
#include "qxtestsupport.h"

#include <algorithm>

namespace
{

TEST(qxSerializeAdapterURLWindows, backslashesSeparateToo)
{
    const TestFolder folder;
    folder.write("d/a.xml", "a");
    folder.write("d/b.xml", "b");
    folder.write("c.xml", "c");
    std::string name = folder.name("d/a.xml");
    std::replace(name.begin(), name.end(), '/', '\\');
    const qxSerializeAdapterFile file(name.c_str());
    EXPECT_STREQ(file.getURLBase(), ("file:" + folder.name() + "/d/").c_str());
    for (const char* const url : {"b.xml", "..\\d\\b.xml", "../d/b.xml"}) {
        const qxRefPointer<qxSerializeAdapter> stream =
            qxSerializeAdapter::getURLAdapter(url, QX_SERIALIZE_INPUT, file.getURLBase());
        ASSERT_TRUE(stream) << url;
        EXPECT_EQ(readAll(*stream), "b");
    }
}

TEST(qxSerializeAdapterURLWindows, foldersAndResolution)
{
    EXPECT_STREQ(qxSerializeAdapter::getURLFolder("C:\\x\\a.xml"), "C:\\x\\");
    EXPECT_STREQ(qxSerializeAdapter::resolveURL("b.xml", "C:\\x\\"), "C:\\x\\b.xml");
    EXPECT_STREQ(qxSerializeAdapter::resolveURL("\\\\server\\share\\b.xml", "file:C:/x/"),
                 "\\\\server\\share\\b.xml");
    EXPECT_STREQ(qxSerializeAdapter::resolveURL("C:b.xml", "file:C:/x/"), "C:b.xml");
    EXPECT_STREQ(qxSerializeAdapterFile("\\\\server\\share\\no.xml").getURLBase(), "file:////server/share/");
}

} // namespace
