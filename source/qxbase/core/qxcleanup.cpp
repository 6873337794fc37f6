// SPDX-License-Identifier: see LICENSE

#include "qxcleanup.h"

#include "platform/qxplatformnotnow.h"
#include "qxlist.h"

namespace
{

using Holder = qxRefPointer<qxReference>;

/// The registered holders in the order of their levels, the newest first within a level. Built on the first
/// lock and never destroyed, so that it outlives every static holder.
struct Registry {
    qxMutex lock;                               // guards what is below, and the objects of registered holders
    qxList<qxCleanupReference>* list = nullptr; // null while nothing is registered
    qxUInt64 newest = 0;                        // registrations are numbered from 1
};

Registry& registry()
{
    static Registry* const instance = new Registry;
    return *instance;
}

/// Holds the registry's lock; the outermost one of a thread takes an empty list away.
class RegistryGuard
{
public:
    RegistryGuard() { m_registry.lock.waitLock(); }

    ~RegistryGuard()
    {
        const bool isOutermost = m_registry.lock.getSpinLockCount() == 1;
        if (isOutermost && m_registry.list && m_registry.list->entries() == 0) {
            delete m_registry.list;
            m_registry.list = nullptr;
        }
        m_registry.lock.unLock();
    }

    RegistryGuard(const RegistryGuard&) = delete;
    RegistryGuard& operator=(const RegistryGuard&) = delete;

private:
    const qxPlatformNotNow m_notNow; // the thread is not ended while it holds the lock
    Registry& m_registry = registry();
};

} // namespace

qxCleanupReference::qxCleanupReference() : m_level(0), m_registration(0) {}

qxCleanupReference::qxCleanupReference(qxReference* object, int level)
    : Holder(object), m_level(level), m_registration(0)
{
    const RegistryGuard guard;
    if (object) enter();
}

qxCleanupReference::qxCleanupReference(const qxCleanupReference& other)
    : Holder(other), m_level(other.m_level), m_registration(0)
{
    const RegistryGuard guard;
    if (m_object) enter();
}

qxCleanupReference::~qxCleanupReference() noexcept(false)
{
    const RegistryGuard guard;
    leave(); // the base lets the object go when the lock is free again
}

qxCleanupReference& qxCleanupReference::operator=(const qxCleanupReference& other)
{
    if (this != &other) assign(other.m_object, other.m_level);
    return *this;
}

qxCleanupReference& qxCleanupReference::operator=(qxReference* object)
{
    if (object != m_object) assign(object, m_level);
    return *this;
}

void qxCleanupReference::assign(qxReference* object, int level)
{
    Holder incoming(object);
    Holder outgoing; // goes after the guard: the old object's destructor is unknown code
    const RegistryGuard guard;
    m_level = level;
    if (object) enter();
    outgoing = static_cast<Holder&&>(*this);
    Holder::operator=(static_cast<Holder&&>(incoming));
}

void qxCleanupReference::cleanUpReferences(int level)
{
    const RegistryGuard guard;
    const qxUInt64 newest = registry().newest;
    // An object that goes may destroy holders and make new ones, so every search starts at the head.
    const auto next = [level, newest]() -> qxCleanupReference* {
        if (!registry().list) return nullptr;
        for (qxCleanupReference* holder : *registry().list) {
            const bool isChosen = level == -1 || holder->m_level == level;
            if (isChosen && holder->m_registration <= newest) return holder;
        }
        return nullptr;
    };
    while (qxCleanupReference* const holder = next()) {
        holder->leave();
        const Holder outgoing(static_cast<Holder&&>(*holder));
    }
}

void qxCleanupReference::enter()
{
    Registry& all = registry();
    if (!all.list) all.list = new qxList<qxCleanupReference>;
    leave();
    all.list->insertSorted(this, m_level);
    m_registration = ++all.newest;
}

void qxCleanupReference::leave()
{
    if (m_registration == 0) return;
    registry().list->remove(this);
    m_registration = 0;
}
