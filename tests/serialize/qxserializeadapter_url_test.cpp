// SPDX-License-Identifier: see LICENSE

#include "qxserializeadapter.h"

#include "qxserializeadaptercache.h"
#include "qxserializeadapterfile.h"
#include "qxserializeadaptermemory.h"
#include "qxtestfolder.h"
#include "qxteststream.h"
#include "qxtestsupport.h"
#include "qxurlmanager.h"

#include <filesystem>
#include <vector>

namespace
{

using Stream = qxRefPointer<qxSerializeAdapter>;

TEST(qxSerializeAdapterURL, schemes)
{
    const struct {
        const char* url;
        const char* scheme;
    } rows[] = {
        {"", ""},      {"a/b", ""},  {"FILE:a", "file"}, {"mem:1,2", "mem"},       {"c:\\a.xml", ""},
        {":a", ""},    {"1a:b", ""}, {"a/b:c", ""},      {"x-y.z+1:q", "x-y.z+1"}, {"zip:", "zip"},
        {"a b:c", ""},
    };
    for (const auto& row : rows)
        EXPECT_STREQ(qxSerializeAdapter::getURLScheme(row.url), row.scheme) << row.url;
}

TEST(qxSerializeAdapterURL, resolvesAgainstAFolder)
{
    const struct {
        const char* url;
        const char* base;
        const char* result;
    } rows[] = {
        {"b.xml", "", "b.xml"},
        {"b.xml", "a/", "a/b.xml"},
        {"b.xml", "a", "a/b.xml"},
        {"b.xml", "file:", "file:b.xml"},
        {"b.xml", "file:/x/y/", "file:/x/y/b.xml"},
        {"../b.xml", "file:/x/y/", "file:/x/b.xml"},
        {"./b.xml", "file:x/", "file:x/b.xml"},
        {"../../b.xml", "file:x/", "file:../b.xml"},
        {"../../b.xml", "/x/", "/b.xml"},
        {"../b.xml", "../", "../../b.xml"},
        {"c/../b.xml", "a/./", "a/b.xml"},
        {"..", "a/b/", "a/"},
        {"/b.xml", "file:/x/", "/b.xml"},
        {"/b.xml", "file:///x/", "file:///b.xml"},
        {"/b.xml", "http://host/x/", "http://host/b.xml"},
        {"b.xml", "http://host", "http://host/b.xml"},
        {"../b.xml", "http://host/x/y/", "http://host/x/b.xml"},
        {"../../../b.xml", "http://host/x/", "http://host/b.xml"},
        {"file:b.xml", "a/", "file:b.xml"},
        {"zip:b", "a/", "zip:b"},
        {"c:\\b.xml", "a/", "c:\\b.xml"},
        {"", "a/", ""},
        {"b.xml?a=../c", "x/y/", "x/y/b.xml?a=../c"},
        {"../b.xml?a=x%2Fy", "file:/x/y/", "file:/x/b.xml?a=x%2Fy"},
        {"../b.xml?a=1/../2#/..", "http://host/x/y/?q=1", "http://host/x/b.xml?a=1/../2#/.."},
        {"../../../b.xml", "C:/x/", "C:/../../b.xml"}, // a drive is not left
        {"../../b.xml", "file:///C:/x/", "file:///C:/../b.xml"},
        {"../b.xml", "file:////server/share/x/", "file:////server/share/b.xml"},
        {"../../b.xml", "//server/share/x/", "//server/share/../b.xml"}, // nor what a server shares
        {"b.xml", "cache:", "cache:b.xml"},
        {"../mem:1,2", "a/", "./mem:1,2"}, // a file of that name
        {"./mem:1,2", "a/..", "./mem:1,2"},
    };
    for (const auto& row : rows)
        EXPECT_STREQ(qxSerializeAdapter::resolveURL(row.url, row.base), row.result)
            << row.url << " in " << row.base;

    const qxString longText = qxString::spaces(40000, 'x');
    EXPECT_TRUE(qxSerializeAdapter::resolveURL(longText, longText).isEmpty());
}

TEST(qxSerializeAdapterURL, folderOfADocument)
{
    const struct {
        const char* url;
        const char* folder;
    } rows[] = {
        {"", ""},
        {"a.xml", ""},
        {"x/a.xml", "x/"},
        {"x/", "x/"},
        {"/a.xml", "/"},
        {"x?y/a.xml", "x?y/"},
        {"x?y=1/a.xml", "x?y=1/"},
        {"x/a.xml?y=/", "x/a.xml?y=/"},
        {"x/a.xml?y=%2F", "x/"},
        {"file:a.xml", "file:"},
        {"file:/x/a", "file:/x/"},
        {"http://host", "http://host"},
        {"http://host/a?x=/b", "http://host/"},
        {"http://host/x/a#/b", "http://host/x/"},
    };
    for (const auto& row : rows)
        EXPECT_STREQ(qxSerializeAdapter::getURLFolder(row.url), row.folder) << row.url;
}

TEST(qxSerializeAdapterURL, opensPathsAndFileURLs)
{
    const TestFolder folder;
    folder.write("d/a b.xml", "blank");
    folder.write("d/a%20b.xml", "percent");
    const std::string root = folder.name();
    const std::string path = root[0] == '/' ? root : "/" + root; // a drive has one before it in URLs
    const struct {
        std::string url;
        std::string base;
        const char* content;
        std::string urlBase;
    } rows[] = {
        {root + "/d/a b.xml", "", "blank", "file:" + root + "/d/"},
        {"file:" + root + "/d/a b.xml", "", "blank", "file:" + root + "/d/"},
        {"file:" + root + "/d/a%20b.xml", "", "percent", "file:" + root + "/d/"},
        {"file://" + path + "/d/a%20b.xml", "", "blank", "file://" + path + "/d/"},
        {"FILE://localhost" + path + "/d/a%2520b.xml", "", "percent", "FILE://localhost" + path + "/d/"},
        {"a b.xml", "file:" + root + "/d/", "blank", "file:" + root + "/d/"},
        {"../d/a%20b.xml", "file://" + path + "/e/", "blank", "file://" + path + "/d/"},
        {"a%20b.xml", root + "/d", "percent", "file:" + root + "/d/"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.url);
        const Stream stream =
            qxSerializeAdapter::getURLAdapter(row.url.c_str(), QX_SERIALIZE_INPUT, row.base.c_str());
        ASSERT_TRUE(stream);
        EXPECT_EQ(readAll(*stream), row.content);
        EXPECT_STREQ(stream->getURLBase(), row.urlBase.c_str());
        EXPECT_EQ(stream->getRef(), 1U);
    }
}

TEST(qxSerializeAdapterURL, opensFilesForWriting)
{
    const TestFolder folder;
    const std::string url = "file:" + folder.write("a", "old");
    qxSerializeAdapter::getURLAdapter(url.c_str(), QX_SERIALIZE_APPEND)->write("new", 3);
    EXPECT_EQ(folder.read("a"), "oldnew");
}

TEST(qxSerializeAdapterURL, theFolderOfAFileLeadsToItsNeighbours)
{
    const TestFolder folder;
    const std::string current = std::filesystem::current_path().string();
    const std::string odd =
        folder.name()[0] == '/' ? "100%25/a:b/" : "100%25/a b/"; // with drives ":" means them
    const std::string absolute = folder.write(odd + "x.xml", "x");
    folder.write(odd + "y.xml", "y");
    const std::string names[] = {absolute, "/" + absolute, std::filesystem::relative(absolute).string()};
    for (const std::string& name : names) {
        if (name.empty()) continue; // nothing is relative to another drive
        SCOPED_TRACE(name);
        qxSerializeAdapterFile file(name.c_str());
        const Stream neighbour =
            qxSerializeAdapter::getURLAdapter("y.xml", QX_SERIALIZE_INPUT, file.getURLBase());
        ASSERT_TRUE(neighbour);
        EXPECT_EQ(readAll(*neighbour), "y");
    }
    EXPECT_STREQ(qxSerializeAdapterFile("plain-name").getURLBase(), "file:");
}

TEST(qxSerializeAdapterURL, opensMemory)
{
    char block[] = "abcdef";
    char url[100];
    for (const char* const format : {"mem:%llu,4", "mem:0x%llx,0x4", "MEM:0X%llX,4"}) {
        snprintf(url, sizeof(url), format,
                 static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(block)));
        const Stream stream = qxSerializeAdapter::getURLAdapter(url);
        ASSERT_TRUE(stream) << url;
        EXPECT_TRUE(stream->isOfType(qxSerializeAdapterMemory::getClassType()));
        EXPECT_EQ(readAll(*stream), "abcd");
        EXPECT_STREQ(stream->getURLBase(), "");
    }
}

