// SPDX-License-Identifier: see LICENSE

#include "settings/qxkeystore.h"

#include "core/qxuserkey.h"
#include "platform/qxplatformenvironment.h"
#include "platform/qxplatformregistry.h"
#include "settings/qxkeynames.h"

#include <algorithm>
#include <atomic>

namespace
{

std::atomic<unsigned int> s_version{0};

std::string systemPath(const qxString& path)
{
    std::string text = qxNormalKeyPath({path.getString(), path.length()});
    std::replace(text.begin(), text.end(), '/', '\\');
    return text;
}

} // namespace

unsigned int qxUserKeyVersion()
{
    return s_version.load(std::memory_order_acquire);
}

qxString qxGetUserKey(const char* name)
{
    const qxString value = qxKeyDatabase::getUserKey(name, QX_KEY_USER);
    std::string variable;
    if (!value.isEmpty() || !qxPlatformGetEnvironment(name, variable)) return value;
    return variable.size() <= qxString::MAX_LENGTH ? qxString(variable.data(), variable.size()) : qxString();
}

qxKeyStore& qxKeyStore::get()
{
    static qxKeyStore& store = *new qxKeyStore;
    return store;
}

void qxKeyStore::noteChange()
{
    s_version.fetch_add(1, std::memory_order_release);
}

// A path without a part is the default one.
const qxString& qxKeyStore::pathOrDefault(const qxString& path) const
{
    const std::string_view text(path.getString(), path.length());
    return text.find_first_not_of("/\\") == std::string_view::npos ? m_defaultPath : path;
}

bool qxKeyStore::usesSystemRegistry() const
{
    return m_usesSystemRegistry && qxPlatformRegistryIsThere();
}

bool qxKeyStore::getKey(qxRegKeyHeader header, const qxString& path, const qxString& name, qxString& value)
{
    return read([&] {
        const qxString& full = pathOrDefault(path);
        if (m_document && !m_isBusy && m_document->get(full, name, value)) return true;
        std::string text;
        const bool isThere =
            usesSystemRegistry() &&
            qxPlatformRegistryGet(header == QX_KEY_USER, systemPath(full).c_str(), name, text);
        value =
            isThere && text.size() <= qxString::MAX_LENGTH ? qxString(text.data(), text.size()) : qxString();
        return isThere;
    });
}

// In the system's registry where that counts, else in the document. `inSystem` takes the path as the registry has it.
bool qxKeyStore::changeKey(const qxString& path, const std::function<bool(const char*)>& inSystem,
                           const Change& inDocument, bool makesFile)
{
    bool isDone = false;
    const bool isInSystem = read([&] {
        if (!usesSystemRegistry()) return false;
        isDone = inSystem(systemPath(pathOrDefault(path)).c_str());
        return true;
    });
    if (!isInSystem) return changeDocument(inDocument, makesFile);
    noteChange();
    return isDone;
}

bool qxKeyStore::setKey(qxRegKeyHeader header, const qxString& path, const qxString& name,
                        const qxString& value)
{
    return changeKey(
        path, [&](const char* key) { return qxPlatformRegistrySet(header == QX_KEY_USER, key, name, value); },
        [&](qxKeyDocument& document, bool& isChanged, std::string& error) {
            return document.set(pathOrDefault(path), name, value, isChanged, error);
        },
        true);
}

bool qxKeyStore::removeKey(qxRegKeyHeader header, const qxString& path, const qxString& name)
{
    return changeKey(
        path, [&](const char* key) { return qxPlatformRegistryRemove(header == QX_KEY_USER, key, name); },
        [&](qxKeyDocument& document, bool& isChanged, std::string& error) {
            return document.remove(pathOrDefault(path), name, isChanged, error);
        },
        false);
}

bool qxKeyStore::setURL(const qxString& url, bool mayBeMissing)
{
    const qxMessageLock messages;
    const qxProcessGuard guard(m_lock);
    if (m_isBusy) return false;
    if (m_isDefaultDue) m_source = qxDefaultKeySource();
    m_isDefaultDue = false;
    exchange(nullptr, {});
    if (!url.isEmpty()) return load(qxMakeKeySource(url), mayBeMissing);
    m_source = {};
    return true;
}

qxString qxKeyStore::getURL()
{
    const qxProcessGuard guard(m_lock);
    return m_isDefaultDue ? qxDefaultKeySource().url : m_source.url;
}

std::string qxKeyStore::getFile()
{
    return read([&] { return m_source.file; });
}

std::vector<qxKeyRow> qxKeyStore::getRows()
{
    return read([&] { return m_document && !m_isBusy ? m_document->getRows() : std::vector<qxKeyRow>(); });
}

bool qxKeyStore::merge(const qxString& url)
{
    std::vector<qxKeyRow> rows;
    {
        const qxMessageLock messages;
        std::unique_ptr<qxKeyDocument> document;
        qxPlatformFileIdentity identity;
        const qxProcessGuard guard(m_lock);
        if (m_isBusy || !readDocument(qxMakeKeySource(url), false, document, identity)) return false;
        rows = document->getRows();
    }
    return changeDocument(
        [&](qxKeyDocument& document, bool& isChanged, std::string& error) {
            return std::all_of(rows.begin(), rows.end(), [&](const qxKeyRow& row) {
                return document.set(row.path.c_str(), row.name.c_str(),
                                    qxString(row.value.data(), row.value.size()), isChanged, error);
            });
        },
        !rows.empty());
}

bool qxKeyStore::exportTo(std::string& bytes)
{
    return change([&] {
        std::string error;
        qxKeyDocument empty;
        return !m_isBusy && (m_document ? *m_document : empty).write(bytes, true, error);
    });
}

bool qxKeyStore::refresh()
{
    return change([&] { return !m_isBusy && !m_source.url.isEmpty() && rereadIfChanged(); });
}

qxString qxKeyStore::getDefaultPath()
{
    const qxProcessGuard guard(m_lock);
    return m_defaultPath;
}

void qxKeyStore::setDefaultPath(const qxString& path)
{
    const qxProcessGuard guard(m_lock);
    m_defaultPath = path;
    noteChange();
}

qxRegKeyHeader qxKeyStore::getDefaultHeader()
{
    const qxProcessGuard guard(m_lock);
    return m_defaultHeader;
}

void qxKeyStore::setDefaultHeader(qxRegKeyHeader header)
{
    const qxProcessGuard guard(m_lock);
    m_defaultHeader = header;
}

void qxKeyStore::useSystemRegistry(bool on)
{
    const qxProcessGuard guard(m_lock);
    m_usesSystemRegistry = on;
    noteChange();
}
