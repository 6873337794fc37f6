// SPDX-License-Identifier: see LICENSE

#include "qxmessage.h"

#include "qxguard.h"
#include "qxtesttexts.h"
#include "qxtestthreads.h"
#include "qxuniquestring.h"

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

namespace
{

typedef std::vector<std::string> Texts;

// A receiver that does what it is told.
class Doing final : public qxMessageReceiverInterface
{
public:
    explicit Doing(std::function<void()> action) : m_action(std::move(action))
    {
        qxMessage::addMessageReceiver(this);
    }

    void onMessage(const qxString&, qxMessageLevel, const char*) override { m_action(); }

private:
    const std::function<void()> m_action;
};

void warn(const char* text)
{
    qxMessage::message(QX_LEVEL_WARNING, text);
}

TEST(qxMessage, formatsItsArgumentsForItsSender)
{
    MessageRecorder recorder;
    qxMessage::message(QX_LEVEL_WARNING, "%d of %s", 5, "five");
    qxMessage::message(QX_LEVEL_NOTICE, L"%d \x263A", 6);
    qxMessage::message("Me", QX_LEVEL_WARNING, "%d%d%d%d%d%d%d%d%d%d%d%d%d%d%d %d", 1, 2, 3, 4, 5, 6, 7, 8, 9,
                       1, 2, 3, 4, 5, 6, 16);
    qxMessage::message("Me", QX_LEVEL_ALWAYS, L"%d%%", 7);
    qxMessage::message(QX_LEVEL_WARNING | QX_FLAG_LITERAL, "%d %", 5);
    qxMessage::messageText("Me", QX_LEVEL_WARNING, "%s %");

    const std::vector<RecordedMessage> expected = {
        {"QuaxoSDK", 0x4000, "5 of five"},    {"QuaxoSDK", 0x3000, "6 \xE2\x98\xBA"},
        {"Me", 0x4000, "123456789123456 16"}, {"Me", 0x7000, "7%"},
        {"QuaxoSDK", 0x4400, "%d %"},         {"Me", 0x4000, "%s %"},
    };
    EXPECT_EQ(recorder.messages(), expected);
}

TEST(qxMessage, dropsWhatTheLevelSettingKeepsOut)
{
    const struct {
        qxMessageLevel setting;
        qxMessageLevel level;
        bool passes;
    } rows[] = {
        {0x3000, 0x2000, false}, {0x3000, 0x3000, true},  {0x3000, 0x2FFF, false},
        {0x3000, 0x2200, false}, {0x3000, 0x4800, false}, {0x3800, 0x4800, true},
        {0x3800, 0x3000, true},  {0x3FFF, 0x307E, false}, {0x3FFF, 0x307F, true},
        {0x1000, 0x1001, true},  {0x1001, 0x1000, false}, {0x1001, 0x1001, true},
        {0x7000, 0x6FFF, false}, {0x7000, 0x7000, true},  {0, 0, true},
        {0, 0x800, false},       {0x800, 0x800, true},    {0x3000, 0x4E00, false},
        {0x3800, 0x2800, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << std::hex << row.setting << ' ' << row.level);
        MessageRecorder recorder(row.setting);
        qxMessage::message(row.level, "text");
        qxMessage::messageText("Me", row.level, "text");
        EXPECT_EQ(recorder.messages().size(), row.passes ? 2U : 0U);
        if (!row.passes) qxMessage::message(row.level, "%s", nullptr); // not even formatted
        qxMessage::setMessageLevel(28673);                             // beyond Always: ignored
        EXPECT_EQ(qxMessage::getMessageLevel(), row.setting);
    }
}

TEST(qxMessage, aTextIsAsLongAsAStringAtMost)
{
    MessageRecorder recorder;
    qxMessage::message(QX_LEVEL_WARNING, "%65535d", 1);
    EXPECT_EQ(fatalText([] { qxMessage::message(QX_LEVEL_WARNING, "%65536d", 1); }),
              "Too many characters in qxString");
    EXPECT_EQ(recorder.texts(), Texts{std::string(65534, ' ') + '1'});
}

TEST(qxMessage, callsTheReceiversInTheirOrderAndEachOnce)
{
    Texts calls;
    Doing first([&] { calls.push_back("first"); });
    Doing second([&] { calls.push_back("second"); });
    {
        Doing gone([] { ADD_FAILURE() << "called"; });
    }
    qxMessage::addMessageReceiver(&first);
    qxMessage::addMessageReceiver(nullptr);
    warn("text");
    qxMessage::removeMessageReceiver(&first);
    warn("text");

    EXPECT_EQ(calls, (Texts{"first", "second", "second"}));
}

TEST(qxMessage, aReceiverMayAddAndRemoveReceivers)
{
    Texts calls;
    MessageRecorder before;
    MessageRecorder late;
    qxMessage::removeMessageReceiver(&late);
    Doing third([&] { calls.push_back("third"); });
    qxMessage::removeMessageReceiver(&third);
    Doing first([&] {
        calls.push_back("first");
        qxMessage::addMessageReceiver(&late);
        qxMessage::removeMessageReceiver(&before);
        qxMessage::removeMessageReceiver(&first);
        qxMessage::removeMessageReceiver(&third);
    });
    Doing second([&] { calls.push_back("second"); });
    qxMessage::addMessageReceiver(&third);
    warn("a");
    warn("b");

    EXPECT_EQ(calls, (Texts{"first", "second", "second"}));
    EXPECT_EQ(before.texts(), Texts{"a"});
    EXPECT_EQ(late.texts(), Texts{"b"}); // called from the next message on
}

TEST(qxMessage, aReceiverMaySendMessagesAndSetTheLevel)
{
    MessageRecorder recorder;
    bool isNested = false;
    Doing sending([&] {
        if (isNested) return;
        isNested = true;
        warn("inner");
        EXPECT_EQ(qxMessage::getMessageLevel(), QX_LEVEL_NOTICE);
        qxMessage::setMessageLevel(QX_LEVEL_FATAL);
        EXPECT_EQ(qxMessage::getMessageLevel(), QX_LEVEL_FATAL);
        warn("dropped");
    });
    warn("outer");
    EXPECT_EQ(recorder.texts(), (Texts{"outer", "inner"}));
}

// The library's name must not depend on the table of unique strings, which goes when the application says so.
TEST(qxMessage, theSenderKeepsItsNameWhenAReceiverComparesIt)
{
    struct Comparing final : qxMessageReceiverInterface {
        void onMessage(const qxString& sender, qxMessageLevel, const char*) override
        {
            if (sender == name) ++hits;
        }
        const qxUniqueString name{qxString("QuaxoSDK")};
        int hits = 0;
    };
    MessageRecorder recorder;
    TestTranslator translator("T");
    {
        Comparing comparing;
        qxMessage::addMessageReceiver(&comparing);
        warn("a");
        EXPECT_EQ(comparing.hits, 1);
    }
    qxUniqueString::cleanAllUniqueId();
    warn("b");
    EXPECT_FALSE(qxMessage::getDefaultSender().isUnique());
    EXPECT_EQ(recorder.messages()[1], (RecordedMessage{"QuaxoSDK", 0x4000, "T"}));
}

TEST(qxMessage, whatIsRaisedInsideLeavesTheChannelUsable)
{
    MessageRecorder recorder;
    {
        Doing raising([] { qxExceptionThrows::qxThrowWarning("raised"); });
        EXPECT_EQ(warningText([] { warn("a"); }), "raised");
    }
    EXPECT_EQ(fatalText([] { warn("%k"); }), "Unknown format option in string '%k'");
    std::thread([] { warn("b"); }).join();

    EXPECT_EQ(recorder.texts(), (Texts{"a", "b"}));
}

TEST(qxMessage, translatesBeforeItFormats)
{
    EXPECT_EQ(qxMessage::getMessageTranslator(), nullptr);
    EXPECT_EQ(qxMessage::translate("Me", "text"), "text");
    MessageRecorder recorder;
    TestTranslator translator("T %d");
    EXPECT_EQ(qxMessage::getMessageTranslator(), &translator);
    qxMessage::message("Me", QX_LEVEL_NOTICE, "%d", 5);
    qxMessage::message(QX_LEVEL_WARNING | QX_FLAG_LITERAL, "%d", 6);
    qxMessage::message(QX_LEVEL_WARNING | QX_FLAG_UNTRANSLATED, "%d", 7);
    qxMessage::messageText("Me", QX_LEVEL_WARNING, "%d");
    EXPECT_EQ(qxMessage::translate("Me", "text"), "T %d");

    const std::vector<RecordedMessage> asked = {
        {"Me", 0x3000, "%d"}, {"QuaxoSDK", 0x4400, "%d"}, {"Me", 0x4000, "%d"}, {"Me", 0x7000, "text"}};
    EXPECT_EQ(translator.asked(), asked);
    EXPECT_EQ(recorder.texts(), (Texts{"T 5", "T %d", "7", "T %d"}));
}

TEST(qxMessage, anEmptyTranslationSuppressesFromNoticeOn)
{
    MessageRecorder recorder(QX_LEVEL_MEMORY);
    TestTranslator translator("");
    warn("%k is not looked at");
    qxMessage::message(QX_LEVEL_DEBUG, "debug");
    qxMessage::message(0x20FF, "nearly a notice");

    EXPECT_EQ(recorder.texts(), (Texts{"debug", "nearly a notice"}));
    EXPECT_EQ(translator.asked().size(), 1U);
    EXPECT_EQ(qxMessage::translate("Me", "an error keeps its text"), "an error keeps its text");
}

TEST(qxMessage, aMessageIsNotMixedWithThoseOfOtherThreads)
{
    MessageRecorder recorder;
    onThreads(4, [](unsigned int number) {
        for (int n = 0; n < 100; ++n) {
            qxMessage::waitLock();
            qxMessage::message(QX_LEVEL_WARNING, "%d", number);
            qxMessage::message(QX_LEVEL_WARNING, "%d", number);
            qxMessage::unLock();
        }
    });
    const Texts texts = recorder.texts();
    ASSERT_EQ(texts.size(), 800U);
    for (std::size_t i = 0; i < texts.size(); i += 2) ASSERT_EQ(texts[i], texts[i + 1]);
}

TEST(qxMessage, theLevelMayBeSetWhileOthersSend)
{
    MessageRecorder recorder;
    std::atomic<bool> isOver{false};
    std::thread sending([&] {
        while (!isOver) warn("text");
    });
    for (int i = 0; i < 200; ++i) qxMessage::setMessageLevel(i % 2 ? QX_LEVEL_FATAL : QX_LEVEL_WARNING);
    isOver = true;
    sending.join();

    warn("dropped");
    for (const std::string& text : recorder.texts()) ASSERT_EQ(text, "text");
}

TEST(qxMessage, anUnlockWithoutALockIsIgnored)
{
    MessageRecorder recorder;
    qxMessage::unLock();
    qxMessage::waitLock();
    std::thread([] { qxMessage::unLock(); }).join();
    std::thread other([] { warn("other"); });
    warn("first");
    qxMessage::unLock();
    other.join();

    EXPECT_EQ(recorder.texts(), (Texts{"first", "other"}));
}

} // namespace
