// What the tests of texts and messages share.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxtestsupport.h"

/// All bytes of a text, zero bytes as well.
inline std::string bytesOf(const qxString& text)
{
    return {text.getString(), text.length()};
}

/// Installed while it lives. Answers every text with its own, "raise" by raising an error;
/// keeps what it was asked.
class TestTranslator final : public qxMessageTranslatorInterface
{
public:
    explicit TestTranslator(const char* answer) : m_answer(answer) { qxMessage::setMessageTranslator(this); }
    ~TestTranslator() { qxMessage::setMessageTranslator(nullptr); }

    qxString onTranslate(const qxString& sender, qxMessageLevel level, const qxString& format) override
    {
        m_asked.push_back({sender.getString(), level, format.getString()});
        if (m_answer == "raise") qxExceptionThrows::qxThrowWarning("by the translator %d", 1);
        return m_answer;
    }

    const std::vector<RecordedMessage>& asked() const { return m_asked; }

private:
    const qxString m_answer;
    std::vector<RecordedMessage> m_asked;
};
