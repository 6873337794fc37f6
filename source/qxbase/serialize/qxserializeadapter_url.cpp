// SPDX-License-Identifier: see LICENSE

#include "qxserializeadapter.h"

#include "core/qxprocessguard.h"
#include "qxmessage.h"
#include "qxserializeadapterfile.h"
#include "qxserializeadaptermemory.h"
#include "qxurlmanager.h"
#include "serialize/qxcuttext.h"
#include "serialize/qxurl.h"
#include "serialize/qxurlschemes.h"

#include <string>
#include <utility>
#include <vector>

namespace
{

constexpr unsigned int MAX_SHOWN = 16384; // bytes of a URL or error in a message, which must fit a string

struct Entry {
    qxString scheme; // lower case
    qxRefPointer<qxURLManagerInterface> manager;
};

struct Registry {
    qxMutex lock; // guards the entries
    std::vector<Entry> entries;
};

Registry& getRegistry()
{
    static Registry& registry = *new Registry; // never destroyed: URLs may be opened while statics go down
    return registry;
}

// Call with the registry's lock held.
Entry* findEntry(const qxString& scheme)
{
    const qxString name = qxString(scheme).toLower();
    for (Entry& entry : getRegistry().entries)
        if (entry.scheme == name.getString()) return &entry;
    return nullptr;
}

// Null without an error means that nobody opens such URLs, or that the message has been sent.
qxRefPointer<qxSerializeAdapter> open(const qxString& url, qxSerializeAction action, bool& isReported)
{
    const qxString scheme = qxSerializeAdapter::getURLScheme(url);
    if (scheme.isEmpty() || scheme == "file") {
        std::string path;
        if (!qxURLToPath({url.getString(), url.length()}, path)) return nullptr;
        return new qxSerializeAdapterFile(qxString(path.data(), path.size()), action);
    }
    if (scheme == "mem") {
        const qxString arguments = url.left(4, true);
        void* address = nullptr;
        unsigned int length = 0;
        if (qxURLToMemory({arguments.getString(), arguments.length()}, address, length))
            return new qxSerializeAdapterMemory(address, length);
        qxMessage::message(QX_LEVEL_WARNING, "Wrong syntax in (mem:address,len) adapter arguments (%s)",
                           qxCutText(arguments, MAX_SHOWN));
        isReported = true;
        return nullptr;
    }
    if (const qxURLOpener opener = qxFindURLOpener({scheme.getString(), scheme.length()}))
        return opener(url, action);
    const qxRefPointer<qxURLManagerInterface> manager = qxSerializeAdapter::getURLManager(scheme);
    return manager ? manager->onGetURLAdapter(url, action) : nullptr;
}

} // namespace

qxURLManagerInterface::~qxURLManagerInterface() noexcept(false) = default;

bool qxURLManagerInterface::useDeepCopy()
{
    return false;
}

qxRefPointer<qxSerializeAdapter>
qxSerializeAdapter::getURLAdapter(const qxString& url, qxSerializeAction action, const qxString& base)
{
    if (url.isEmpty()) {
        qxMessage::message(QX_LEVEL_WARNING, "Empty URL name in getAdapter");
        return nullptr;
    }
    const qxString resolved = resolveURL(url, base);
    bool isReported = false;
    qxRefPointer<qxSerializeAdapter> adapter;
    if (!resolved.isEmpty()) adapter = open(resolved, action, isReported);
    if (!adapter) {
        if (!isReported)
            qxMessage::message(QX_LEVEL_WARNING, "Could not create URL Adapter '%s'",
                               qxCutText(url, MAX_SHOWN));
        return nullptr;
    }
    if (adapter->hasError()) {
        qxMessage::message(QX_LEVEL_WARNING, "URL Adapter (%s) Error:%s", qxCutText(url, MAX_SHOWN),
                           qxCutText(adapter->getError(), MAX_SHOWN));
        return nullptr;
    }
    const qxString scheme = getURLScheme(resolved);
    if (!scheme.isEmpty() && scheme != "mem") adapter->setURLBase(getURLFolder(resolved));
    return adapter;
}

bool qxSerializeAdapter::registerURLManager(const qxString& scheme, qxURLManagerInterface* manager)
{
    const qxString name = qxString(scheme).toLower();
    const std::string_view view(name.getString(), name.length());
    if (!manager || !qxURLIsScheme(view) || qxIsOwnURLScheme(view)) return false;

    Registry& registry = getRegistry();
    const qxProcessGuard guard(registry.lock);
    if (findEntry(name)) return false;
    registry.entries.push_back({name, manager});
    return true;
}

void qxSerializeAdapter::unregisterURLManager(qxURLManagerInterface* manager)
{
    Registry& registry = getRegistry();
    for (;;) {
        qxRefPointer<qxURLManagerInterface> released; // goes when the lock is free: it may be the last holder
        const qxProcessGuard guard(registry.lock);
        std::size_t i = 0;
        while (i < registry.entries.size() && registry.entries[i].manager.get() != manager) ++i;
        if (i == registry.entries.size()) return;
        released = std::move(registry.entries[i].manager);
        registry.entries.erase(registry.entries.begin() + static_cast<std::ptrdiff_t>(i));
    }
}

qxRefPointer<qxURLManagerInterface> qxSerializeAdapter::getURLManager(const qxString& scheme)
{
    const qxProcessGuard guard(getRegistry().lock);
    const Entry* const entry = findEntry(scheme);
    return entry ? entry->manager : nullptr;
}

bool qxSerializeAdapter::hasRegisteredURLManager(const qxString& scheme)
{
    const qxProcessGuard guard(getRegistry().lock);
    return findEntry(scheme) != nullptr;
}
