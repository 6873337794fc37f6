// The default translator of the message channel.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxmessage.h"

#include <string>
#include <string_view>
#include <unordered_map>

/// Translates by what was entered with qxMessage::setTranslation and by the language file.
///
/// The file is UTF-8 text: a line for each translation, made of sender, tab, text, tab, translation, in which
/// control characters and the backslash are written as qxString::convertCtrlToText does. An empty sender
/// stands for all. Lines of "[language]" may divide it: the lines after one count while the current language
/// is that one, those before the first always. All other lines are comments. docs/settings.md shows one.
///
/// The user keys "QUAXO_LANGUAGE" and "QUAXO_LANGUAGE_FILE" count anew whenever the settings change.
///
/// Threads: all operations need the message lock.
class qxDefaultMessageTranslator final : public qxMessageTranslatorInterface
{
public:
    static qxDefaultMessageTranslator& get(); ///< built on first use and never destroyed

    qxString onTranslate(const qxString& sender, qxMessageLevel level, const qxString& format) override;

    void enter(const qxString& sender, const qxString& text, const qxString& translation);

    /// The user key "QUAXO_LANGUAGE", as it is at present, until setLanguage is called.
    const qxString& getLanguage();
    void setLanguage(const qxString& language);

private:
    typedef std::unordered_map<std::string, qxString> Table;

    qxDefaultMessageTranslator() = default;

    void load();
    void askForKeys();
    void readLines(std::string_view content);
    void readLine(std::string_view line);
    const qxString* find(const std::string& key) const;

    /// Appends what stands behind `url` to `content`; false when it cannot be opened or read. Defined above
    /// the adapters.
    static bool readFile(const qxString& url, std::string& content);

    Table m_entered;
    Table m_file;
    qxString m_language;
    qxString m_url; // of the file, as the user key says
    bool m_isLanguageSet = false;
    bool m_hasAsked = false; // for the keys
    unsigned int m_keyVersion = 0;
    bool m_isLoaded = false;
    bool m_isLoading = false; // messages of the loading itself stay as they are
};