TEST(qxSerializeAdapterURL, warnsAboutWhatItCannotOpen)
{
    const TestFolder folder;
    const std::string missing = folder.name("no 100%d.xml");
    const std::string there = folder.write("there", "");
    const std::string longURL(65000, 'x');
    const struct {
        std::string url;
        std::string base;
        std::string message;
    } rows[] = {
        {"", "a/", "Empty URL name in getAdapter"},
        {"nobody:x%s", "", "Could not create URL Adapter 'nobody:x%s'"},
        {"file:", "", "Could not create URL Adapter 'file:'"},
        {"file://otherhost/a", "", "Could not create URL Adapter 'file://otherhost/a'"},
        {"file:///a%00b", "", "Could not create URL Adapter 'file:///a%00b'"},
        {longURL, "file:/" + longURL, "Could not create URL Adapter '" + longURL.substr(0, 16384) + "'"},
        {missing + "?encoding=ROT13", "",
         "URL Adapter (" + missing + "?encoding=ROT13) Error:Could not open '" + missing +
             "' for reading (No such file or directory)"},
        {there + "?encoding=ROT13", "",
         "URL Adapter (" + there + "?encoding=ROT13) Error:Unknown encoding 'rot13'"},
        {"cache:", "", "Could not create URL Adapter 'cache:'"},
        {"cache:no", "",
         "URL Adapter (cache:no) Error:Could not open 'no' for reading (nothing was written under this "
         "name)"},
        {missing, "",
         "URL Adapter (" + missing + ") Error:Could not open '" + missing +
             "' for reading (No such file or directory)"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.url.substr(0, 100));
        MessageRecorder recorder;
        EXPECT_FALSE(
            qxSerializeAdapter::getURLAdapter(row.url.c_str(), QX_SERIALIZE_INPUT, row.base.c_str()));
        const std::vector<RecordedMessage> expected = {{"QuaxoSDK", QX_LEVEL_WARNING, row.message}};
        EXPECT_EQ(recorder.messages(), expected);
    }
    for (const std::string arguments : {"", "12", "0,1", "1,x", "1,2,3", "1,4294967296",
                                        "0xFFFFFFFFFFFFFFFF,2", "99999999999999999999,1", "-1,1"}) {
        MessageRecorder recorder;
        EXPECT_FALSE(qxSerializeAdapter::getURLAdapter(("mem:" + arguments).c_str()));
        EXPECT_EQ(recorder.texts(),
                  std::vector<std::string>{"Wrong syntax in (mem:address,len) adapter arguments (" +
                                           arguments + ")"});
    }
}

