// SPDX-License-Identifier: see LICENSE

#include "qxmessage.h"

#include "core/qxmessage_state.h"
#include "platform/qxplatformthread.h"

#include <algorithm>

namespace
{

constexpr unsigned int LEVEL_MASK = 0xF07F; // what a level setting compares: the level and its low bits

std::atomic<bool> s_isOpen{true};

// Goes down with the statics of the library.
struct Closer {
    ~Closer() { s_isOpen.store(false); }
};

const Closer s_closer;

std::atomic<qxMessageTranslatorInterface*> s_translator{nullptr};

// The text for `format` when a translator is installed and cares about the level, else false. Call with the
// message lock held.
bool translateFormat(const qxString& sender, qxMessageLevel level, const char* format, qxString& result)
{
    if ((level & QX_FLAG_UNTRANSLATED) != 0 || level < QX_LEVEL_NOTICE) return false;
    qxMessageTranslatorInterface* const translator = s_translator.load();
    if (!translator) return false;
    result = translator->onTranslate(sender, level, qxString(format));
    return true;
}

void sendMessage(const qxString& sender, qxMessageLevel level, bool isFinished, const char* format,
                 const qxArgument* arguments, unsigned int count)
{
    if (!qxMessageState::isOpen()) return;
    const qxMessageLock lock;
    qxMessageState& state = qxMessageState::get();
    state.installDefaultReceiver();
    if (!state.isPassing(level)) return;

    qxString translation;
    if (translateFormat(sender, level, format, translation)) {
        if (translation.isEmpty()) return;
        format = translation.getString();
    }
    if (isFinished) {
        state.deliver(sender, level, format);
        return;
    }
    qxString text;
    text.formatArguments(format, arguments, count);
    state.deliver(sender, level, text.getString());
}

} // namespace

qxMessageReceiverInterface::~qxMessageReceiverInterface()
{
    qxMessage::removeMessageReceiver(this);
}

std::atomic<unsigned int> qxMessage::s_gate{QX_LEVEL_NOTICE | GATE_CLOSED_TO_SHORTCUT};

void qxMessage::send(const qxString* sender, qxMessageLevel level, const char* format,
                     const qxArgument* arguments, unsigned int count)
{
    sendMessage(sender ? *sender : getDefaultSender(), level, (level & QX_FLAG_LITERAL) != 0,
                format ? format : "", arguments, count);
}

void qxMessage::send(const qxString* sender, qxMessageLevel level, const wchar_t* format,
                     const qxArgument* arguments, unsigned int count)
{
    send(sender, level, qxString(format).getString(), arguments, count);
}

void qxMessage::messageText(const qxString& sender, qxMessageLevel level, const char* text)
{
    if (isDropped(level)) return;
    sendMessage(sender, level, true, text ? text : "", nullptr, 0);
}

void qxMessage::setMessageLevel(qxMessageLevel level)
{
    if (level <= QX_LEVEL_ALWAYS) qxMessageState::get().setLevel(level);
}

qxMessageLevel qxMessage::getMessageLevel()
{
    const qxMessageLock lock;
    return qxMessageState::get().getLevel();
}

void qxMessage::addMessageReceiver(qxMessageReceiverInterface* receiver)
{
    const qxMessageLock lock;
    qxMessageState::get().addReceiver(receiver);
}

void qxMessage::removeMessageReceiver(qxMessageReceiverInterface* receiver)
{
    const qxMessageLock lock;
    qxMessageState::get().removeReceiver(receiver);
}

void qxMessage::setMessageTranslator(qxMessageTranslatorInterface* translator)
{
    const qxMessageLock lock; // nobody is inside the old translator when this returns
    s_translator.store(translator);
}

qxMessageTranslatorInterface* qxMessage::getMessageTranslator()
{
    return s_translator.load();
}

