// What the parts of the message channel share.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxmessage.h"
#include "qxmutex.h"
#include "qxsemaphore.h"

#include <vector>

/// The state of the message channel, one for the process.
///
/// Lifetime: built on first use and never destroyed, so that it can be used while the library is unloaded.
/// Threads:  all operations need the message lock, but for the lock's own and isOpen.
class qxMessageState
{
public:
    static qxMessageState& get();

    /// False once the statics of the library go down: messages are then dropped.
    static bool isOpen();

    void waitLock();
    void unLock(); ///< ignored when the calling thread does not hold the lock
    bool isInside() const;

    qxMessageLevel getLevel() const { return m_level; }
    void setLevel(qxMessageLevel level); ///< takes the lock as setMessageLevel does

    void addReceiver(qxMessageReceiverInterface* receiver);
    void removeReceiver(qxMessageReceiverInterface* receiver);

    /// Registers the default receiver when there is no other and it was never installed.
    void installDefaultReceiver();

    /// Whether the level setting lets a message of `level` pass.
    bool isPassing(qxMessageLevel level) const;

    /// Calls the receivers in the order of their registration, without those that are added meanwhile.
    void deliver(const qxString& sender, qxMessageLevel level, const char* text);

private:
    qxMessageState() = default;

    bool hasReceiver() const;
    void updateGate();
    void endWalk();

    // The message lock is both of these, taken in this order. The first keeps other threads out and lets its
    // own in again, which the second with its owner value alone would not.
    qxMutex m_lock;
    qxSemaphore m_semaphore;

    qxMessageLevel m_level = QX_LEVEL_NOTICE;
    bool m_isDefaultReceiverDue = true;
    std::vector<qxMessageReceiverInterface*> m_receivers; // null: removed while receivers are called
    unsigned int m_walks = 0;                             // calls of deliver that are under way, nested ones
};

/// Holds the message lock while it lives.
class qxMessageLock
{
public:
    qxMessageLock() { qxMessageState::get().waitLock(); }
    ~qxMessageLock() { qxMessageState::get().unLock(); }

    qxMessageLock(const qxMessageLock&) = delete;
    qxMessageLock& operator=(const qxMessageLock&) = delete;
};