TEST(qxSerializeAdapterURL, attributes)
{
    const struct {
        const char* url;
        const char* name;
        const char* value;
    } rows[] = {
        {"a.xml?x=1&y=2&x=3", "x", "1"},
        {"a.xml?x=1&y=2", "y", "2"},
        {"a.xml?x=1&y=2", "z", "(none)"},
        {"file:a.xml?x=", "x", ""},
        {"a.xml?%78=a%26b%3Dc+d%zz%", "x", "a&b=c+d%zz%"},
        {"http://host/a?x&y=1#z=2", "x", ""},
        {"http://host/a?x&y=1#z=2", "y", "1"},
        {"http://host/a?p=a?b", "p", "a?b"},
        {"http://host/a#?x=1", "x", "(none)"},
        {"cache:a?x=1", "x", "1"},
        {"mem:1,2?x=/", "x", "/"},
        {"what?.xml", "", "(none)"}, // part of the name
        {"what?x=1/a", "x", "(none)"},
        {"what?x=1?y=2", "x", "(none)"},
        {"what?x=1?y=2", "y", "2"},
        {"what?two words=2", "two words", "(none)"},
        {"//?/C:/a?x=1", "x", "1"},
        {"a?x=1&&y=2&", "y", "2"},
        {"?x=1", "x", "1"},
        {"", "x", "(none)"},
    };
    for (const auto& row : rows)
        EXPECT_STREQ(qxSerializeAdapter::getURLAttributeValue(row.url, row.name, "(none)"), row.value)
            << row.url << " " << row.name;
    EXPECT_STREQ(qxSerializeAdapter::getURLBaseEncoding("a?encoding=GZ"), "gz");
    EXPECT_STREQ(qxSerializeAdapter::getURLBaseEncoding("a"), "");
}

