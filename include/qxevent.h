// The event: threads sleep on it until another one fires it.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxforward.h"
#include "qxmutex.h"
#include "qxreference.h"

/// Wakes the threads that sleep on it. It keeps no state: a fire while nobody sleeps is lost.
///
/// To wait for a condition without losing a fire, take the event's own lock, test, and call waitAndLock with
/// `locked` 1; the other side changes the condition under the same lock. A sleep gives the lock back
/// completely, however often the caller holds it.
///
/// Lifetime: counted; its count is safe to use from several threads, also while a thread is inside its lock.
///           Holders that are copied share it. A new reference may only be taken by somebody who holds one.
/// Threads:  any.
/// Errors:   a count that goes wrong raises qxFatalError, as in qxReference.
class QX_API qxEvent : public qxReference, public qxMutex
{
public:
    qxEvent();

    /// The copy has no sleepers and its lock is free; copy an event only while nobody waits on it.
    qxEvent(const qxEvent& other);

    /// Takes over the copy mode and whether the owner is tracked; sleepers sleep on.
    qxEvent& operator=(const qxEvent& other);
    ~qxEvent() noexcept(false) override;

    /// Wakes all sleepers. Takes no lock.
    void fire() const;

    /// Wakes at most one sleeper. Takes no lock.
    void fireOnlyOne() const;

    /// Sleeps until fired, at most `timeout` milliseconds; 0xFFFFFFFF sleeps without end and 0 returns at
    /// once. With `locked` 1 the caller holds the event's lock, and one holding is given up. Returns 1 when
    /// woken, 0 on time-out.
    unsigned char wait(unsigned int timeout, unsigned char locked = 0) const;

    /// As wait, but the caller holds the event's lock afterwards and calls unLock later.
    unsigned char waitAndLock(unsigned int timeout, unsigned char locked = 0) const;

    /// Waits until one of the events fires, at most `timeout` milliseconds, and returns it; null on time-out.
    /// Of several the earliest in the list wins; the first null in the list ends it.
    ///
    /// It starts one thread for each event and is meant for rare use. A fire before these threads sleep is
    /// lost. Defined above the threads.
    static qxEvent* wait(const qxRefList<qxEvent>& events, unsigned int timeout);

    bool useDeepCopy() override { return false; }
    void ref() override;
    void unref() override;
    unsigned int unrefNoDelete() override;

    /// Reads the count under the event's lock.
    bool checkDelete() override;
    unsigned int getRef() const override;

private:
    friend class qxEventWaiter;

    /// As wait with `locked` 1, and also ends, with 0, soon after `stop` became true.
    unsigned char waitUnlessStopped(unsigned int timeout, const std::atomic<bool>& stop) const;

    /// Returns the count of before; 0, and `mismatch` is raised, when there was nothing to count down.
    unsigned int countDown(const char* mismatch);

    alignas(8) mutable unsigned char m_condition[64]; // the platform's condition
};
