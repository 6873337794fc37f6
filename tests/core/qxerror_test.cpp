// SPDX-License-Identifier: see LICENSE

#include "qxerror.h"

#include "qxtestsupport.h"

#include <cstring>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace
{

// Answers every text with its own, or by raising an error.
class Translator final : public qxMessageTranslatorInterface
{
public:
    explicit Translator(const char* answer) : m_answer(answer) { qxMessage::setMessageTranslator(this); }
    ~Translator() { qxMessage::setMessageTranslator(nullptr); }

    qxString onTranslate(const qxString&, qxMessageLevel, const qxString&) override
    {
        if (m_answer == "raise") qxExceptionThrows::qxThrowWarning("by the translator %d", 1);
        return m_answer;
    }

private:
    const qxString m_answer;
};

struct Caught {
    std::string kind;
    std::string text;
    int code;
    qxMessageEncoding encoding;

    bool operator==(const Caught&) const = default;
    friend std::ostream& operator<<(std::ostream& out, const Caught& caught)
    {
        return out << caught.kind << " \"" << caught.text << "\" " << caught.code << ' ' << caught.encoding;
    }
};

template <class Body>
Caught caughtFrom(Body&& body)
{
    const auto describe = [](const char* kind, const qxBaseError& error) {
        return Caught{kind, error.getErrorString().getString(), error.getErrorCode(),
                      error.getMessageEncoding()};
    };
    try {
        body();
    } catch (const qxFatalError& error) {
        return describe("fatal", error);
    } catch (const qxWarningError& error) {
        return describe("warning", error);
    }
    return {};
}

typedef qxExceptionThrows Throws;

TEST(qxExceptionThrows, raisesFormattedErrors)
{
    EXPECT_EQ(caughtFrom([] { Throws::qxThrowFatal("value %d", 5); }), (Caught{"fatal", "value 5", 0, 512}));
    EXPECT_EQ(caughtFrom([] { Throws::qxThrowFatal(L"v\xE4lue %d", 5); }),
              (Caught{"fatal", "v\xC3\xA4lue 5", 0, 512}));
    EXPECT_EQ(caughtFrom([] { Throws::qxThrowFatal(0, "value %s", "x"); }),
              (Caught{"fatal", "value x", 0, 0}));
    EXPECT_EQ(caughtFrom([] { Throws::qxThrowFatal(0xA00U, L"value %d%%", 5); }),
              (Caught{"fatal", "value 5%", 0, 0xA00}));
    EXPECT_EQ(caughtFrom([] { Throws::qxThrowWarning("value %d", 5); }),
              (Caught{"warning", "value 5", 0, 512}));
    EXPECT_EQ(caughtFrom([] { Throws::qxThrowWarning(L"value"); }), (Caught{"warning", "value", 0, 512}));
    EXPECT_EQ(caughtFrom([] { Throws::qxThrowWarning(0x800, "value"); }),
              (Caught{"warning", "value", 0, 0x800}));
    EXPECT_EQ(caughtFrom([] { Throws::qxThrowWarning(0x200, L"value %d", 5); }),
              (Caught{"warning", "value 5", 0, 0x200}));
}

TEST(qxExceptionThrows, translatesUnlessTheEncodingForbidsIt)
{
    Translator translator("T %d");
    EXPECT_EQ(fatalText([] { Throws::qxThrowFatal("value %d", 5); }), "T 5");
    EXPECT_EQ(fatalText([] { Throws::qxThrowFatal(0, "value %d", 5); }), "T 5");
    EXPECT_EQ(fatalText([] { Throws::qxThrowFatal(0x200, "value %d", 5); }), "value 5");
    EXPECT_EQ(warningText([] { Throws::qxThrowWarning(0x800, L"value %d", 5); }), "T 5");
    EXPECT_EQ(warningText([] { Throws::qxThrowWarning(0xA00, L"value %d", 5); }), "value 5");
}

TEST(qxExceptionThrows, anErrorKeepsItsTextWhenTheTranslationIsNoUse)
{
    for (const char* answer : {"", "%k", "%s", "raise"}) {
        SCOPED_TRACE(answer);
        Translator translator(answer);
        EXPECT_EQ(fatalText([] { Throws::qxThrowFatal("value %d", 5); }), "value 5");
        EXPECT_EQ(warningText([] { Throws::qxThrowWarning("%k %d", 5); }), "%k %d");
    }
}

TEST(qxExceptionThrows, needsNoLockWithoutATranslator)
{
    qxMessage::waitLock(); // another thread could not send now
    EXPECT_EQ(onAnotherThread([] { return fatalText([] { Throws::qxThrowFatal("value %d", 5); }); }),
              "value 5");
    qxMessage::unLock();
}

TEST(qxExceptionThrows, aWrongFormatIsItsOwnText)
{
    EXPECT_EQ(fatalText([] { Throws::qxThrowFatal("100% sure", 5); }), "100% sure");
    EXPECT_EQ(fatalText([] { Throws::qxThrowFatal("%s", nullptr); }), "%s");
}

TEST(qxExceptionThrows, helpsContainerTemplates)
{
    EXPECT_EQ(fatalText([] { throwFatalTemplateError("no such item"); }), "Template-no such item");
}

TEST(qxBaseError, reportsItsTextAsAMessage)
{
    const struct {
        qxMessageEncoding encoding;
        qxMessageLevel fatal;
        qxMessageLevel warning;
    } rows[] = {{0, 20480, 16384}, {512, 20992, 16896}, {0x400, 0x5400, 0x4400}};
    for (const auto& row : rows) {
        MessageRecorder recorder;
        qxFatalError("100% %s %d", 0, row.encoding).reportError();
        qxWarningError("%k", 7, row.encoding).reportError();
        qxBaseError("not sent", 0, row.encoding).reportError();

        const std::vector<RecordedMessage> expected = {{"QuaxoSDK", row.fatal, "100% %s %d"},
                                                       {"QuaxoSDK", row.warning, "%k"}};
        EXPECT_EQ(recorder.messages(), expected);
    }
}

TEST(qxBaseError, callsTheReportFunctionOfItsClass)
{
    static std::vector<std::string> s_reports;
    MessageRecorder recorder;
    qxFatalError::setReportFunction([](const qxFatalError& error) {
        s_reports.push_back("fatal " + std::string(error.getErrorString()));
    });
    qxWarningError::setReportFunction([](const qxWarningError& error) {
        s_reports.push_back("warning " + std::string(error.getErrorString()));
    });
    qxFatalError("a", 0, 0).reportError();
    qxWarningError("b", 0, 0).reportError();
    qxFatalError::setReportFunction(nullptr);
    qxWarningError::setReportFunction(nullptr);
    qxFatalError("c", 0, 512).reportError();

    EXPECT_EQ(s_reports, (std::vector<std::string>{"fatal a", "warning b"}));
    EXPECT_EQ(recorder.texts(), std::vector<std::string>{"c"});
}

TEST(qxBaseError, isCopiedWithItsText)
{
    const qxFatalError error("text", 9, 0x800);
    const qxFatalError copy(error);
    qxFatalError assigned("other", 0, 0);
    assigned = error;
    for (const qxFatalError& each : {copy, assigned}) {
        EXPECT_EQ(each.getErrorString(), "text");
        EXPECT_EQ(each.getErrorCode(), 9);
        EXPECT_EQ(each.getMessageEncoding(), 0x800U);
    }
}

TEST(qxGenerateDebugString, tellsThePlace)
{
    EXPECT_STREQ(qxGenerateDebugString("file.cpp", -12, "2.10.1"), "File: file.cpp  Line: -12  Ver: 2.10.1");
}

TEST(qxGenerateDebugString, keepsThreeHundredTexts)
{
    const char* const first = qxGenerateDebugString("first", 1, "v");
    for (int i = 0; i < 299; ++i) ASSERT_NE(qxGenerateDebugString("next", i, "v"), first);
    EXPECT_STREQ(first, "File: first  Line: 1  Ver: v");
    EXPECT_EQ(qxGenerateDebugString("again", 2, "v"), first);
    EXPECT_STREQ(first, "File: again  Line: 2  Ver: v");
}

TEST(qxGenerateDebugString, cutsLongTextsBehindAWholeCharacter)
{
    const struct {
        std::size_t count; // of "a" before one "\xC3\xA4" as the file's name
        std::string text;
    } rows[] = {
        {503, "File: " + std::string(503, 'a') + "\xC3\xA4"},
        {504, "File: " + std::string(504, 'a')},
        {505, "File: " + std::string(505, 'a')},
        {70000, "File: " + std::string(505, 'a')},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.count);
        const std::string file = std::string(row.count, 'a') + "\xC3\xA4";
        EXPECT_EQ(qxGenerateDebugString(file.c_str(), 1, "v"), row.text);
    }
}