TEST(qxSerializeAdapterURL, pathsOfFiles)
{
    const struct {
        const char* url;
        const char* path;
    } rows[] = {
        {"a b?c", "a b?c"},
        {"a%20b?x=1", "a%20b"},
        {"FILE:/a#b?x=1", "/a#b"},
        {"file:///a%20b?x", "/a b"},
        {"file://host/a", ""},
        {"file:///a%00", ""},
        {"con:", ""},
        {"", ""},
        {"file://localhost/C:/a", "/C:/a"},
    };
    for (const auto& row : rows) EXPECT_STREQ(qxSerializeAdapter::getURLPath(row.url), row.path) << row.url;
}

TEST(qxSerializeAdapterURL, attributesAreNoPartOfTheName)
{
    const TestFolder folder;
    folder.write("a", "content");
    folder.write("a?b", "question");
    const std::string slash = folder.name()[0] == '/' ? "" : "/";
    const struct {
        std::string url;
        const char* content;
        const char* attributes;
    } rows[] = {
        {folder.name() + "/a?x=1&y=%26", "content", "x=1&y=%26"},
        {"file:" + folder.name() + "/a?x=1", "content", "x=1"},
        {"file://" + slash + folder.name() + "/a?any#thing", "content", "any"},
        {"file://" + slash + folder.name() + "/a#thing", "content", ""},
        {folder.name() + "/a?b", folder.name()[0] == '/' ? "question" : nullptr, ""},
        {"file://" + slash + folder.name() + "/a%3Fb?x=1", folder.name()[0] == '/' ? "question" : nullptr,
         "x=1"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.url);
        if (!row.content) continue; // the system has no such names
        const Stream stream = qxSerializeAdapter::getURLAdapter(row.url.c_str());
        ASSERT_TRUE(stream);
        EXPECT_EQ(readAll(*stream), row.content);
        EXPECT_STREQ(stream->getAttributes(), row.attributes);
        EXPECT_TRUE(std::string(stream->getURLBase()).ends_with(folder.name() + "/"))
            << stream->getURLBase().getString();
    }
}

TEST(qxSerializeAdapterURL, encodingsAreReadAndWritten)
{
    const TestFolder folder;
    const std::string url = folder.name("a");
    for (const char* const encoding : {"b64", "HEX", "gz"}) {
        SCOPED_TRACE(encoding);
        const std::string encoded = url + "?encoding=" + encoding;
        {
            const Stream stream = qxSerializeAdapter::getURLAdapter(encoded.c_str(), QX_SERIALIZE_OUTPUT);
            ASSERT_TRUE(stream);
            writeText(*stream, "some bytes");
        }
        EXPECT_NE(folder.read("a"), "some bytes");
        const Stream stream = qxSerializeAdapter::getURLAdapter(encoded.c_str());
        EXPECT_EQ(readAll(*stream), "some bytes");
        EXPECT_STREQ(stream->getURLBase(), ("file:" + folder.name() + "/").c_str());
        EXPECT_STREQ(stream->getName(), url.c_str());
    }
    writeText(*qxSerializeAdapter::getURLAdapter((url + "?encoding=gz").c_str(), QX_SERIALIZE_APPEND),
              ", more");
    EXPECT_EQ(readAll(*qxSerializeAdapter::getURLAdapter((url + "?encoding=gz").c_str())),
              "some bytes, more");

    MessageRecorder recorder;
    EXPECT_FALSE(qxSerializeAdapter::getURLAdapter((url + "?encoding=b64").c_str(), QX_SERIALIZE_APPEND));
    EXPECT_EQ(recorder.texts(),
              std::vector<std::string>{"URL Adapter (" + url +
                                       "?encoding=b64) Error:Nothing can be appended to Base64"});
}

TEST(qxSerializeAdapterURL, namedMemoryIsShared)
{
    writeText(*qxSerializeAdapter::getURLAdapter("cache:some/name?encoding=hex", QX_SERIALIZE_OUTPUT), "JK");
    const Stream stream = qxSerializeAdapter::getURLAdapter("CACHE:some/name");
    ASSERT_TRUE(stream);
    EXPECT_EQ(readAll(*stream), "4A4B");
    EXPECT_STREQ(stream->getURLBase(), "");
    EXPECT_TRUE(qxSerializeAdapterCache::remove("some/name"));
}