qxString qxMessage::translate(const qxString& sender, const qxString& text)
{
    // Errors are raised through here: while there is no translator they must not depend on a lock.
    if (!s_translator.load() || !qxMessageState::isOpen()) return text;

    const qxMessageLock lock;
    qxString translation;
    if (!translateFormat(sender, QX_LEVEL_ALWAYS, text.getString(), translation)) return text;
    return translation.isEmpty() ? text : translation;
}

const qxString& qxMessage::getDefaultSender()
{
    static const qxString* const sender = new qxString("QuaxoSDK"); // never destroyed
    return *sender;
}

void qxMessage::waitLock()
{
    qxMessageState::get().waitLock();
}

void qxMessage::unLock()
{
    qxMessageState::get().unLock();
}

qxMessageState& qxMessageState::get()
{
    static qxMessageState* const state = new qxMessageState;
    return *state;
}

bool qxMessageState::isOpen()
{
    return s_isOpen.load(std::memory_order_relaxed);
}

void qxMessageState::waitLock()
{
    m_lock.waitLock();
    m_semaphore.waitLock(0);
}

void qxMessageState::unLock()
{
    if (!isInside()) return;
    m_semaphore.unLock();
    m_lock.unLock();
}

bool qxMessageState::isInside() const
{
    return m_lock.getOwnerThreadID() == qxPlatformThreadId();
}

void qxMessageState::setLevel(qxMessageLevel level)
{
    // From inside, a receiver for one, the semaphore is held under 0 and would never be granted.
    const bool wasInside = isInside();
    m_lock.waitLock();
    if (!wasInside) m_semaphore.waitLock(qxPlatformThreadId());
    m_level = level;
    updateGate();
    if (!wasInside) m_semaphore.unLock();
    m_lock.unLock();
}

void qxMessageState::addReceiver(qxMessageReceiverInterface* receiver)
{
    if (!receiver || std::find(m_receivers.begin(), m_receivers.end(), receiver) != m_receivers.end()) return;
    m_receivers.push_back(receiver);
    updateGate();
}

void qxMessageState::removeReceiver(qxMessageReceiverInterface* receiver)
{
    if (!receiver) return;
    std::replace(m_receivers.begin(), m_receivers.end(), receiver,
                 static_cast<qxMessageReceiverInterface*>(nullptr));
    if (m_walks == 0) std::erase(m_receivers, nullptr);
    updateGate();
}

void qxMessageState::installDefaultReceiver()
{
    if (!m_isDefaultReceiverDue || hasReceiver()) return;
    m_receivers.push_back(qxMessage::getDefaultMessageReceiver());
    m_isDefaultReceiverDue = false;
    updateGate();
}

bool qxMessageState::isPassing(qxMessageLevel level) const
{
    return level >= (m_level & LEVEL_MASK) && (level & ~m_level & QX_FLAG_INTERNAL) == 0;
}

void qxMessageState::deliver(const qxString& sender, qxMessageLevel level, const char* text)
{
    struct Walk {
        qxMessageState& state;
        explicit Walk(qxMessageState& walked) : state(walked) { ++state.m_walks; }
        ~Walk() { state.endWalk(); }
    };

    // Receivers may add and remove receivers: entries keep their places until the last walk is over.
    const Walk walk(*this);
    const std::size_t count = m_receivers.size();
    for (std::size_t i = 0; i < count; ++i) {
        if (m_receivers[i]) m_receivers[i]->onMessage(sender, level, text);
    }
}

bool qxMessageState::hasReceiver() const
{
    return std::any_of(m_receivers.begin(), m_receivers.end(),
                       [](const qxMessageReceiverInterface* receiver) { return receiver != nullptr; });
}

void qxMessageState::updateGate()
{
    const bool mustLock = m_isDefaultReceiverDue && !hasReceiver();
    qxMessage::s_gate.store(m_level | (mustLock ? qxMessage::GATE_CLOSED_TO_SHORTCUT : 0),
                            std::memory_order_relaxed);
}

void qxMessageState::endWalk()
{
    if (--m_walks == 0) std::erase(m_receivers, nullptr);
}
