// SPDX-License-Identifier: see LICENSE

#include "qxmessage.h"

#include "qxtesttexts.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include <cxxabi.h>

namespace
{

// The default receiver with its outputs replaced. Standard output is collected.
class qxDefaultReceiver : public testing::Test
{
protected:
    qxDefaultReceiver()
    {
        s_debugOutput.clear();
        s_dialogs.clear();
        s_answer = QX_ASSERT_IGNORE;
        qxMessage::setDebugOutput([](const char* line) { s_debugOutput += line; });
        qxMessage::setAssertDialog([](const char* title, const char* body) {
            s_dialogs.push_back(std::string(title) + "|" + body);
            return s_answer;
        });
        qxMessage::addMessageReceiver(qxMessage::getDefaultMessageReceiver());
        testing::internal::CaptureStdout();
    }

    ~qxDefaultReceiver() override
    {
        qxMessage::removeMessageReceiver(qxMessage::getDefaultMessageReceiver());
        qxMessage::setDebugOutput(nullptr);
        qxMessage::setAssertDialog(nullptr);
        qxMessage::setMessageLevel(QX_LEVEL_NOTICE);
        if (m_isCapturing) output();
    }

    std::string output()
    {
        m_isCapturing = false;
        return testing::internal::GetCapturedStdout();
    }

    static inline std::string s_debugOutput;
    static inline std::vector<std::string> s_dialogs;
    static inline qxAssertAnswer s_answer = QX_ASSERT_IGNORE;

private:
    bool m_isCapturing = true;
};

TEST_F(qxDefaultReceiver, labelsEveryLevel)
{
    const struct {
        qxMessageLevel level;
        const char* plain;
        const char* internal;
    } rows[] = {
        {0x1000, " Memory::", " Internal Memory::"},
        {0x1001, " Perf::", " Internal Perf::"},
        {0x2000, " Debug::", " Internal Debug::"},
        {0x3000, " Notice::", " Internal Notice::"},
        {0x4000, " Warning::", " Internal Warning::"},
        {0x5000, " Fatal::", " Internal Fatal::"},
        {0x6000, " Assert::", " Internal Assert::"},
        {0x7000, " Always::", " Internal Always::"},
        {0x4200, " Warning::", " Internal Warning::"},
        {0x4600, " Warning::", " Internal Warning::"},
        {0x2001, "", " Internal::"},
        {0x8000, "", " Internal::"},
    };
    qxMessage::setMessageLevel(0x0800);
    std::string expected;
    for (const auto& row : rows) {
        const std::string text = (row.level & 0x400) != 0 ? "text %d\n" : "text 1\n";
        qxMessage::message("Me", row.level, "text %d", 1);
        qxMessage::message("Me", row.level | QX_FLAG_INTERNAL, "text %d", 1);
        expected += std::string("\rMe") + row.plain + text + "\rMe" + row.internal + text;
    }
    EXPECT_EQ(output(), expected);
}

TEST_F(qxDefaultReceiver, sendsTheLineToTheDebugOutputToo)
{
    qxMessage::message(QX_LEVEL_NOTICE, "a %s", "b");
    qxMessage::messageText("%s%n", QX_LEVEL_NOTICE, "%s%n%d"); // no formats
    EXPECT_EQ(output(), "\rQuaxoSDK Notice::a b\n\r%s%n Notice::%s%n%d\n");
    EXPECT_EQ(s_debugOutput, "QuaxoSDK Notice::a b\n%s%n Notice::%s%n%d\n");
}

TEST_F(qxDefaultReceiver, cutsTheHeaderBehindAWholeCharacter)
{
    const struct {
        std::size_t sender; // bytes of "a", then one "\xC3\xA4"
        std::string header;
    } rows[] = {
        {1012, std::string(1012, 'a') + "\xC3\xA4 Warning::"},
        {1013, std::string(1013, 'a') + "\xC3\xA4 Warning:"},
        {1022, std::string(1022, 'a') + "\xC3\xA4"},
        {1023, std::string(1023, 'a')},
        {5000, std::string(1024, 'a')},
    };
    std::string expected;
    for (const auto& row : rows) {
        const std::string sender = std::string(row.sender, 'a') + "\xC3\xA4";
        qxMessage::message(qxString(sender.c_str()), QX_LEVEL_WARNING, "text");
        expected += "\r" + row.header + "text\n";
    }
    EXPECT_EQ(output(), expected);
}

TEST_F(qxDefaultReceiver, translatesTheLabel)
{
    {
        TestTranslator translator(" Achtung::");
        qxMessage::message("Me", QX_LEVEL_WARNING | QX_FLAG_UNTRANSLATED, "a");
        EXPECT_EQ(translator.asked(), (std::vector<RecordedMessage>{{"Me", 0x7000, " Warning::"}}));
    }
    TestTranslator translator("");
    qxMessage::message("Me", QX_LEVEL_FATAL | QX_FLAG_UNTRANSLATED, "b");
    EXPECT_EQ(output(), "\rMe Achtung::a\n\rMeb\n");
}

TEST_F(qxDefaultReceiver, asksAboutAssertions)
{
    qxMessage::message(QX_LEVEL_ASSERT | QX_FLAG_UNTRANSLATED, "i < %d", 5);
    qxMessage::message(QX_LEVEL_FATAL, "no assertion");

    const std::vector<std::string> expected = {
        "QuaxoSDK Assert|\ni < 5\n\n---- Press 'Retry' to debug  ----\n\n"
        "---- Press 'Ignore' to continue execution  ----"};
    EXPECT_EQ(s_dialogs, expected);
    EXPECT_EQ(output(), "\rQuaxoSDK Assert::i < 5\n\rQuaxoSDK Fatal::no assertion\n");
}

TEST_F(qxDefaultReceiver, retryRaisesABreakpointAndAbortEndsTheProcess)
{
    s_answer = QX_ASSERT_RETRY;
    try {
        qxMessage::message(QX_LEVEL_ASSERT, "text");
        ADD_FAILURE() << "nothing was raised";
    } catch (const qxFatalError& error) {
        EXPECT_EQ(error.getErrorString(), "breakpoint");
        EXPECT_EQ(error.getErrorCode(), 9999);
    }
    std::thread([] { qxMessage::message(QX_LEVEL_NOTICE, "goes on"); }).join();
    EXPECT_EQ(output(), "\rQuaxoSDK Assert::text\n\rQuaxoSDK Notice::goes on\n");
    s_answer = QX_ASSERT_ABORT;
    EXPECT_DEATH(qxMessage::message(QX_LEVEL_ASSERT, "text"), "");
}

// Each of these needs a process in which no message was sent before.
class qxMessageInANewProcess : public testing::Test
{
protected:
    qxMessageInANewProcess() { testing::FLAGS_gtest_death_test_style = "threadsafe"; }

