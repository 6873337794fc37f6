// SPDX-License-Identifier: see LICENSE

#include "qxserializeadapter.h"

#include "qxtestfolder.h"
#include "qxteststream.h"
#include "qxtestsupport.h"
#include "qxtestthreads.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

using Stream = qxRefPointer<qxSerializeAdapter>;

/// Makes a pipe's end a standard stream while it lives; the other end is `other`.
class StandardPipe
{
public:
    explicit StandardPipe(int descriptor) : m_descriptor(descriptor), m_saved(dup(descriptor))
    {
        int ends[2];
        if (pipe(ends) != 0) std::abort();
        const int index = descriptor == STDIN_FILENO ? 0 : 1;
        dup2(ends[index], descriptor);
        close(ends[index]);
        other = ends[1 - index];
    }
    ~StandardPipe()
    {
        restore();
        closeOther();
    }

    void put(const std::string& text) const
    {
        EXPECT_EQ(write(other, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    std::string get() const
    {
        char bytes[1000];
        const ssize_t count = ::read(other, bytes, sizeof(bytes));
        return {bytes, static_cast<std::size_t>(std::max<ssize_t>(count, 0))};
    }
    void closeOther()
    {
        if (other >= 0) close(other);
        other = -1;
    }
    void restore()
    {
        if (m_saved < 0) return;
        dup2(m_saved, m_descriptor);
        close(m_saved);
        m_saved = -1;
    }

    int other = -1;

private:
    int m_descriptor;
    int m_saved;
};

TEST(qxSerializeAdapterConsole, readsWhatIsThere)
{
    StandardPipe input(STDIN_FILENO);
    const Stream stream = qxSerializeAdapter::getURLAdapter("con:");
    ASSERT_TRUE(stream);
    EXPECT_EQ(stream->length(), 0U);
    input.put("abc");
    EXPECT_TRUE(stream->hasData()); // would wait for ever if it wanted more
    EXPECT_EQ(stream->length(), 3U);
    EXPECT_EQ(readBlock(*stream, 3), "abc");

    input.put("de");
    EXPECT_TRUE(stream->hasData(2));
    input.put("f");
    input.closeOther();
    EXPECT_EQ(readBlock(*stream, 100), "def"); // up to the end
    EXPECT_FALSE(stream->hasData());
    EXPECT_FALSE(stream->hasError());
    EXPECT_TRUE(stream->supportAction(QX_SERIALIZE_INPUT));
    EXPECT_FALSE(stream->supportAction(QX_SERIALIZE_OUTPUT));
}

TEST(qxSerializeAdapterConsole, aBlockIsWaitedFor)
{
    StandardPipe input(STDIN_FILENO);
    const Stream stream = qxSerializeAdapter::getURLAdapter("con:");
    EXPECT_TRUE(onAnotherThread([&] {
        input.put("ab");
        EXPECT_EQ(readBlock(*stream, 1), "a");
        input.put("cd");
        return true;
    }));
    EXPECT_EQ(readBlock(*stream, 3), "bcd");
}

TEST(qxSerializeAdapterConsole, writesAtFlushAndAtTheEnd)
{
    for (const char* const url : {"con:", "CON:error"}) {
        StandardPipe output(std::string(url) == "con:" ? STDOUT_FILENO : STDERR_FILENO);
        {
            const Stream stream = qxSerializeAdapter::getURLAdapter(url, QX_SERIALIZE_APPEND);
            output.restore(); // the test's own output goes its way
            EXPECT_TRUE(stream->supportAction(QX_SERIALIZE_OUTPUT));
            writeText(*stream, "ab");
            stream->flush();
            EXPECT_EQ(output.get(), "ab");
            stream->write('c');
        }
        EXPECT_EQ(output.get(), "c");
        EXPECT_EQ(output.get(), ""); // nobody holds the other end
    }
}

TEST(qxSerializeAdapterConsole, whatIsNotThereIsNotOpened)
{
    MessageRecorder recorder;
    EXPECT_FALSE(qxSerializeAdapter::getURLAdapter("con:error"));
    EXPECT_FALSE(qxSerializeAdapter::getURLAdapter("con:x", QX_SERIALIZE_OUTPUT));
    const int saved = dup(STDIN_FILENO);
    close(STDIN_FILENO);
    EXPECT_FALSE(qxSerializeAdapter::getURLAdapter("con:"));
    dup2(saved, STDIN_FILENO);
    close(saved);
    EXPECT_EQ(recorder.texts(),
              (std::vector<std::string>{
                  "Could not create URL Adapter 'con:error'", "Could not create URL Adapter 'con:x'",
                  "URL Adapter (con:) Error:Could not open 'con:' for reading (Bad file descriptor)"}));
}

TEST(qxSerializeAdapterConsole, aStreamThatDoesNotWaitIsWaitedFor)
{
    StandardPipe input(STDIN_FILENO);
    fcntl(STDIN_FILENO, F_SETFL, O_NONBLOCK);
    const Stream stream = qxSerializeAdapter::getURLAdapter("con:");
    std::string got;
    std::thread reader([&] { got = readBlock(*stream, 3); });
    input.put("abc");
    reader.join();
    EXPECT_EQ(got, "abc");
}

TEST(qxSerializeAdapterDevice, pipesAreReadToTheirEnd)
{
    const TestFolder folder;
    ASSERT_EQ(mkfifo(folder.name("pipe").c_str(), 0600), 0);
    const int end = open(folder.name("pipe").c_str(), O_RDWR | O_NONBLOCK);
    ASSERT_EQ(write(end, "abc", 3), 3);
    const Stream stream = qxSerializeAdapter::getURLAdapter(folder.name("pipe").c_str());
    ASSERT_TRUE(stream);
    close(end);
    EXPECT_EQ(readAll(*stream), "abc");
    const std::string base = "file:" + folder.name() + "/";
    EXPECT_STREQ(stream->getURLBase(), base.c_str());
}

} // namespace