/// Opens its URLs as streams of their own text.
class TestManager final : public qxURLManagerInterface
{
public:
    ~TestManager() noexcept(false) override
    {
        if (onDelete) onDelete();
    }
    qxRefPointer<qxSerializeAdapter> onGetURLAdapter(const qxString& url, qxSerializeAction action) override
    {
        lastAction = action;
        if (url.contains("none")) return nullptr;
        qxRefPointer<qxSerializeAdapter> stream(new TestStream(url.getString()));
        if (url.contains("broken")) stream->setError("it is broken");
        return stream;
    }

    std::function<void()> onDelete;
    qxSerializeAction lastAction = QX_SERIALIZE_INPUT;
};

TEST(qxSerializeAdapterURL, managersOpenTheirSchemes)
{
    const qxRefPointer<TestManager> manager(new TestManager);
    EXPECT_TRUE(qxSerializeAdapter::registerURLManager("Test", manager));
    EXPECT_TRUE(qxSerializeAdapter::hasRegisteredURLManager("tEST"));
    EXPECT_EQ(qxSerializeAdapter::getURLManager("test").get(), manager.get());

    const Stream stream = qxSerializeAdapter::getURLAdapter("b", QX_SERIALIZE_OUTPUT, "test://host/a/");
    ASSERT_TRUE(stream);
    EXPECT_EQ(readAll(*stream), "test://host/a/b");
    EXPECT_STREQ(stream->getURLBase(), "test://host/a/");
    EXPECT_EQ(manager->lastAction, QX_SERIALIZE_OUTPUT);

    MessageRecorder recorder;
    EXPECT_FALSE(qxSerializeAdapter::getURLAdapter("test:none"));
    EXPECT_FALSE(qxSerializeAdapter::getURLAdapter("test:broken"));
    qxSerializeAdapter::unregisterURLManager(manager);
    EXPECT_FALSE(qxSerializeAdapter::getURLAdapter("test:b"));
    const std::vector<std::string> expected = {"Could not create URL Adapter 'test:none'",
                                               "URL Adapter (test:broken) Error:it is broken",
                                               "Could not create URL Adapter 'test:b'"};
    EXPECT_EQ(recorder.texts(), expected);
}

TEST(qxSerializeAdapterURL, aManagerIsRegisteredOncePerScheme)
{
    const qxRefPointer<TestManager> manager(new TestManager);
    const qxRefPointer<TestManager> other(new TestManager);
    for (const char* const scheme : {"file", "MEM", "con", "cache", "", "a", "1ab", "a:b"})
        EXPECT_FALSE(qxSerializeAdapter::registerURLManager(scheme, manager)) << scheme;
    EXPECT_FALSE(qxSerializeAdapter::registerURLManager("first", nullptr));
    EXPECT_TRUE(qxSerializeAdapter::registerURLManager("first", manager));
    EXPECT_TRUE(qxSerializeAdapter::registerURLManager("second", manager));
    EXPECT_TRUE(qxSerializeAdapter::registerURLManager("third", other));
    EXPECT_FALSE(qxSerializeAdapter::registerURLManager("first", other));
    EXPECT_EQ(manager->getRef(), 3U);

    qxSerializeAdapter::unregisterURLManager(manager);
    for (const char* const scheme : {"first", "second", "third"})
        EXPECT_EQ(qxSerializeAdapter::hasRegisteredURLManager(scheme), scheme == std::string("third"));
    EXPECT_FALSE(qxSerializeAdapter::getURLManager("first"));
    qxSerializeAdapter::unregisterURLManager(other);
    EXPECT_EQ(manager->getRef(), 1U);
}

TEST(qxSerializeAdapterURL, aManagerGoesOutsideTheLock)
{
    TestManager* const manager = new TestManager;
    bool wasAsked = false;
    manager->onDelete = [&] {
        wasAsked = onAnotherThread([] { return !qxSerializeAdapter::hasRegisteredURLManager("gone"); });
    };
    ASSERT_TRUE(qxSerializeAdapter::registerURLManager("gone", manager));
    qxSerializeAdapter::unregisterURLManager(manager);
    EXPECT_TRUE(wasAsked);
}

TEST(qxSerializeAdapterURL, threadsUseTheRegistry)
{
    onThreads(4, [](unsigned int number) {
        const qxString scheme = qxString::str("test%d", number);
        for (int k = 0; k < 100; ++k) {
            const qxRefPointer<TestManager> manager(new TestManager);
            qxSerializeAdapter::registerURLManager(scheme, manager);
            EXPECT_TRUE(qxSerializeAdapter::getURLAdapter(scheme + ":x"));
            qxSerializeAdapter::unregisterURLManager(manager);
        }
    });
}

} // namespace
