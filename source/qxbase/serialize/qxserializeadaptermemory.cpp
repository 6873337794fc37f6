// SPDX-License-Identifier: see LICENSE

#include "qxserializeadaptermemory.h"

#include "qxmessage.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <typeinfo>

QX_DEFINE_TYPE(qxSerializeAdapterMemory, qxSerializeAdapter)

qxSerializeAdapterMemory::qxSerializeAdapterMemory(void* address, unsigned int size)
    : m_address(static_cast<unsigned char*>(address)), m_size(size)
{
    setPosition(0);
}

qxSerializeAdapterMemory::~qxSerializeAdapterMemory() noexcept(false)
{
    if (m_deleteOnDestruction) std::free(m_address);
}

unsigned char qxSerializeAdapterMemory::canSeek()
{
    return 1;
}

void qxSerializeAdapterMemory::setSeekMode(unsigned char) {}

qxUInt64 qxSerializeAdapterMemory::seek(qxInt64 offset, qxOriginPos origin)
{
    if (origin > QX_ORIGIN_END) return getCurrentPos();
    const qxInt64 size = m_size;
    const qxInt64 base = origin == QX_ORIGIN_START ? 0 : origin == QX_ORIGIN_END ? size : getCurrentPos();
    if (offset < -base || offset > size - base) { // so written, no offset overflows
        setTranslatedError("Memory Adapter moved outside size");
        return SEEK_FAILED;
    }
    qxSerializeAdapter::flush(); // bytes given back belonged to the old place
    setPosition(static_cast<unsigned int>(base + offset));
    return getCurrentPos();
}

unsigned char qxSerializeAdapterMemory::supportAction(qxSerializeAction)
{
    return 1;
}

void qxSerializeAdapterMemory::flush()
{
    qxSerializeAdapter::flush();
    m_size = 0;
    setPosition(0);
}

void qxSerializeAdapterMemory::reset(void* address, unsigned int size)
{
    if (address) {
        m_address = static_cast<unsigned char*>(address);
        m_size = size;
    }
    qxSerializeAdapter::flush();
    setPosition(0);
    clearSharedRefs();
}

unsigned short qxSerializeAdapterMemory::checksum() const
{
    unsigned int sum = 0;
    for (unsigned int i = 0; i < m_size; ++i) sum += m_address[i];
    return static_cast<unsigned short>(sum);
}

void qxSerializeAdapterMemory::write_imp(unsigned char* bytes, unsigned int count)
{
    const unsigned int fitting = std::min(count, getRest());
    if (fitting > 0) std::memmove(getCurrentAddress(), bytes, fitting); // may be bytes of the block itself
    m_window.next += fitting;
    qxSerializeAdapterMemory::fillWindow(1); // what follows needs no call
    if (fitting < count) setTranslatedError("Memory Adapter written beyond end");
}

void qxSerializeAdapterMemory::write_imp(unsigned char byte)
{
    write_imp(&byte, 1);
}

unsigned int qxSerializeAdapterMemory::read_imp(unsigned char* buffer, unsigned int count)
{
    const unsigned int there = std::min(count, getRest());
    if (there > 0) std::memmove(buffer, m_window.next, there);
    m_window.next += there;
    qxSerializeAdapterMemory::fillWindow(1);
    if (there < count && !isProbing()) setTranslatedError("Memory Adapter read beyond end");
    return there;
}

unsigned char qxSerializeAdapterMemory::read_imp()
{
    if (getRest() == 0) {
        setTranslatedError("Memory Adapter read beyond end");
        return 0;
    }
    qxSerializeAdapterMemory::fillWindow(1);
    return *m_window.next++;
}

qxUInt64 qxSerializeAdapterMemory::length_imp()
{
    return getRest();
}

void qxSerializeAdapterMemory::move(int delta)
{
    const unsigned int position = getCurrentPos();
    const unsigned int target = position + static_cast<unsigned int>(delta); // deliberate: wraps around
    if (target >= m_size) {
        setTranslatedError("Memory Adapter moved beyond end");
        return;
    }
    if (delta < 0 && 0U - static_cast<unsigned int>(delta) > position) {
        setTranslatedError("Memory Adapter moved before beginning");
        return;
    }
    qxSerializeAdapter::flush();
    setPosition(target);
}

void qxSerializeAdapterMemory::fillWindow(unsigned int)
{
    // A derived class may have operations of its own, which the window would pass by.
    if (m_window.end || typeid(*this) != typeid(qxSerializeAdapterMemory)) return;
    m_window.end = m_address + m_size;
    m_window.roomEnd = m_window.end;
}

void qxSerializeAdapterMemory::setPosition(unsigned int position)
{
    m_window.next = m_address + position;
    m_window.end = nullptr; // the block may be another one now
    m_window.roomEnd = nullptr;
}

void qxSerializeAdapterMemory::setTranslatedError(const char* text)
{
    setError(qxMessage::translate(qxMessage::getDefaultSender(), text));
}
