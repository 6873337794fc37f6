// SPDX-License-Identifier: see LICENSE

#include "qxserializeadapter.h"

#include "settings/qxsettingstest.h"

#include <string>
#include <vector>

namespace
{

typedef std::vector<std::string> Texts;

class qxKeyURL : public Settings
{
protected:
    static std::string read(const char* name)
    {
        const qxRefPointer<qxSerializeAdapter> adapter = qxSerializeAdapter::getURLAdapter(name);
        std::string bytes;
        if (!adapter) return "(none)";
        while (adapter->hasData()) bytes += static_cast<char>(adapter->read());
        return bytes;
    }

    static void write(const char* name, const std::string& bytes,
                      qxSerializeAction action = QX_SERIALIZE_OUTPUT)
    {
        const qxRefPointer<qxSerializeAdapter> adapter = qxSerializeAdapter::getURLAdapter(name, action);
        ASSERT_TRUE(adapter);
        adapter->write(bytes.data(), static_cast<unsigned int>(bytes.size()));
    }
};

TEST_F(qxKeyURL, readsAndSetsValues)
{
    ASSERT_TRUE(set("a/b", "x", " text\n"));
    ASSERT_TRUE(set("", "y", ""));
    EXPECT_EQ(read("reg:a/b/x"), " text\n");
    EXPECT_EQ(read("REG:/a//b/x?tree=1"), " text\n");
    EXPECT_EQ(read("reg:y"), "");
    write("reg:a/b/x", "other");
    EXPECT_EQ(get("a/b", "x"), "other");
    write("reg:a/b/x", " text", QX_SERIALIZE_APPEND);
    EXPECT_EQ(get("a/b", "x"), "other text");
    write("reg:a%20b/50%/c%3Fd", "");
    EXPECT_EQ(get("a b/50%", "c?d"), "");
}

TEST_F(qxKeyURL, refusesWhatIsNoValue)
{
    MessageRecorder recorder;
    EXPECT_EQ(read("reg:a/none"), "(none)");
    EXPECT_EQ(read("reg:"), "(none)");
    write("reg:a/x", "\x01");
    write("reg:a/x", std::string(65536, 'x'));
    EXPECT_EQ(get("a", "x"), "(none)");
    EXPECT_EQ(recorder.texts(), (Texts{"URL Adapter (reg:a/none) Error:There is no such key",
                                       "URL Adapter (reg:) Error:There is no such key",
                                       "Could not save settings '" + url() + "' (CharData is malformed)",
                                       "Could not set 'reg:a/x'", "Could not set 'reg:a/x'"}));
}

} // namespace
