// SPDX-License-Identifier: see LICENSE

#include "qxerror.h"

#include "qxtesttexts.h"
#include "qxtestthreads.h"

#include <set>
#include <string>
#include <vector>

namespace
{

// The class, text, code and encoding of the error that `body` raises.
template <class Body>
std::string caughtFrom(Body&& body)
{
    const auto describe = [](const char* kind, const qxBaseError& error) {
        return std::string(kind) + " \"" + error.getErrorString().getString() + "\" " +
               std::to_string(error.getErrorCode()) + ' ' + std::to_string(error.getMessageEncoding());
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
    const struct {
        void (*raise)();
        const char* caught;
    } rows[] = {
        {[] { Throws::qxThrowFatal("value %d", 5); }, "fatal \"value 5\" 0 512"},
        {[] { Throws::qxThrowFatal(L"v\xE4lue %d", 5); }, "fatal \"v\xC3\xA4lue 5\" 0 512"},
        {[] { Throws::qxThrowFatal(0, "value %s", "x"); }, "fatal \"value x\" 0 0"},
        {[] { Throws::qxThrowFatal(0xA00U, L"value %d%%", 5); }, "fatal \"value 5%\" 0 2560"},
        {[] { Throws::qxThrowWarning("value %d", 5); }, "warning \"value 5\" 0 512"},
        {[] { Throws::qxThrowWarning(L"value"); }, "warning \"value\" 0 512"},
        {[] { Throws::qxThrowWarning(0x800, "value"); }, "warning \"value\" 0 2048"},
        {[] { Throws::qxThrowWarning(0x200, L"value %d", 5); }, "warning \"value 5\" 0 512"},
        {[] { throwFatalTemplateError("no such item"); }, "fatal \"Template-no such item\" 0 512"},
        {[] { Throws::qxThrowFatal("100% sure", 5); },
         "fatal \"100% sure\" 0 512"}, // no format: its own text
        {[] { Throws::qxThrowFatal("%s", nullptr); }, "fatal \"%s\" 0 512"},
    };
    for (const auto& row : rows) EXPECT_EQ(caughtFrom(row.raise), row.caught);
}

TEST(qxExceptionThrows, translatesUnlessTheEncodingForbidsIt)
{
    TestTranslator translator("T %d");
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
        TestTranslator translator(answer);
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

TEST(qxGenerateDebugString, keepsThreeHundredTexts)
{
    const char* const first = qxGenerateDebugString("file.cpp", -12, "2.10.1");
    for (int i = 0; i < 299; ++i) ASSERT_NE(qxGenerateDebugString("next", i, "v"), first);
    EXPECT_STREQ(first, "File: file.cpp  Line: -12  Ver: 2.10.1");
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
    onThreads(3, [&](unsigned int number) {
        const std::string name = std::to_string(number);
        for (int n = 0; n < 100; ++n) texts[number].push_back(qxGenerateDebugString(name.c_str(), n, "v"));
    });
    std::set<std::string> distinct; // a text that another thread wrote over would be there twice
    for (const std::vector<const char*>& theirs : texts) distinct.insert(theirs.begin(), theirs.end());
    EXPECT_EQ(distinct.size(), 300U);
    EXPECT_TRUE(distinct.contains("File: 2  Line: 99  Ver: v"));
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
