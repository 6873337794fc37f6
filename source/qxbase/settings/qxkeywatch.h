// Tells receivers of changed settings.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxevent.h"
#include "qxkeydatabase.h"

#include <memory>
#include <vector>

/// The receivers, and a thread that watches the document as long as there are some.
///
/// Lifetime: one, built on first use and never destroyed.
/// Threads:  any. The lock is never held while a receiver or the store is called, but when the thread starts; the message
///           lock is taken before it then.
class qxKeyWatch
{
public:
    static qxKeyWatch& get();

    bool add(qxKeyReceiverInterface* receiver);
    void remove(qxKeyReceiverInterface* receiver);

    /// The document may be another one.
    void lookAgain();

private:
    class Worker;

    bool isRegistered(const qxKeyReceiverInterface* receiver) const;
    void call(qxKeyReceiverInterface* receiver, const qxKeyChange& change);
    void tell(const qxKeyChange& change);

    // With the lock held.
    bool isAtWork(const Worker& worker) const { return m_worker.get() == &worker && !m_receivers.empty(); }

    qxEvent m_change; // guards the fields; fired when a receiver has returned
    std::vector<qxKeyReceiverInterface*> m_receivers;
    std::unique_ptr<Worker> m_worker;                  // at work, or ended by a receiver
    const qxKeyReceiverInterface* m_calling = nullptr; // the receiver that is being called
    unsigned int m_callingThread = 0;
};
