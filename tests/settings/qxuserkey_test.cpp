// SPDX-License-Identifier: see LICENSE

#include "qxmessage.h"
#include "qxregkeyexpandparser.h"
#include "qxxmldom.h"

#include "qxtestkeys.h"
#include "settings/qxsettingstest.h"

#include <string>

namespace
{

class qxUserKeys : public Settings
{};

TEST_F(qxUserKeys, areTheSettingsThenTheVariables)
{
    const auto expand = [] { return std::string(qxRegKeyExpandParser().parse("[$(QX_TEST_KEY)]")); };
    setUserKey("QX_TEST_KEY", "variable");
    EXPECT_EQ(expand(), "[variable]");
    EXPECT_EQ(qxKeyDatabase::getUserKey("QX_TEST_KEY"), "");
    ASSERT_TRUE(qxKeyDatabase::setUserKey("QX_TEST_KEY", "setting"));
    EXPECT_EQ(expand(), "[setting]");
    ASSERT_TRUE(qxKeyDatabase::setUserKey("QX_TEST_KEY", ""));
    EXPECT_EQ(expand(), "[variable]");
}

TEST_F(qxUserKeys, chooseTheLanguageAtRunTime)
{
    folder.write("one.lng", "[de]\n\tyes\tja\n[fr]\n\tyes\toui\n");
    folder.write("two.lng", "[fr]\n\tyes\tsi\n");
    const auto translate = [] { return std::string(qxMessage::translate("Me", "yes")); };
    qxMessageTranslatorInterface::useDefaultTranslator(true);
    ASSERT_TRUE(qxKeyDatabase::setUserKey("QUAXO_LANGUAGE_FILE", url("one.lng").c_str()));
    EXPECT_EQ(translate(), "yes");
    ASSERT_TRUE(qxKeyDatabase::setUserKey("QUAXO_LANGUAGE", "de"));
    EXPECT_EQ(qxMessageTranslatorInterface::getCurrentLanguage(), "de");
    EXPECT_EQ(translate(), "ja");
    ASSERT_TRUE(qxKeyDatabase::setUserKey("QUAXO_LANGUAGE", "fr"));
    EXPECT_EQ(translate(), "oui");
    ASSERT_TRUE(qxKeyDatabase::setUserKey("QUAXO_LANGUAGE_FILE", url("two.lng").c_str()));
    EXPECT_EQ(translate(), "si");
    EXPECT_TRUE(qxKeyDatabase::setLocalRegistry(""));
    EXPECT_EQ(qxMessageTranslatorInterface::getCurrentLanguage(), "");
    qxMessageTranslatorInterface::useDefaultTranslator(false);
}

/// Asks for a setting for every message.
class Translator final : public qxMessageTranslatorInterface
{
public:
    Translator() { qxMessage::setMessageTranslator(this); }
    ~Translator() { qxMessage::setMessageTranslator(nullptr); }
    Translator(const Translator&) = delete;
    Translator& operator=(const Translator&) = delete;

    qxString onTranslate(const qxString&, qxMessageLevel, const qxString& format) override
    {
        const qxString value = qxKeyDatabase::getRegKey(QX_KEY_USER, "r", "last");
        EXPECT_TRUE(value.isEmpty() || value == "whole") << value.getString();
        return format;
    }
};

TEST_F(qxUserKeys, aTranslatorMayAskWhileTheDocumentIsExchanged)
{
    std::string text = "<r><?include missing.xml?>"; // a message from inside the reading
    for (int i = 0; i < 100; ++i) text += "<k" + std::to_string(i) + ">v</k" + std::to_string(i) + ">";
    ASSERT_TRUE(use(text + "<last>whole</last></r>"));
    MessageRecorder recorder;
    Translator translator;
    onThreads(4, [this](unsigned int thread) {
        for (int i = 0; i < 15; ++i) {
            if (thread == 0)
                EXPECT_TRUE(qxKeyDatabase::setLocalRegistry(url().c_str()));
            else if (thread == 1)
                EXPECT_TRUE(set("r", "k5", std::to_string(i)));
            else
                qxMessage::message(QX_LEVEL_WARNING, "%d", i);
        }
    });
    EXPECT_EQ(get("r", "last"), "whole");
}

} // namespace
