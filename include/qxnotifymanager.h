// Telling those who want to know.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxforward.h"

#include <memory>

class qxNotifyManager;

/// Is told what the managers have to say that it was added to.
///
/// Lifetime: stays alive while it is added; it is removed from all managers before its derived part goes.
/// Threads:  called on the thread that notifies, without a lock; on several at once if several do.
class QX_API qxNotifyReceiverInterface
{
public:
    virtual ~qxNotifyReceiverInterface() noexcept(false) {} // classes with this base may raise when they go

    /// `message` is counted: who wants to keep it becomes a holder. It may be null.
    virtual void onNotify(qxNotifyManager* manager, qxReference* message) = 0;
};

/// Hands messages to its receivers.
///
/// Lifetime: a plain object, also as a base. A receiver may end it: the other receivers are not called any more then.
/// Threads:  any, all operations.
/// Errors:   what a receiver raises leaves notify; those behind it are not told.
class QX_API qxNotifyManager
{
public:
    qxNotifyManager();
    qxNotifyManager(const qxNotifyManager&) = delete;
    qxNotifyManager& operator=(const qxNotifyManager&) = delete;

    /// Waits, as removeNotifyReceiver does, until other threads have left the receivers.
    virtual ~qxNotifyManager() noexcept(false);

    /// The receiver is told from the next message on, behind those already there; a second entry changes nothing.
    void addNotifyReceiver(qxNotifyReceiverInterface* receiver);

    /// The receiver is not called any more: a call of it on another thread has ended when this returns. Must not be called
    /// with a lock held that the receiver waits for.
    void removeNotifyReceiver(qxNotifyReceiverInterface* receiver);

    bool hasNotifyReceivers() const;

    /// Tells all who are receivers now, in the order in which they were added, less those removed meanwhile. Holds
    /// `message`: one that nobody else holds goes at the end.
    void notify(qxReference* message);

private:
    class Calls;

    const std::shared_ptr<Calls> m_calls; // shared by those who notify: a receiver may end the manager
};
