// SPDX-License-Identifier: see LICENSE

#include "qxserializeadapter.h"

#include "qxrefinstance.h"
#include "qxserializedata.h"

#include <algorithm>
#include <cstring>
#include <vector>

QX_DEFINE_TYPE(qxSerializeAdapter, qxReference)

namespace
{

constexpr unsigned int PROBE_SIZE = 16384; // bytes; what hasData has not seen it does not allocate for

} // namespace

qxSerializeAdapter::qxSerializeAdapter() = default;

qxSerializeAdapter::~qxSerializeAdapter() noexcept(false)
{
    qx_free(m_bytes);
    qxSerializeAdapter::clearSharedRefs(); // here, because the members' destructors must not raise
}

bool qxSerializeAdapter::useDeepCopy()
{
    return false;
}

unsigned char qxSerializeAdapter::canSeek()
{
    return 0;
}

void qxSerializeAdapter::setSeekMode(unsigned char) {}

qxUInt64 qxSerializeAdapter::seek(qxInt64, qxOriginPos)
{
    return SEEK_FAILED;
}

unsigned char qxSerializeAdapter::supportAction(qxSerializeAction)
{
    return 1;
}

unsigned char qxSerializeAdapter::aboutToClose(unsigned char)
{
    return 1;
}

void qxSerializeAdapter::mergeAssociatedData(qxReference*) {}

void qxSerializeAdapter::flush()
{
    m_head = 0;
    m_tail = 0;
}

unsigned char qxSerializeAdapter::hasError()
{
    return !m_error.isEmpty();
}

qxString qxSerializeAdapter::getError()
{
    return m_error;
}

void qxSerializeAdapter::setError(const qxString& text)
{
    m_error = text;
}

qxRefInstanceDictionary* qxSerializeAdapter::getRefInstanceDictionary()
{
    if (!m_sharedDictionary) m_sharedDictionary = std::make_unique<qxRefInstanceDictionary>();
    return m_sharedDictionary.get();
}

qxRefInstanceArray* qxSerializeAdapter::getRefInstanceArray()
{
    if (!m_sharedArray) m_sharedArray = std::make_unique<qxRefInstanceArray>();
    return m_sharedArray.get();
}

unsigned int qxSerializeAdapter::getNewSharedInstanceID()
{
    return m_nextSharedID++;
}

void qxSerializeAdapter::clearSharedRefs()
{
    m_nextSharedID = 0;
    if (m_sharedDictionary) m_sharedDictionary->clear();
    if (m_sharedArray) m_sharedArray->clear();
}

unsigned char qxSerializeAdapter::useExtension(const qxString&)
{
    return 0;
}

void qxSerializeAdapter::copySharedRefData(qxSerializeAdapter* other)
{
    *getRefInstanceDictionary() = *other->getRefInstanceDictionary();
    *getRefInstanceArray() = *other->getRefInstanceArray();
    m_nextSharedID = other->m_nextSharedID;
}

void qxSerializeAdapter::writeBlock(const unsigned char* bytes, unsigned int count)
{
    write_imp(const_cast<unsigned char*>(bytes), count); // the slot's type is older than its promise
}

void qxSerializeAdapter::write(const char* bytes, unsigned int count)
{
    write(reinterpret_cast<const unsigned char*>(bytes), count);
}

unsigned char qxSerializeAdapter::readByte()
{
    return m_head == m_tail ? read_imp() : takePushedBack();
}

unsigned int qxSerializeAdapter::readBlock(unsigned char* buffer, unsigned int count)
{
    if (!buffer) {
        skip(count);
        return count;
    }
    const unsigned int taken = takePushedBack(buffer, count);
    if (taken == count) return count;
    buffer += taken;
    const unsigned int rest = count - taken;
    if (rest > getLent()) return taken + read_imp(buffer, rest);
    std::memcpy(buffer, m_window.next, rest);
    m_window.next += rest;
    return count;
}

unsigned int qxSerializeAdapter::readFromWindow(unsigned char* buffer, unsigned int count)
{
    unsigned int done = 0;
    while (done < count) {
        if (getLent() == 0) fillWindow(count - done);
        const unsigned int part = std::min(count - done, getLent());
        if (part == 0) break;
        std::memcpy(buffer + done, m_window.next, part);
        m_window.next += part;
        done += part;
    }
    return done;
}

unsigned int qxSerializeAdapter::readRest(unsigned char* buffer, unsigned int done, unsigned int count)
{
    for (unsigned int part = done; part > 0 && done < count; done += part)
        part = read(buffer + done, count - done);
    return done;
}

void qxSerializeAdapter::skip(unsigned int count)
{
    while (count > 0) {
        const unsigned int lent = m_head == m_tail ? getLent() : 0;
        if (lent == 0) {
            readByte();
            --count;
            continue;
        }
        const unsigned int step = std::min(count, lent);
        m_window.next += step;
        count -= step;
    }
}

qxUInt64 qxSerializeAdapter::length()
{
    return length_imp() + getPushBackCount();
}

unsigned char qxSerializeAdapter::askForData(unsigned int count)
{
    if (length() >= count) return 1;
    if (count == 1) return hasData_imp();

    std::vector<unsigned char> bytes;
    m_isProbing = true;
    try {
        readUpTo(count, bytes);
    } catch (...) {
        m_isProbing = false;
        pushBack(bytes.data(), static_cast<unsigned int>(bytes.size()));
        throw;
    }
    m_isProbing = false;
    pushBack(bytes.data(), static_cast<unsigned int>(bytes.size()));
    return bytes.size() == count;
}

// Reads until `bytes` holds `count` bytes or the stream has no more.
void qxSerializeAdapter::readUpTo(unsigned int count, std::vector<unsigned char>& bytes)
{
    bytes.resize(getPushBackCount()); // fewer than `count`, or nobody would ask the stream
    takePushedBack(bytes.data(), getPushBackCount());
    while (bytes.size() < count) {
        const unsigned int step = std::min(PROBE_SIZE, count - static_cast<unsigned int>(bytes.size()));
        unsigned char buffer[PROBE_SIZE];
        const unsigned int got = read_imp(buffer, step);
        bytes.insert(bytes.end(), buffer, buffer + got);
        if (got == 0) return;
    }
}

void qxSerializeAdapter::serialize(qxSerializeData* data, qxSerializeAction action)
{
    if (action == QX_SERIALIZE_OUTPUT) data->write(this);
    if (action == QX_SERIALIZE_INPUT) data->read(this);
}

void qxSerializeAdapter::write_imp(unsigned char* bytes, unsigned int count)
{
    for (unsigned int i = 0; i < count; ++i) write_imp(bytes[i]);
}

unsigned int qxSerializeAdapter::read_imp(unsigned char* buffer, unsigned int count)
{
    unsigned int done = 0;
    while (done < count && (length() != 0 || hasData_imp())) buffer[done++] = read_imp();
    return done;
}

qxUInt64 qxSerializeAdapter::length_imp()
{
    return 0;
}

unsigned char qxSerializeAdapter::hasData_imp()
{
    return length() != 0;
}

void qxSerializeAdapter::fillWindow(unsigned int) {}