TEST(qxGenerateDebugString, givesThreadsTheirOwnSlots)
{
    std::vector<std::vector<const char*>> texts(3);
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i) {
        threads.emplace_back([&, i] {
            for (int n = 0; n < 100; ++n)
                texts[static_cast<std::size_t>(i)].push_back(qxGenerateDebugString("file", i, "v"));
        });
    }
    for (std::thread& thread : threads) thread.join();

    std::set<const char*> distinct;
    for (int i = 0; i < 3; ++i) {
        for (const char* text : texts[static_cast<std::size_t>(i)]) {
            ASSERT_EQ(text, "File: file  Line: " + std::to_string(i) + "  Ver: v");
            distinct.insert(text);
        }
    }
    EXPECT_EQ(distinct.size(), 300U);
}

TEST(qxAssert, sendsTheConditionAndItsPlace)
{
    MessageRecorder recorder;
    QX_ASSERT(1 + 1 == 2);
    const int line = __LINE__ + 1;
    QX_ASSERT(recorder.messages().size() == 1);
#if defined(NDEBUG)
    static_cast<void>(line);
    EXPECT_TRUE(recorder.messages().empty());
#else
    const std::string text =
        "recorder.messages().size() == 1\nFile: " __FILE__ "  Line: " + std::to_string(line) +
        "  Ver: 2.10.1";
    EXPECT_EQ(recorder.messages(), (std::vector<RecordedMessage>{{"QuaxoSDK", 0x6000, text}}));
#endif
}

} // namespace