    // Runs `body` and ends with what it wrote to standard output on standard error.
    template <class Body>
    [[noreturn]] static void echoOutput(Body&& body)
    {
        testing::internal::CaptureStdout();
        body();
        std::fprintf(stderr, "[%s]", testing::internal::GetCapturedStdout().c_str());
        std::exit(0);
    }

    static testing::ExitedWithCode done() { return testing::ExitedWithCode(0); }
    static void notice(const char* text) { qxMessage::message(QX_LEVEL_NOTICE, text); }
};

TEST_F(qxMessageInANewProcess, theFirstMessageInstallsTheDefaultReceiver)
{
    const struct {
        const char* name;
        void (*body)();
        const char* output;
    } rows[] = {
        {"installed", [] { notice("a"); }, "[\rQuaxoSDK Notice::a\n]"},
        {"by a dropped message too",
         [] {
             qxMessage::message(QX_LEVEL_DEBUG, "a");
             MessageRecorder recorder;
             notice("b");
         },
         "[\rQuaxoSDK Notice::b\n]"},
        {"kept out by another receiver, and still due when that has gone",
         [] {
             {
                 MessageRecorder recorder;
                 notice("a");
             }
             notice("b");
         },
         "[\rQuaxoSDK Notice::b\n]"},
        {"not installed again",
         [] {
             notice("a");
             qxMessage::removeMessageReceiver(qxMessage::getDefaultMessageReceiver());
             notice("b");
         },
         "[\rQuaxoSDK Notice::a\n]"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EXIT(echoOutput(row.body), done(), testing::Eq(row.output));
    }
}

#if defined(__ELF__)

bool s_sendsAtUnload = false;

// What is registered for no module before the libraries are initialised runs when their statics have gone
// down.
void registerSendAtUnload(int, char**, char**)
{
    const auto send = [](void*) {
        if (s_sendsAtUnload) qxMessage::message(QX_LEVEL_ALWAYS, "too late");
    };
    abi::__cxa_atexit(send, nullptr, nullptr);
}

[[gnu::section(".preinit_array"), gnu::used]] void (*s_registerSendAtUnload)(int, char**,
                                                                             char**) = &registerSendAtUnload;

TEST_F(qxMessageInANewProcess, dropsMessagesAtUnload)
{
    class Echo final : public qxMessageReceiverInterface
    {
    public:
        void onMessage(const qxString&, qxMessageLevel, const char* text) override
        {
            std::fprintf(stderr, "[%s]", text);
        }
    };
    const auto body = [] {
        qxMessage::addMessageReceiver(new Echo); // never destroyed
        s_sendsAtUnload = true;
        std::atexit([] { qxMessage::message(QX_LEVEL_ALWAYS, "in time"); });
        std::exit(0);
    };
    EXPECT_EXIT(body(), done(), testing::Eq("[in time]"));
}

#endif

} // namespace
