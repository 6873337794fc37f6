// SPDX-License-Identifier: see LICENSE

#include "qxkeydatabase.h"

#include "settings/qxsettingstest.h"
#include "settings/qxwriterprogram.h"

#include "qxevent.h"
#include "qxguard.h"

#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace
{

typedef std::vector<std::string> Texts;

/// Writes down what it is told.
class Receiver final : public qxKeyReceiverInterface
{
public:
    Receiver() { EXPECT_TRUE(qxKeyDatabase::addReceiver(this)); }
    ~Receiver() override { qxKeyDatabase::removeReceiver(this); }

    void onKeyChange(const qxKeyChange& change) override
    {
        const auto valueOf = [](unsigned char isThere, const qxString& value) {
            return isThere ? "'" + std::string(value.getString()) + "'" : std::string("none");
        };
        const qxBodyGuard guard(*m_event);
        m_told.push_back(std::string(change.path) + "/" + change.name.getString() + ": " +
                         valueOf(change.existed, change.before) + " -> " +
                         valueOf(change.exists, change.after));
        m_event->fire();
    }

    /// Waits for so many changes since the last call, at most a minute, and returns them.
    Texts take(std::size_t count)
    {
        const qxBodyGuard guard(*m_event);
        while (m_told.size() < count && m_event->waitAndLock(60000, 1)) {}
        return std::exchange(m_told, {});
    }

private:
    const std::unique_ptr<qxEvent> m_event = std::make_unique<qxEvent>(); // guards what was told
    Texts m_told;
};

class qxKeyWatchTest : public Settings
{};

TEST_F(qxKeyWatchTest, tellsWhatThisProgramChanges)
{
    ASSERT_TRUE(set("a", "x", "1"));
    Receiver receiver;
    ASSERT_TRUE(set("a", "x", "2"));
    EXPECT_EQ(receiver.take(1), Texts{"a/x: '1' -> '2'"});
    ASSERT_TRUE(set("a", "y", ""));
    EXPECT_EQ(receiver.take(1), Texts{"a/y: none -> ''"});
    ASSERT_TRUE(remove("a", "x"));
    EXPECT_EQ(receiver.take(1), Texts{"a/x: '2' -> none"});
}

TEST_F(qxKeyWatchTest, tellsWhatOtherProgramsChangeHoweverOftenTheyReplaceTheFile)
{
    ASSERT_TRUE(set("a/b", "own", "1"));
    Receiver receiver;
    WriterProgram writer(url(), "k", 20);
    std::set<std::string> told;
    for (Texts more = receiver.take(1); !more.empty() && told.size() < 20;) {
        for (const std::string& change : more) EXPECT_TRUE(told.insert(change).second) << change;
        if (told.size() < 20) more = receiver.take(1);
    }
    std::set<std::string> expected;
    for (int i = 0; i < 20; ++i)
        expected.insert("a/b/k" + std::to_string(i) + ": none -> 'k" + std::to_string(i) + "'");
    EXPECT_EQ(told, expected);
    EXPECT_EQ(get("a/b", "k7"), "k7");
}

TEST_F(qxKeyWatchTest, seesAFileThatIsWrittenInPlace)
{
    ASSERT_TRUE(use("<r><a><x>1</x></a></r>"));
    Receiver receiver;
    folder.write("test.reg", "<r><a><x>one</x></a></r>");
    EXPECT_EQ(receiver.take(1), Texts{"r/a/x: '1' -> 'one'"});
}

TEST_F(qxKeyWatchTest, followsTheDocumentInForce)
{
    ASSERT_TRUE(set("a", "x", "1"));
    folder.write("other/test.reg", "<registry><a><x>2</x></a></registry>");
    Receiver receiver;
    ASSERT_TRUE(qxKeyDatabase::setLocalRegistry(url("other/test.reg").c_str()));
    EXPECT_EQ(receiver.take(1), Texts{"a/x: '1' -> '2'"});
    folder.write("other/test.reg", "<registry><a><x>3</x></a></registry>");
    EXPECT_EQ(receiver.take(1), Texts{"a/x: '2' -> '3'"});
}

TEST_F(qxKeyWatchTest, seesAFolderComeAndGo)
{
    ASSERT_TRUE(qxKeyDatabase::openLocalRegistry(url("new/test.reg").c_str()));
    Receiver receiver;
    folder.write("new/test.reg", "<registry><a><x>1</x></a></registry>");
    EXPECT_EQ(receiver.take(1), Texts{"a/x: none -> '1'"});
    std::filesystem::remove_all(folder.path() / "new");
    EXPECT_EQ(receiver.take(1), Texts{"a/x: '1' -> none"});
    folder.write("new/test.reg", "<registry><a><x>2</x></a></registry>");
    EXPECT_EQ(receiver.take(1), Texts{"a/x: none -> '2'"});
}

TEST_F(qxKeyWatchTest, aDocumentThatIsBrokenForAWhileChangesNothing)
{
    ASSERT_TRUE(use("<r><a><x>1</x></a></r>"));
    MessageRecorder recorder;
    Receiver receiver;
    folder.write("test.reg", "<r><a>");
    folder.write("test.reg", "<r><a><x>2</x></a></r>");
    EXPECT_EQ(receiver.take(1), Texts{"r/a/x: '1' -> '2'"});
}

TEST_F(qxKeyWatchTest, whatAReceiverRaisesStopsNobody)
{
    class Raising final : public qxKeyReceiverInterface
    {
    public:
        Raising() { qxKeyDatabase::addReceiver(this); }
        ~Raising() override { qxKeyDatabase::removeReceiver(this); }
        void onKeyChange(const qxKeyChange&) override { throw std::string("no"); }
    };

    MessageRecorder recorder;
    const Raising raising;
    Receiver receiver;
    for (const char* const value : {"1", "2"}) {
        ASSERT_TRUE(set("a", "x", value));
        EXPECT_EQ(receiver.take(1).size(), 1U);
    }
}

TEST_F(qxKeyWatchTest, aReceiverMayUseTheDatabaseAndRemoveItself)
{
    class Once final : public qxKeyReceiverInterface
    {
    public:
        Once() { qxKeyDatabase::addReceiver(this); }
        ~Once() override { qxKeyDatabase::removeReceiver(this); }
        void onKeyChange(const qxKeyChange& change) override
        {
            qxKeyDatabase::removeReceiver(this);
            qxKeyDatabase::setRegKey(QX_KEY_USER, "answer", change.name, change.after);
            const qxBodyGuard guard(*called);
            isCalled = true;
            called->fire();
        }
        const std::unique_ptr<qxEvent> called = std::make_unique<qxEvent>(); // guards the flag
        bool isCalled = false;
    };

    for (const char* const value : {"1", "2"}) { // the thread of the first ends by itself
        Once once;
        ASSERT_TRUE(set("a", "x", value));
        const qxBodyGuard guard(*once.called);
        while (!once.isCalled) ASSERT_TRUE(once.called->waitAndLock(60000, 1));
        EXPECT_EQ(get("answer", "x"), value);
    }
}

TEST_F(qxKeyWatchTest, receiversComeAndGoWhileOthersChangeKeysAndSendMessages)
{
    MessageRecorder recorder;
    onThreads(3, [](unsigned int thread) {
        for (int i = 0; i < 15; ++i) {
            if (thread == 0)
                EXPECT_TRUE(set("a", "x", std::to_string(i)));
            else if (thread == 1)
                Receiver().take(0);
            else
                qxMessage::message(QX_LEVEL_NOTICE, "%d", i);
        }
    });
}

} // namespace
