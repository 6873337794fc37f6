// The process-wide registries of the XML reader and writer.
// SPDX-License-Identifier: see LICENSE

#include "core/qxneverdestroyed.h"
#include "core/qxprocessguard.h"
#include "qxdict.h"
#include "qxmutex.h"
#include "qxxmlsax.h"

#include <atomic>
#include <map>
#include <string>

namespace
{

/// One registry: element name to handler.
template <class Handler>
class Registry
{
public:
    /// The one of its kind.
    static Registry& get()
    {
        static qxNeverDestroyed<Registry> registry;
        return registry.get();
    }

    void enter(const qxString& name, Handler* handler)
    {
        const qxProcessGuard guard(m_lock);
        m_handlers[name.getString()] = handler;
        m_isUsed.store(true, std::memory_order_release);
    }

    void remove(Handler* handler)
    {
        const qxProcessGuard guard(m_lock);
        std::erase_if(m_handlers, [handler](const auto& entry) { return entry.second == handler; });
        m_isUsed.store(!m_handlers.empty(), std::memory_order_release);
    }

    bool isUsed() const { return m_isUsed.load(std::memory_order_acquire); }

    Handler* find(const qxString& name)
    {
        if (!isUsed()) return nullptr; // nearly always
        const qxProcessGuard guard(m_lock);
        const auto found = m_handlers.find(name.getString());
        return found == m_handlers.end() ? nullptr : found->second;
    }

private:
    std::atomic<bool> m_isUsed{false};
    qxMutex m_lock; // guards the handlers
    std::map<std::string, Handler*, std::less<>> m_handlers;
};

} // namespace

void qxXmlSax::registerCustomDataInterface(const qxString& name, qxXmlCustomDataInterface* handler)
{
    Registry<qxXmlCustomDataInterface>::get().enter(name, handler);
}

void qxXmlSax::registerDynamicTypeInterface(const qxString& name, qxXmlDynamicTypeInterface* handler)
{
    Registry<qxXmlDynamicTypeInterface>::get().enter(name, handler);
}

void qxXmlSax::registerObjectInterface(const qxString& name, qxXmlObjectInterface* handler)
{
    Registry<qxXmlObjectInterface>::get().enter(name, handler);
}

void qxXmlSax::unregisterCustomDataInterface(qxXmlCustomDataInterface* handler)
{
    Registry<qxXmlCustomDataInterface>::get().remove(handler);
}

void qxXmlSax::unregisterDynamicTypeInterface(qxXmlDynamicTypeInterface* handler)
{
    Registry<qxXmlDynamicTypeInterface>::get().remove(handler);
}

void qxXmlSax::unregisterObjectInterface(qxXmlObjectInterface* handler)
{
    Registry<qxXmlObjectInterface>::get().remove(handler);
}

qxXmlCustomDataInterface* qxXmlSax::getCustomDataInterface(const qxString& name)
{
    return Registry<qxXmlCustomDataInterface>::get().find(name);
}

bool qxXmlSax::hasCustomDataInterface()
{
    return Registry<qxXmlCustomDataInterface>::get().isUsed();
}

qxXmlDynamicTypeInterface* qxXmlSax::getDynamicTypeInterface(const qxString& name)
{
    return Registry<qxXmlDynamicTypeInterface>::get().find(name);
}

qxXmlObjectInterface* qxXmlSax::getObjectInterface(const qxString& name)
{
    return Registry<qxXmlObjectInterface>::get().find(name);
}
