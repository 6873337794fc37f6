// SPDX-License-Identifier: see LICENSE

#include "qxserializeadapter.h"

#include "core/qxprocessguard.h"
#include "platform/qxplatformfile.h"
#include "qxmessage.h"
#include "qxserializeadaptercache.h"
#include "qxserializeadaptercompress.h"
#include "qxserializeadapterencode.h"
#include "qxserializeadapterfile.h"
#include "qxserializeadaptermemory.h"
#include "qxurlmanager.h"
#include "serialize/qxcuttext.h"
#include "serialize/qxserializeadapterstream.h"
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

std::string_view viewOf(const qxString& text)
{
    return {text.getString(), text.length()};
}

qxString stringOf(std::string_view text)
{
    return qxString(text.data(), text.size());
}

qxRefPointer<qxSerializeAdapter> openFile(std::string_view url, qxSerializeAction action)
{
    std::string path;
    if (!qxURLToPath(url, path)) return nullptr;
    const qxString name = stringOf(path);
    if (action == QX_SERIALIZE_INPUT && qxPlatformFileIsDevice(path.c_str()))
        return qxSerializeAdapterStream::openDevice(name);
    return new qxSerializeAdapterFile(name, action);
}

// Null means that the arguments are no block of memory, which has been reported.
qxRefPointer<qxSerializeAdapter> openMemory(std::string_view arguments)
{
    void* address = nullptr;
    unsigned int length = 0;
    if (qxURLToMemory(arguments, address, length)) return new qxSerializeAdapterMemory(address, length);
    qxMessage::message(QX_LEVEL_WARNING, "Wrong syntax in (mem:address,len) adapter arguments (%s)",
                       qxCutText(stringOf(arguments), MAX_SHOWN));
    return nullptr;
}

qxRefPointer<qxSerializeAdapter> openConsole(std::string_view url, std::string_view name,
                                             qxSerializeAction action)
{
    const bool isErrors = name == "error";
    if (!name.empty() && (!isErrors || action == QX_SERIALIZE_INPUT)) return nullptr;
    return qxSerializeAdapterStream::openStandard(stringOf(url), action, isErrors);
}

// Null without an error means that nobody opens such URLs, or that the message has been sent.
qxRefPointer<qxSerializeAdapter> open(const qxString& url, qxSerializeAction action, bool& isReported)
{
    const qxString scheme = qxSerializeAdapter::getURLScheme(url);
    const std::string_view body = qxURLBody(viewOf(url));
    if (scheme.isEmpty() || scheme == "file") return openFile(body, action);

    const std::string_view rest = body.substr(scheme.length() + 1U);
    if (scheme == "mem") {
        isReported = true;
        return openMemory(rest);
    }
    if (scheme == "con") return openConsole(body, rest, action);
    if (scheme == "cache")
        return rest.empty() ? nullptr : new qxSerializeAdapterCache(stringOf(rest), action);
    if (const qxURLOpener opener = qxFindURLOpener(viewOf(scheme))) return opener(url, action);
    const qxRefPointer<qxURLManagerInterface> manager = qxSerializeAdapter::getURLManager(scheme);
    return manager ? manager->onGetURLAdapter(url, action) : nullptr;
}

// Puts what encodes and decodes as `encoding` says in front of `adapter`, and sets its error when nothing does.
qxRefPointer<qxSerializeAdapter> addEncoding(const qxRefPointer<qxSerializeAdapter>& adapter,
                                             const qxString& encoding, qxSerializeAction action)
{
    if (encoding.isEmpty()) return adapter;
    if (encoding == "gz") return new qxSerializeAdapterCompress(adapter, action);
    if (encoding == "hex") return new qxSerializeAdapterHex(adapter, action);
    if (encoding != "b64")
        adapter->setError(qxString("Unknown encoding '") + qxCutText(encoding, MAX_SHOWN) + "'");
    else if (action == QX_SERIALIZE_APPEND)
        adapter->setError("Nothing can be appended to Base64");
    else
        return new qxSerializeAdapterBase64(adapter, action);
    return adapter;
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
    if (!adapter->hasError()) adapter = addEncoding(adapter, getURLBaseEncoding(resolved), action);
    if (adapter->hasError()) {
        qxMessage::message(QX_LEVEL_WARNING, "URL Adapter (%s) Error:%s", qxCutText(url, MAX_SHOWN),
                           qxCutText(adapter->getError(), MAX_SHOWN));
        return nullptr;
    }
    adapter->setAttributes(stringOf(qxURLAttributes(viewOf(resolved))));
    const qxString scheme = getURLScheme(resolved);
    if (!scheme.isEmpty() && !qxIsURLForCallersOnly(resolved) && scheme != "cache")
        adapter->setURLBase(getURLFolder(resolved));
    return adapter;
}

bool qxSerializeAdapter::registerURLManager(const qxString& scheme, qxURLManagerInterface* manager)
{
    const qxString name = qxString(scheme).toLower();
    if (!manager || !qxURLIsScheme(viewOf(name)) || qxIsOwnURLScheme(viewOf(name))) return false;

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
