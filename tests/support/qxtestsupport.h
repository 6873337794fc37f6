// What the tests share.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxerror.h"
#include "qxmessage.h"

#include "qxtestthreads.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

/// Runs `body` and returns the text of the `Error` it raises; the test fails if there is none.
template <class Error, typename Body>
std::string errorText(Body&& body)
{
    try {
        body();
    } catch (const Error& error) {
        return error.getErrorString().getString();
    }
    ADD_FAILURE() << "the error was not raised";
    return {};
}

/// Runs `body` and returns the text of the qxFatalError it raises; the test fails if there is none.
template <typename Body>
std::string fatalText(Body&& body)
{
    return errorText<qxFatalError>(body);
}

/// As fatalText for qxWarningError.
template <typename Body>
std::string warningText(Body&& body)
{
    return errorText<qxWarningError>(body);
}

/// One message as a receiver got it.
struct RecordedMessage {
    std::string sender;
    qxMessageLevel level;
    std::string text;

    bool operator==(const RecordedMessage&) const = default;

    friend std::ostream& operator<<(std::ostream& out, const RecordedMessage& message)
    {
        return out << "{\"" << message.sender << "\", 0x" << std::hex << message.level << std::dec << ", \""
                   << message.text << "\"}";
    }
};

/// Collects the messages that are sent while it lives. With a `level` it sets the message level meanwhile.
///
/// Threads: messages may come from any; ask for them when the others are done.
class MessageRecorder final : public qxMessageReceiverInterface
{
public:
    MessageRecorder() : m_levelBefore(qxMessage::getMessageLevel()) { qxMessage::addMessageReceiver(this); }

    explicit MessageRecorder(qxMessageLevel level) : MessageRecorder() { qxMessage::setMessageLevel(level); }

    ~MessageRecorder() override
    {
        qxMessage::removeMessageReceiver(this);
        qxMessage::setMessageLevel(m_levelBefore);
    }

    void onMessage(const qxString& sender, qxMessageLevel level, const char* text) override
    {
        m_messages.push_back({sender.getString(), level, text});
    }

    const std::vector<RecordedMessage>& messages() const { return m_messages; }

    /// The texts alone, in their order.
    std::vector<std::string> texts() const
    {
        std::vector<std::string> result;
        for (const RecordedMessage& message : m_messages) result.push_back(message.text);
        return result;
    }

    void clear() { m_messages.clear(); }

private:
    const qxMessageLevel m_levelBefore;
    std::vector<RecordedMessage> m_messages;
};
