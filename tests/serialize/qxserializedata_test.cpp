// SPDX-License-Identifier: see LICENSE

#include "qxserializedata.h"

#include "qxserializeadapterfile.h"
#include "qxserializebinary.h"
#include "qxserializestring.h"
#include "qxvaruint64.h"

#include "qxtestfolder.h"
#include "qxtestvalues.h"

namespace
{

/// Writes its text; may report another size.
class TextData final : public qxSerializeData
{
public:
    explicit TextData(std::string text, int surplus = 0) : m_text(std::move(text)), m_surplus(surplus) {}

    void write(qxSerializeAdapter* adapter) override
    {
        adapter->write(m_text.data(), static_cast<unsigned int>(m_text.size()));
        version = adapter->getAdapterVersion();
        flags = adapter->getAdapterFlags();
    }
    void read(qxSerializeAdapter* adapter) override
    {
        for (char& c : m_text) c = static_cast<char>(adapter->read());
    }
    unsigned int getDataSize(qxSerializeAdapter*) override
    {
        return static_cast<unsigned int>(static_cast<int>(m_text.size()) + m_surplus);
    }

    unsigned int version = 0; // of the adapter that was written to
    qxUInt64 flags = 0;

private:
    std::string m_text;
    int m_surplus;
};

TEST(qxSerializeData, isReadAgainAfterPushBackAsItWasWritten)
{
    for (const int surplus : {0, 1}) { // also when the reported size is too large
        for (const unsigned char mode : PUSH_BACK_MODES) {
            TestBlock stream("rest");
            stream.setPushBackMode(mode);
            stream.setAdapterVersion(3);
            stream.setAdapterFlags(5);
            TextData data("abc", surplus);
            data.pushBack(&stream);
            EXPECT_EQ(readAll(stream), "abcrest");
            EXPECT_FALSE(stream.hasError());
            EXPECT_EQ(data.version, 3U);
            EXPECT_EQ(data.flags, 5U);
        }
    }
}

TEST(qxSerializeData, aSizeThatIsTooSmallIsAnError)
{
    TestBlock stream("rest");
    TextData("abc", -1).pushBack(&stream);
    EXPECT_STREQ(stream.getError(), "Memory Adapter written beyond end");
    EXPECT_EQ(readAll(stream), "rest");
}

TEST(qxSerializeData, isWrittenOrReadByAction)
{
    TestBlock stream("xyz");
    TextData data("abc");
    for (const unsigned int action : {1U, 3U, 0U, 0xFFFFFFFFU})
        stream.serialize(&data, static_cast<qxSerializeAction>(action));
    EXPECT_EQ(stream.written + "," + stream.content, "abc,xyz");
    stream.serialize(&data, QX_SERIALIZE_INPUT);
    stream.serialize(&data, QX_SERIALIZE_OUTPUT);
    EXPECT_EQ(stream.written + "," + stream.content, "abcxyz,");
}

TEST(qxSerializeData, isReadFromAFileWhereverTheQueueEnds)
{
    const TestFolder folder;
    const std::string values = fromHex("01 02 03 04 AC 82 01") + "some text" + '\0' + "!";
    for (unsigned int before = 0; before <= values.size();
         ++before) { // bytes of the values that the queue holds
        SCOPED_TRACE(before);
        const unsigned int skipped = qxSerializeAdapterFile::QUEUE_SIZE - before;
        folder.write("file", std::string(skipped, 'x') + values);
        qxSerializeAdapterFile file(folder.name("file").c_str());
        file.qxSerializeAdapter::read(nullptr, skipped);

        qxSerializeBinary<unsigned int> number;
        qxVarUInt64 integer;
        qxSerializeString text;
        for (qxSerializeData* const data :
             {static_cast<qxSerializeData*>(&number), static_cast<qxSerializeData*>(&integer),
              static_cast<qxSerializeData*>(&text)})
            data->read(&file);
        EXPECT_EQ(number, 0x01020304U);
        EXPECT_EQ(integer, 0x412CU);
        EXPECT_STREQ(text.getString(), "some text");
        EXPECT_EQ(readAll(file), "!");
    }
}

} // namespace
