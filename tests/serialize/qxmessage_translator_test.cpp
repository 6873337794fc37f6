// SPDX-License-Identifier: see LICENSE

#include "qxmessage.h"

#include "qxarray.h"
#include "qxtestfolder.h"
#include "qxtestkeys.h"
#include "qxtesttexts.h"
#include "qxtestthreads.h"

#include <filesystem>
#include <string>
#include <vector>

namespace
{

typedef std::vector<std::string> Texts;

// The default translator with a language file of the test's own.
class qxDefaultTranslator : public testing::Test
{
protected:
    qxDefaultTranslator()
    {
        setUserKey("QUAXO_LANGUAGE_FILE", "file:" + m_folder.name("test.lng"));
        qxMessageTranslatorInterface::setCurrentLanguage("");
        qxMessageTranslatorInterface::useDefaultTranslator(true);
    }

    ~qxDefaultTranslator() override { qxMessageTranslatorInterface::useDefaultTranslator(false); }

    void writeFile(const std::string& content) const { m_folder.write("test.lng", content); }

    static std::string translate(const char* text, const char* sender = "Me")
    {
        return qxMessage::translate(sender, text).getString();
    }

    const TestFolder m_folder;
};

TEST_F(qxDefaultTranslator, takesEnteredTranslationsThenTheSendersThenEverybodys)
{
    writeFile("\xEF\xBB\xBF"
              "a comment\n"
              "Me\thello %s\thallo %s\r\n"
              "\tyes\tja\n"
              "Me\tyes\tjawohl\n"
              "\ttab\\tline\\nback\\\\\tTab\\tZeile\\n\n"
              "only two\tfields\n"
              "\n"
              "\tmore\tfields\tthan three\n"
              "\tentered\tfrom the file\n"
              "\tlast\tletzte");
    qxMessage::setTranslation("", "entered", "by hand");
    qxMessage::setTranslation("You", "entered", "by your hand");
    const struct {
        const char* text;
        const char* sender;
        const char* translation;
    } rows[] = {
        {"hello %s", "Me", "hallo %s"},
        {"hello %s", "You", "hello %s"},
        {"yes", "Me", "jawohl"},
        {"yes", "You", "ja"},
        {"yes", "", "ja"},
        {"tab\tline\nback\\", "Me", "Tab\tZeile\n"},
        {"fields", "only two", "fields"},
        {"more", "Me", "fields\tthan three"},
        {"entered", "Me", "by hand"},
        {"entered", "You", "by your hand"},
        {"last", "Me", "letzte"},
        {"no", "Me", "no"},
    };
    for (const auto& row : rows) EXPECT_EQ(translate(row.text, row.sender), row.translation);
}

TEST_F(qxDefaultTranslator, takesTheSectionOfTheCurrentLanguage)
{
    writeFile("\tyes\tyea\n"
              "[de]\n"
              "\tyes\tja\n"
              "[fr]\n"
              "\tyes\toui\n"
              "\tno\tnon\n");
    const struct {
        const char* language;
        const char* yes;
        const char* no;
    } rows[] = {{"", "yea", "no"}, {"de", "ja", "no"}, {"fr", "oui", "non"}, {"it", "yea", "no"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.language);
        qxMessageTranslatorInterface::setCurrentLanguage(row.language);
        EXPECT_EQ(qxMessageTranslatorInterface::getCurrentLanguage(), row.language);
        EXPECT_EQ(translate("yes"), row.yes);
        EXPECT_EQ(translate("no"), row.no);
    }
}

TEST_F(qxDefaultTranslator, anEmptyTranslationSuppressesAMessage)
{
    writeFile("\tnobody wants this\t\n");
    MessageRecorder recorder;
    qxMessage::message(QX_LEVEL_WARNING, "nobody wants this");
    qxMessage::message(QX_LEVEL_WARNING, "but this");
    EXPECT_EQ(recorder.texts(), Texts{"but this"});
    EXPECT_EQ(fatalText([] { qxExceptionThrows::qxThrowFatal("nobody wants this"); }), "nobody wants this");
}

TEST_F(qxDefaultTranslator, theWarningAboutAMissingFileIsNotTranslated)
{
    MessageRecorder recorder;
    qxMessage::message(QX_LEVEL_WARNING, "a");
    qxMessage::message(QX_LEVEL_WARNING, "b");

    const Texts texts = recorder.texts();
    ASSERT_EQ(texts.size(), 3U);
    EXPECT_EQ(texts[0].find("URL Adapter (file:"), 0U) << texts[0];
    EXPECT_EQ((Texts{texts[1], texts[2]}), (Texts{"a", "b"}));
}

TEST_F(qxDefaultTranslator, isReadFromQuaxosdkLngWithoutAKey)
{
    m_folder.write("quaxosdk.lng", "\tyes\tda\n");
    setUserKey("QUAXO_LANGUAGE_FILE", "");
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(m_folder.path());
    EXPECT_EQ(translate("yes"), "da");
    std::filesystem::current_path(before);
}

TEST_F(qxDefaultTranslator, refusesAnAddressAsItsFile)
{
    static const char content[] = "\tyes\tja\n";
    setUserKey(
        "QUAXO_LANGUAGE_FILE",
        qxString::str("MEM:%p,%d", static_cast<const void*>(content), sizeof(content) - 1).getString());
    EXPECT_EQ(translate("yes"), "yes");
}

TEST_F(qxDefaultTranslator, isSwitchedOffOnlyWhenItIsInstalled)
{
    EXPECT_EQ(qxMessage::getMessageTranslator(), qxMessage::getDefaultMessageTranslator());
    TestTranslator other("other");
    qxMessageTranslatorInterface::useDefaultTranslator(false);
    EXPECT_EQ(translate("text"), "other");

    qxMessageTranslatorInterface::useDefaultTranslator(true);
    EXPECT_EQ(translate("text"), "text");
    qxMessageTranslatorInterface::useDefaultTranslator(false);
    EXPECT_EQ(qxMessage::getMessageTranslator(), nullptr);
}

TEST_F(qxDefaultTranslator, threadsTranslateWhileTheLanguageChanges)
{
    writeFile("[a]\n\tyes\tone\n[b]\n\tyes\tother\n");
    onThreads(3, [](unsigned int number) {
        for (int n = 0; n < 50; ++n) {
            if (number == 0) qxMessageTranslatorInterface::setCurrentLanguage(n % 2 ? "a" : "b");
            const std::string text = translate("yes");
            ASSERT_TRUE(text == "one" || text == "other" || text == "yes") << text;
        }
    });
}

TEST(qxMessageTranslatorInterface, theFirstLanguageIsAUserKey)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    const auto ask = [] {
        setUserKey("QUAXO_LANGUAGE", "la");
        std::exit(qxMessageTranslatorInterface::getCurrentLanguage() == "la" ? 0 : 1);
    };
    EXPECT_EXIT(ask(), testing::ExitedWithCode(0), "");
}

TEST(qxMessage, itsOwnTableHoldsTheLabels)
{
    Texts labels;
    for (const qxTranslation& row : qxMessage::getDefaultTranslations()) {
        EXPECT_TRUE(row.sender.isEmpty());
        EXPECT_EQ(row.translation, row.text);
        labels.push_back(row.text.getString());
    }
    ASSERT_EQ(labels.size(), 17U);
    EXPECT_EQ((Texts{labels[0], labels[9], labels[16]}),
              (Texts{" Memory::", " Internal Warning::", " Internal::"}));
}

} // namespace
