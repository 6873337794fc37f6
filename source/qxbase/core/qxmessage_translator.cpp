// SPDX-License-Identifier: see LICENSE

#include "core/qxmessage_translator.h"

#include "core/qxmessage_state.h"
#include "core/qxuserkey.h"

#include <algorithm>

namespace
{

std::string keyOf(std::string_view sender, std::string_view text)
{
    std::string key(sender);
    key += '\0'; // in no text
    key += text;
    return key;
}

std::string_view viewOf(const qxString& text)
{
    return std::string_view(text.getString(), text.length());
}

// The text before `separator`, which is removed with it from `rest`; false when there is no separator.
bool cut(std::string_view& rest, char separator, std::string_view& before)
{
    const std::size_t end = rest.find(separator);
    if (end == std::string_view::npos) return false;
    before = rest.substr(0, end);
    rest.remove_prefix(end + 1);
    return true;
}

struct Loading {
    bool& flag;
    const bool before;
    explicit Loading(bool& loading) : flag(loading), before(loading) { flag = true; }
    ~Loading() { flag = before; }
    Loading(const Loading&) = delete;
    Loading& operator=(const Loading&) = delete;
};

qxString textOf(std::string_view field)
{
    return qxString(field.data(), field.size()).convertTextToCtrl();
}

} // namespace

qxDefaultMessageTranslator& qxDefaultMessageTranslator::get()
{
    static qxDefaultMessageTranslator* const translator = new qxDefaultMessageTranslator;
    return *translator;
}

qxString qxDefaultMessageTranslator::onTranslate(const qxString& sender, qxMessageLevel,
                                                 const qxString& format)
{
    if (m_isLoading) return format;
    if (!m_hasAsked || m_keyVersion != qxUserKeyVersion()) askForKeys();
    if (!m_isLoaded) load();

    const qxString* found = find(keyOf(viewOf(sender), viewOf(format)));
    if (!found) found = find(keyOf({}, viewOf(format)));
    return found ? *found : format;
}

void qxDefaultMessageTranslator::enter(const qxString& sender, const qxString& text,
                                       const qxString& translation)
{
    m_entered[keyOf(viewOf(sender), viewOf(text))] = translation;
}

const qxString& qxDefaultMessageTranslator::getLanguage()
{
    if (!m_isLoading) askForKeys();
    return m_language;
}

void qxDefaultMessageTranslator::setLanguage(const qxString& language)
{
    m_language = language;
    m_isLanguageSet = true;
    m_isLoaded = false;
}

// Asking may read the settings, and that may send messages.
void qxDefaultMessageTranslator::askForKeys()
{
    const Loading loading(m_isLoading);
    m_keyVersion = qxUserKeyVersion(); // before the keys: at worst they are asked for once more
    m_hasAsked = true;
    const qxString url = qxGetUserKey("QUAXO_LANGUAGE_FILE");
    const qxString language = m_isLanguageSet ? m_language : qxGetUserKey("QUAXO_LANGUAGE");
    if (url == m_url && language == m_language) return;
    m_url = url;
    m_language = language;
    m_isLoaded = false;
}

void qxDefaultMessageTranslator::load()
{
    askForKeys();
    const Loading loading(m_isLoading);
    m_file.clear();
    m_isLoaded = true; // once, also when the file is not there

    std::string content;
    if (readFile(m_url.isEmpty() ? qxString("file:quaxosdk.lng") : m_url, content)) readLines(content);
}

void qxDefaultMessageTranslator::readLines(std::string_view content)
{
    if (content.starts_with("\xEF\xBB\xBF")) content.remove_prefix(3);

    bool isCounting = true;
    while (!content.empty()) {
        std::string_view line = content;
        if (!cut(content, '\n', line)) content = {};
        if (line.ends_with('\r')) line.remove_suffix(1);
        if (line.starts_with('[') && line.ends_with(']'))
            isCounting = line.substr(1, line.size() - 2) == viewOf(m_language);
        else if (isCounting)
            readLine(line);
    }
}

void qxDefaultMessageTranslator::readLine(std::string_view line)
{
    std::string_view sender;
    std::string_view text;
    if (!cut(line, '\t', sender) || !cut(line, '\t', text)) return;
    if (std::max({sender.size(), text.size(), line.size()}) > qxString::MAX_LENGTH) return;
    m_file[keyOf(viewOf(textOf(sender)), viewOf(textOf(text)))] = textOf(line);
}

const qxString* qxDefaultMessageTranslator::find(const std::string& key) const
{
    for (const Table* table : {&m_entered, &m_file}) {
        const auto found = table->find(key);
        if (found != table->end()) return &found->second;
    }
    return nullptr;
}

qxString qxMessageTranslatorInterface::getCurrentLanguage()
{
    const qxMessageLock lock;
    return qxDefaultMessageTranslator::get().getLanguage();
}

void qxMessageTranslatorInterface::setCurrentLanguage(const qxString& language)
{
    const qxMessageLock lock;
    qxDefaultMessageTranslator::get().setLanguage(language);
}

void qxMessageTranslatorInterface::useDefaultTranslator(bool on)
{
    const qxMessageLock lock;
    qxMessageTranslatorInterface* const translator = qxMessage::getDefaultMessageTranslator();
    if (on)
        qxMessage::setMessageTranslator(translator);
    else if (qxMessage::getMessageTranslator() == translator)
        qxMessage::setMessageTranslator(nullptr);
}

qxMessageTranslatorInterface* qxMessage::getDefaultMessageTranslator()
{
    return &qxDefaultMessageTranslator::get();
}

void qxMessage::setTranslation(const qxString& sender, const qxString& text, const qxString& translation)
{
    const qxMessageLock lock;
    qxDefaultMessageTranslator::get().enter(sender, text, translation);
}
