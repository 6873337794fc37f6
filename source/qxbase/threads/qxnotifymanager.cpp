// SPDX-License-Identifier: see LICENSE

#include "qxnotifymanager.h"

#include "qxevent.h"
#include "qxguard.h"
#include "qxreference.h"
#include "qxthread.h"

#include <algorithm>
#include <vector>

// Who is to be called, and who is being called.
class qxNotifyManager::Calls
{
public:
    typedef std::vector<qxNotifyReceiverInterface*> Receivers;

    void add(qxNotifyReceiverInterface* receiver)
    {
        const qxBodyGuard guard(m_change);
        if (receiver && !has(receiver)) m_receivers.push_back(receiver);
    }

    void remove(const qxNotifyReceiverInterface* receiver)
    {
        const qxBodyGuard guard(m_change);
        std::erase(m_receivers, receiver);
        waitFor([receiver](const Call& call) { return call.receiver == receiver; });
    }

    void removeAll()
    {
        const qxBodyGuard guard(m_change);
        m_receivers.clear();
        waitFor([](const Call&) { return true; });
    }

    Receivers getReceivers() const
    {
        const qxBodyGuard guard(m_change);
        return m_receivers;
    }

    /// Calls `receiver` unless it was removed.
    void call(qxNotifyReceiverInterface* receiver, qxNotifyManager* manager, qxReference* message)
    {
        if (!begin(receiver)) return;
        const End end{*this, receiver};
        receiver->onNotify(manager, message);
    }

private:
    struct Call {
        const qxNotifyReceiverInterface* receiver;
        unsigned int thread;

        bool operator==(const Call&) const = default;
    };

    struct End {
        Calls& calls;
        const qxNotifyReceiverInterface* receiver;
        ~End() { calls.end(receiver); }
    };

    bool has(const qxNotifyReceiverInterface* receiver) const // call with the lock held
    {
        return std::find(m_receivers.begin(), m_receivers.end(), receiver) != m_receivers.end();
    }

    bool begin(const qxNotifyReceiverInterface* receiver)
    {
        const qxBodyGuard guard(m_change);
        if (!has(receiver)) return false;
        m_running.push_back({receiver, qxThread::getThreadID()});
        return true;
    }

    void end(const qxNotifyReceiverInterface* receiver)
    {
        const qxBodyGuard guard(m_change);
        m_running.erase(
            std::find(m_running.begin(), m_running.end(), Call{receiver, qxThread::getThreadID()}));
        m_change.fire();
    }

    // Waits until other threads have left these calls; a receiver that removes itself would wait for its own end.
    template <class IsMeant>
    void waitFor(const IsMeant& isMeant) // call with the lock held
    {
        const unsigned int self = qxThread::getThreadID();
        const auto isInTheWay = [&](const Call& call) { return call.thread != self && isMeant(call); };
        while (std::any_of(m_running.begin(), m_running.end(), isInTheWay))
            m_change.waitAndLock(0xFFFFFFFF, 1);
    }

    qxEvent m_change; // its lock guards the other fields
    Receivers m_receivers;
    std::vector<Call> m_running;
};

qxNotifyManager::qxNotifyManager() : m_calls(std::make_shared<Calls>()) {}

qxNotifyManager::~qxNotifyManager() noexcept(false)
{
    m_calls->removeAll();
}

void qxNotifyManager::addNotifyReceiver(qxNotifyReceiverInterface* receiver)
{
    m_calls->add(receiver);
}

void qxNotifyManager::removeNotifyReceiver(qxNotifyReceiverInterface* receiver)
{
    m_calls->remove(receiver);
}

bool qxNotifyManager::hasNotifyReceivers() const
{
    return !m_calls->getReceivers().empty();
}

void qxNotifyManager::notify(qxReference* message)
{
    const qxRefPointer<qxReference> holder(message);
    const std::shared_ptr<Calls> calls =
        m_calls; // nothing of this object is touched once a receiver was called
    for (qxNotifyReceiverInterface* const receiver : calls->getReceivers())
        calls->call(receiver, this, message);
}
