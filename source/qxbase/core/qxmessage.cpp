// SPDX-License-Identifier: see LICENSE

#include "qxmessage.h"

#include "core/qxformattext.h"
#include "core/qxmessage_state.h"
#include "core/qxtextbuilder.h"
#include "platform/qxplatformnotnow.h"
#include "platform/qxplatformthread.h"

#include <algorithm>
#include <cstring>

namespace
{

std::atomic<bool> s_isOpen{true};

// Goes down with the statics of the library.
struct Closer {
    ~Closer() { s_isOpen.store(false); }
};

const Closer s_closer;

std::atomic<qxMessageTranslatorInterface*> s_translator{nullptr};

// The translator to ask for a message of this level, or null.
qxMessageTranslatorInterface* translatorFor(qxMessageLevel level)
{
    if ((level & QX_FLAG_UNTRANSLATED) != 0 || level < QX_LEVEL_NOTICE) return nullptr;
    return s_translator.load(std::memory_order_acquire);
}

// Call with the message lock held.
void deliverText(qxMessageState& state, const qxString& sender, qxMessageLevel level, bool isFinished,
                 const char* format, const qxArgument* arguments, unsigned int count)
{
    if (isFinished) {
        state.deliver(sender, level, format);
        return;
    }
    qxTextBuilder text; // on the stack: most messages never need the heap
    qxFormatText(text, format, std::strlen(format), arguments, count);
    state.deliver(sender, level, text.text());
}

// A null `sender` is the default one.
void sendMessage(const qxString* sender, qxMessageLevel level, bool isFinished, const char* format,
                 const qxArgument* arguments, unsigned int count)
{
    if (!qxMessageState::isOpen()) return;
    qxMessageState& state = qxMessageState::get();
    const qxMessageLock lock(state);
    state.installDefaultReceiver();
    if (!state.isPassing(level)) return;

    state.keepDefaultSender();
    const qxString& name = sender ? *sender : state.getDefaultSender();
    qxMessageTranslatorInterface* const translator = translatorFor(level);
    if (!translator) {
        deliverText(state, name, level, isFinished, format, arguments, count);
        return;
    }
    const qxString translation = translator->onTranslate(name, level, qxString(format));
    if (translation.isEmpty()) return;
    deliverText(state, name, level, isFinished, translation.getString(), arguments, count);
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
    sendMessage(sender, level, (level & QX_FLAG_LITERAL) != 0, format ? format : "", arguments, count);
}

void qxMessage::send(const qxString* sender, qxMessageLevel level, const wchar_t* format,
                     const qxArgument* arguments, unsigned int count)
{
    send(sender, level, qxString(format).getString(), arguments, count);
}

void qxMessage::messageText(const qxString& sender, qxMessageLevel level, const char* text)
{
    if (isDropped(level)) return;
    sendMessage(&sender, level, true, text ? text : "", nullptr, 0);
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
    if (!s_translator.load(std::memory_order_acquire) || !qxMessageState::isOpen()) return text;

    const qxMessageLock lock;
    qxMessageTranslatorInterface* const translator = translatorFor(QX_LEVEL_ALWAYS);
    if (!translator) return text;
    qxMessageState::get().keepDefaultSender();
    const qxString translation = translator->onTranslate(sender, QX_LEVEL_ALWAYS, text);
    return translation.isEmpty() ? text : translation;
}

const qxString& qxMessage::getDefaultSender()
{
    return qxMessageState::get().getDefaultSender();
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

void qxMessageState::waitLock() const
{
    qxPlatformEnterNotNow();
    m_lock.waitLock();
}

void qxMessageState::unLock() const
{
    if (m_lock.getOwnerThreadID() != qxPlatformThreadId()) return; // applications may call this out of turn
    m_lock.unLock();
    qxPlatformLeaveNotNow();
}

qxMessageState::qxMessageState()
{
    m_semaphore.waitLock(0);
}

void qxMessageState::setLevel(qxMessageLevel level)
{
    const qxMessageLock lock(*this);
    // From further inside, a receiver for one, the semaphore stays with the message that is under way.
    const bool isAlone = m_lock.getSpinLockCount() == 1;
    if (isAlone) {
        m_semaphore.unLock();
        m_semaphore.waitLock(qxPlatformThreadId());
    }
    m_level = level;
    updateGate();
    if (isAlone) {
        m_semaphore.unLock();
        m_semaphore.waitLock(0);
    }
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

void qxMessageState::addDefaultReceiver()
{
    m_receivers.push_back(qxMessage::getDefaultMessageReceiver());
    m_isDefaultReceiverDue = false;
    updateGate();
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

void qxMessageState::updateGate()
{
    const bool hasReceiver =
        std::any_of(m_receivers.begin(), m_receivers.end(),
                    [](const qxMessageReceiverInterface* receiver) { return receiver != nullptr; });
    m_isDefaultReceiverWanted = m_isDefaultReceiverDue && !hasReceiver;
    const unsigned int flag = m_isDefaultReceiverWanted ? qxMessage::GATE_CLOSED_TO_SHORTCUT : 0;
    qxMessage::s_gate.store(m_level | flag, std::memory_order_relaxed);
}

void qxMessageState::endWalk()
{
    if (--m_walks == 0) std::erase(m_receivers, nullptr);
}
