// SPDX-License-Identifier: see LICENSE

#include "qxkeydatabase.h"

#include "qxserializeadapter.h"

#include "platform/qxplatformenvironment.h"
#include "settings/qxkeynames.h"
#include "settings/qxkeystore.h"
#include "settings/qxkeywatch.h"

namespace
{

constexpr unsigned int GLOBAL_SCRAMBLE = 0x51787264;

qxString scrambled(const qxString& text)
{
    return qxString(text).scramble(GLOBAL_SCRAMBLE);
}

qxRegKeyHeader headerOf(unsigned char header)
{
    return header == QX_KEY_GLOBAL ? QX_KEY_GLOBAL : QX_KEY_USER;
}

qxString orMissing(const qxString& value, const qxString& missing)
{
    return value.isEmpty() ? missing : value;
}

// What is under the scrambled name, else under the plain one; false when there is neither.
bool getGlobal(const qxString& name, qxString& value)
{
    qxKeyStore& store = qxKeyStore::get();
    if (store.getKey(QX_KEY_GLOBAL, qxString(), scrambled(name), value)) {
        value = scrambled(value);
        return true;
    }
    return store.getKey(QX_KEY_GLOBAL, qxString(), name, value);
}

} // namespace

qxString qxKeyDatabase::getRegKey(qxRegKeyHeader header, qxString path, const qxString& name)
{
    qxString value;
    qxKeyStore::get().getKey(header, path, name, value);
    return value;
}

qxString qxKeyDatabase::getDefaultRegKey(qxRegKeyHeader header, const qxString& path, const qxString& name,
                                         const qxString& missing)
{
    return orMissing(getRegKey(header, path, name), missing);
}

unsigned char qxKeyDatabase::existRegKey(qxRegKeyHeader header, const qxString& path, const qxString& name)
{
    qxString value;
    return qxKeyStore::get().getKey(header, path, name, value);
}

unsigned char qxKeyDatabase::setRegKey(qxRegKeyHeader header, const qxString& path, const qxString& name,
                                       const qxString& value)
{
    return qxKeyStore::get().setKey(header, path, name, value);
}

unsigned char qxKeyDatabase::removeRegKey(qxRegKeyHeader header, const qxString& path, const qxString& name)
{
    return qxKeyStore::get().removeKey(header, path, name);
}

qxString qxKeyDatabase::getUserKey(const qxString& name, unsigned char header)
{
    return getRegKey(headerOf(header), qxString(), name);
}

qxString qxKeyDatabase::getDefaultUserKey(const qxString& name, const qxString& missing, unsigned char header)
{
    return orMissing(getUserKey(name, header), missing);
}

unsigned char qxKeyDatabase::existUserKey(const qxString& name, unsigned char header)
{
    return existRegKey(headerOf(header), qxString(), name);
}

unsigned char qxKeyDatabase::setUserKey(const qxString& name, const qxString& value, unsigned char header)
{
    return setRegKey(headerOf(header), qxString(), name, value);
}

unsigned char qxKeyDatabase::removeUserKey(const qxString& name, unsigned char header)
{
    const unsigned char isRemoved = removeRegKey(headerOf(header), qxString(), name);
    qxPlatformUnsetEnvironment(name);
    return isRemoved;
}

qxString qxKeyDatabase::getGlobalKey(const qxString& name)
{
    qxString value;
    getGlobal(name, value);
    return value;
}

qxString qxKeyDatabase::getDefaultGlobalKey(const qxString& name, const qxString& missing)
{
    return orMissing(getGlobalKey(name), missing);
}

unsigned char qxKeyDatabase::existGlobalKey(const qxString& name)
{
    qxString value;
    return getGlobal(name, value);
}

unsigned char qxKeyDatabase::setGlobalKey(const qxString& name, const qxString& value)
{
    return setRegKey(QX_KEY_GLOBAL, qxString(), scrambled(name), scrambled(value));
}

unsigned char qxKeyDatabase::removeGlobalKey(const qxString& name)
{
    const bool isRemoved = removeRegKey(QX_KEY_GLOBAL, qxString(), scrambled(name));
    const bool isPlainRemoved = removeRegKey(QX_KEY_GLOBAL, qxString(), name);
    qxPlatformUnsetEnvironment(name);
    return isRemoved || isPlainRemoved;
}

unsigned char qxKeyDatabase::setLocalRegistry(const qxString& url)
{
    const bool isDone = qxKeyStore::get().setURL(url, false);
    qxKeyWatch::get().lookAgain();
    return isDone;
}

unsigned char qxKeyDatabase::openLocalRegistry(const qxString& url)
{
    const bool isDone = qxKeyStore::get().setURL(url, true);
    qxKeyWatch::get().lookAgain();
    return isDone;
}

qxString qxKeyDatabase::getLocalRegistryURL()
{
    return qxKeyStore::get().getURL();
}

qxString qxKeyDatabase::getPreferredRegistryURL()
{
    return qxPreferredKeySource().url;
}

qxDynamicArray<qxKeyEntry> qxKeyDatabase::getLocalKeys(const qxString& path)
{
    const std::string top = qxNormalKeyPath({path.getString(), path.length()});
    qxDynamicArray<qxKeyEntry> entries;
    for (const qxKeyRow& row : qxKeyStore::get().getRows()) {
        const bool isBeneath = row.path.starts_with(top) &&
                               (row.path.size() == top.size() || top.empty() || row.path[top.size()] == '/');
        if (!isBeneath) continue;
        const qxString value(row.value.data(), row.value.size());
        entries.append(qxKeyEntry{row.path.c_str(), row.name.c_str(), value});
    }
    return entries;
}

unsigned char qxKeyDatabase::importLocalRegistry(const qxString& url)
{
    return qxKeyStore::get().merge(url);
}

unsigned char qxKeyDatabase::exportLocalRegistry(qxSerializeAdapter* adapter)
{
    std::string bytes;
    if (!adapter || !qxKeyStore::get().exportTo(bytes)) return 0;
    adapter->write(bytes.data(), static_cast<unsigned int>(bytes.size()));
    return !adapter->hasError();
}

unsigned char qxKeyDatabase::refreshLocalRegistry()
{
    return qxKeyStore::get().refresh();
}

unsigned char qxKeyDatabase::addReceiver(qxKeyReceiverInterface* receiver)
{
    return qxKeyWatch::get().add(receiver);
}

void qxKeyDatabase::removeReceiver(qxKeyReceiverInterface* receiver)
{
    qxKeyWatch::get().remove(receiver);
}

void qxKeyDatabase::enableSystemRegistry(unsigned char on)
{
    qxKeyStore::get().useSystemRegistry(on != 0);
}

qxString qxKeyDatabase::getDefaultRegistry()
{
    return qxKeyStore::get().getDefaultPath();
}

void qxKeyDatabase::setDefaultRegistry(const qxString& path)
{
    qxKeyStore::get().setDefaultPath(path);
}

qxRegKeyHeader qxKeyDatabase::getDefaultKeyHeader()
{
    return qxKeyStore::get().getDefaultHeader();
}

void qxKeyDatabase::setDefaultKeyHeader(qxRegKeyHeader header)
{
    qxKeyStore::get().setDefaultHeader(header);
}
