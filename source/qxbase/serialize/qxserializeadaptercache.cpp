// SPDX-License-Identifier: see LICENSE

#include "qxserializeadaptercache.h"

#include "core/qxprocessguard.h"
#include "qxmessage.h"
#include "serialize/qxcuttext.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <unordered_map>
#include <utility>

QX_DEFINE_TYPE(qxSerializeAdapterCache, qxSerializeAdapter)

namespace
{

constexpr unsigned int MAX_SHOWN_NAME = 32768; // bytes of a name in an error text, which must fit a string

using Block = std::shared_ptr<const std::vector<unsigned char>>;

struct Store {
    qxMutex lock; // guards what follows
    std::unordered_map<std::string, Block> blocks;
    qxUInt64 used = 0;
    qxUInt64 limit = qxSerializeAdapterCache::DEFAULT_LIMIT;
};

Store& getStore()
{
    static Store& store = *new Store; // never destroyed: adapters may outlive the statics
    return store;
}

std::string keyOf(const qxString& name)
{
    return {name.getString(), name.length()};
}

qxString translate(const char* text)
{
    return qxMessage::translate(qxMessage::getDefaultSender(), text);
}

Block find(const std::string& key)
{
    Store& store = getStore();
    const qxProcessGuard guard(store.lock);
    const auto found = store.blocks.find(key);
    return found == store.blocks.end() ? nullptr : found->second;
}

// Makes `block` that of `key`, none when it is null; false when it does not fit. What was there is given back to be
// freed outside the lock.
bool exchange(const std::string& key, Block& block)
{
    Store& store = getStore();
    const qxProcessGuard guard(store.lock);
    const auto found = store.blocks.find(key);
    const bool isThere = found != store.blocks.end();
    const qxUInt64 rest = store.used - (isThere ? key.size() + found->second->size() : 0);
    if (!block) {
        if (!isThere) return false;
        block = std::move(found->second);
        store.blocks.erase(found);
        store.used = rest;
        return true;
    }
    const qxUInt64 needed = key.size() + block->size();
    if (rest > store.limit || needed > store.limit - rest) return false;
    if (isThere)
        std::swap(found->second, block);
    else
        store.blocks.emplace(key, std::move(block));
    store.used = rest + needed;
    return true;
}

} // namespace

qxSerializeAdapterCache::qxSerializeAdapterCache(const qxString& name, qxSerializeAction action)
    : m_key(keyOf(name)), m_action(action == QX_SERIALIZE_APPEND ? QX_SERIALIZE_OUTPUT : action),
      m_limit(getLimit())
{
    setName(name);
    if (action == QX_SERIALIZE_OUTPUT) return;
    m_block = find(m_key);
    if (action == QX_SERIALIZE_APPEND) {
        if (m_block) m_written = *m_block;
        return;
    }
    if (!m_block)
        setError(translate("Could not open '") + qxCutText(name, MAX_SHOWN_NAME) +
                 translate("' for reading") + " (nothing was written under this name)");
}

qxSerializeAdapterCache::~qxSerializeAdapterCache() noexcept(false)
{
    if (isReading() || m_isKept || keep(std::move(m_written))) return;
    if (std::uncaught_exceptions() > 0) return; // receivers may raise, which would end the process
    qxMessage::messageText(qxMessage::getDefaultSender(), QX_LEVEL_WARNING,
                           qxSerializeAdapter::getError().getString());
}

unsigned char qxSerializeAdapterCache::supportAction(qxSerializeAction action)
{
    return action == m_action;
}

unsigned char qxSerializeAdapterCache::canSeek()
{
    return isReading();
}

qxUInt64 qxSerializeAdapterCache::seek(qxInt64 offset, qxOriginPos origin)
{
    if (!m_block || !isReading()) return SEEK_FAILED;
    const auto size = static_cast<qxInt64>(m_block->size());
    const qxInt64 base = origin == QX_ORIGIN_START ? 0
                         : origin == QX_ORIGIN_END ? size
                                                   : static_cast<qxInt64>(m_position);
    if (offset < -base || offset > size - base) return SEEK_FAILED; // so written, no offset overflows
    qxSerializeAdapter::flush(); // bytes given back belonged to the old place
    m_position = static_cast<std::size_t>(base + offset);
    return m_position;
}

// Makes what was written the block; false, and an error, when there is no room for it or there was none before.
bool qxSerializeAdapterCache::keep(Bytes&& bytes)
{
    if (qxSerializeAdapter::hasError()) return false;
    Block block = std::make_shared<const Bytes>(std::move(bytes));
    m_isKept = exchange(m_key, block);
    if (!m_isKept) setLimitError();
    return m_isKept;
}

void qxSerializeAdapterCache::setLimitError()
{
    setError(translate("Could not flush to cache '") + qxCutText(getName(), MAX_SHOWN_NAME) +
             qxString::str("' (all blocks together are limited to %d bytes)", m_limit));
}

void qxSerializeAdapterCache::flush()
{
    qxSerializeAdapter::flush();
    if (!isReading() && !m_isKept) keep(Bytes(m_written));
}

bool qxSerializeAdapterCache::has(const qxString& name)
{
    return find(keyOf(name)) != nullptr;
}

bool qxSerializeAdapterCache::remove(const qxString& name)
{
    Block block;
    return exchange(keyOf(name), block);
}

void qxSerializeAdapterCache::removeAll()
{
    Store& store = getStore();
    std::unordered_map<std::string, Block> removed; // goes when the lock is free
    const qxProcessGuard guard(store.lock);
    removed.swap(store.blocks);
    store.used = 0;
}

qxUInt64 qxSerializeAdapterCache::getUsed()
{
    const qxProcessGuard guard(getStore().lock);
    return getStore().used;
}

qxUInt64 qxSerializeAdapterCache::getLimit()
{
    const qxProcessGuard guard(getStore().lock);
    return getStore().limit;
}

void qxSerializeAdapterCache::setLimit(qxUInt64 limit)
{
    const qxProcessGuard guard(getStore().lock);
    getStore().limit = limit;
}

void qxSerializeAdapterCache::write_imp(unsigned char* bytes, unsigned int count)
{
    if (isReading()) return setError(translate("The stream is open for reading"));
    if (qxSerializeAdapter::hasError()) return;
    if (m_written.size() + count > m_limit) {
        m_written = {}; // half of it is of no use
        setLimitError();
        return;
    }
    m_written.insert(m_written.end(), bytes, bytes + count);
    m_isKept = false;
}

void qxSerializeAdapterCache::write_imp(unsigned char byte)
{
    write_imp(&byte, 1);
}

unsigned int qxSerializeAdapterCache::read_imp(unsigned char* buffer, unsigned int count)
{
    if (!isReading()) setError(translate("The stream is open for writing"));
    if (!m_block || !isReading()) return 0;
    const std::size_t there = std::min<std::size_t>(count, m_block->size() - m_position);
    if (there > 0) std::memcpy(buffer, m_block->data() + m_position, there);
    m_position += there;
    return static_cast<unsigned int>(there);
}

unsigned char qxSerializeAdapterCache::read_imp()
{
    unsigned char byte = 0; // what comes behind the end
    if (qxSerializeAdapterCache::read_imp(&byte, 1) == 0 && isReading())
        setError(translate("Cache Adapter read beyond end"));
    return byte;
}

qxUInt64 qxSerializeAdapterCache::length_imp()
{
    if (!isReading()) return m_written.size();
    return m_block ? m_block->size() - m_position : 0;
}
