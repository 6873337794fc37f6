// SPDX-License-Identifier: see LICENSE

#include "qxserializeadapter.h"

#include "qxerror.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <vector>

namespace
{

constexpr unsigned int MAX_COUNT = 0xFFFFFFFF;
constexpr unsigned int SURE_SIZE = 1U << 20; // bytes; a capacity up to this is allocated before it is used
constexpr unsigned int READ_SIZE = 1U << 20; // bytes that pushBackAdapterData reads at once

/// A buffer for the bytes of a whole stream: the one that the process keeps, or a local one while that is
/// taken.
class ScratchBuffer
{
public:
    ScratchBuffer() : m_isShared(!getShared().isTaken.test_and_set(std::memory_order_acquire)) {}
    ~ScratchBuffer()
    {
        if (!m_isShared) return;
        if (get().capacity() > READ_SIZE) std::vector<unsigned char>().swap(get());
        getShared().isTaken.clear(std::memory_order_release);
    }
    ScratchBuffer(const ScratchBuffer&) = delete;
    ScratchBuffer& operator=(const ScratchBuffer&) = delete;

    std::vector<unsigned char>& get() { return m_isShared ? getShared().bytes : m_local; }

private:
    struct Shared {
        std::atomic_flag isTaken; // no mutex: reading the stream may lead here again on the same thread
        std::vector<unsigned char> bytes;
    };
    static Shared& getShared()
    {
        static Shared& shared = *new Shared; // never destroyed: adapters may outlive the statics
        return shared;
    }

    const bool m_isShared;
    std::vector<unsigned char> m_local;
};

unsigned int roundUp(qxUInt64 count, unsigned int step)
{
    return static_cast<unsigned int>(std::min<qxUInt64>((count + step - 1) / step * step, MAX_COUNT));
}

} // namespace

unsigned char qxSerializeAdapter::takePushedBack()
{
    if (m_tail < m_head) qxExceptionThrows::qxThrowFatal("qxQueue:pop out of data");
    return m_mode == 0 ? m_bytes[--m_tail] : m_bytes[m_head++];
}

unsigned int qxSerializeAdapter::takePushedBack(unsigned char* buffer, unsigned int count)
{
    unsigned int taken = 0;
    while (taken < count && m_head != m_tail) buffer[taken++] = takePushedBack();
    return taken;
}

void qxSerializeAdapter::pushBack(unsigned char byte)
{
    makeRoom(1);
    m_bytes[m_tail++] = byte;
}

void qxSerializeAdapter::pushBack(const unsigned char* bytes, unsigned int count)
{
    if (count == 0) return;
    makeRoom(count);
    if (m_mode == 0)
        std::reverse_copy(bytes, bytes + count, m_bytes + m_tail);
    else
        std::memcpy(m_bytes + m_tail, bytes, count);
    m_tail += count;
}

void qxSerializeAdapter::allocPushBack(unsigned int count)
{
    const qxUInt64 coming = static_cast<qxUInt64>(count) + getPushBackCount();
    m_step = static_cast<unsigned int>(std::min<qxUInt64>(std::max<qxUInt64>(coming, m_step), MAX_COUNT));
}

void qxSerializeAdapter::pushBackAdapterData()
{
    const qxUInt64 there = std::min<qxUInt64>(length_imp(), MAX_COUNT - getPushBackCount());
    ScratchBuffer scratch;
    std::vector<unsigned char>& bytes = scratch.get();
    bytes.clear();
    while (bytes.size() < there) {
        const std::size_t before = bytes.size();
        const auto step = static_cast<unsigned int>(std::min<qxUInt64>(there - before, READ_SIZE));
        bytes.resize(before + step);
        const unsigned int got = read_imp(bytes.data() + before, step);
        bytes.resize(before + got);
        if (got < step) break;
    }
    if (bytes.empty()) return;

    const auto count = static_cast<unsigned int>(bytes.size());
    if (m_mode != 0 || m_head == m_tail) {
        pushBack(bytes.data(), count);
        return;
    }
    // Beneath what is there: the bytes given back before are the next ones to be read.
    makeRoom(count);
    std::memmove(m_bytes + m_head + count, m_bytes + m_head, m_tail - m_head);
    std::reverse_copy(bytes.begin(), bytes.end(), m_bytes + m_head);
    m_tail += count;
}

void qxSerializeAdapter::makeRoom(unsigned int count)
{
    if (m_head == m_tail) {
        m_head = 0;
        m_tail = 0;
    }
    if (count <= std::min(m_capacity, m_allocated) - m_tail) return;

    if (m_head != 0 && m_head >= m_tail / 2) { // as much is moved as was taken out before
        std::memmove(m_bytes, m_bytes + m_head, m_tail - m_head);
        m_tail -= m_head;
        m_head = 0;
    }
    const qxUInt64 needed = static_cast<qxUInt64>(m_tail) + count;
    if (needed > MAX_COUNT) qxThrowBadAlloc(__FILE__, __LINE__);
    const unsigned int capacity = std::max(m_capacity, roundUp(needed, m_step));
    if (needed > m_allocated) {
        qxUInt64 size = std::max<qxUInt64>(needed, 2ULL * m_allocated);
        if (capacity <= SURE_SIZE) size = std::max<qxUInt64>(size, capacity);
        void* const bytes = qx_realloc(m_bytes, size);
        if (!bytes) qxThrowBadAlloc(__FILE__, __LINE__);
        m_bytes = static_cast<unsigned char*>(bytes);
        m_allocated = static_cast<unsigned int>(std::min<qxUInt64>(size, MAX_COUNT));
    }
    m_capacity = capacity;
}
