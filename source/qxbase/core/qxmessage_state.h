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
/// Threads:  all operations need the message lock, but for get, isOpen, setLevel and the lock's own.
class qxMessageState
{
public:
    static qxMessageState& get();

    /// False once the statics of the library go down: messages are then dropped.
    static bool isOpen();

    /// A thread is not ended while it holds the lock.
    void waitLock() const;
    void unLock() const;

    qxMessageLevel getLevel() const { return m_level; }

    /// The reference needs no lock, its text does: a receiver that compares it may make it unique.
    const qxString& getDefaultSender() const { return m_defaultSender; }

    /// Makes the name an own text again, which does not go with the table of unique strings.
    void keepDefaultSender()
    {
        if (m_defaultSender.isUnique()) m_defaultSender = DEFAULT_SENDER;
    }

    /// Takes the lock itself, as setMessageLevel does.
    void setLevel(qxMessageLevel level);

    void addReceiver(qxMessageReceiverInterface* receiver);
    void removeReceiver(qxMessageReceiverInterface* receiver);

    /// Registers the default receiver when there is no other and it was never installed.
    void installDefaultReceiver()
    {
        if (m_isDefaultReceiverWanted) addDefaultReceiver();
    }

    /// Whether the level setting lets a message of `level` pass.
    bool isPassing(qxMessageLevel level) const
    {
        return level >= (m_level & LEVEL_MASK) && (level & ~m_level & QX_FLAG_INTERNAL) == 0;
    }

    /// Calls the receivers in the order of their registration, without those that are added meanwhile.
    void deliver(const qxString& sender, qxMessageLevel level, const char* text);

private:
    static constexpr unsigned int LEVEL_MASK = 0xF07F; // a level setting counts without its flags and bit 7
    static constexpr const char* DEFAULT_SENDER = "QuaxoSDK";

    qxMessageState();

    void addDefaultReceiver();
    void updateGate();
    void endWalk();

    // The message lock is both of these, taken in this order. The semaphore alone would let every thread in
    // that asks with the same value, and no thread of its own again that asks with another. So m_lock keeps
    // other threads out and lets its own in again; the semaphore is held under 0 on behalf of whoever is
    // inside, and only setLevel changes that.
    qxMutex m_lock;
    qxSemaphore m_semaphore;

    qxMessageLevel m_level = QX_LEVEL_NOTICE;
    qxString m_defaultSender{DEFAULT_SENDER};
    bool m_isDefaultReceiverDue = true;                   // not installed so far
    bool m_isDefaultReceiverWanted = true;                // and there is no other
    std::vector<qxMessageReceiverInterface*> m_receivers; // null: removed while receivers are called
    unsigned int m_walks = 0;                             // calls of deliver that are under way, nested ones
};

/// Holds the message lock while it lives.
class qxMessageLock
{
public:
    explicit qxMessageLock(const qxMessageState& state = qxMessageState::get()) : m_state(state)
    {
        m_state.waitLock();
    }
    ~qxMessageLock() { m_state.unLock(); }

    qxMessageLock(const qxMessageLock&) = delete;
    qxMessageLock& operator=(const qxMessageLock&) = delete;

private:
    const qxMessageState& m_state;
};
