// SPDX-License-Identifier: see LICENSE

#include "qxmemorycheck.h"

#include <atomic>

struct qxMemoryMark {
    std::atomic<unsigned int> holders{1};
    std::atomic<bool> isAlive{true};
};

namespace
{

qxMemoryMark* share(qxMemoryMark* mark)
{
    mark->holders.fetch_add(1, std::memory_order_relaxed);
    return mark;
}

void letGo(qxMemoryMark* mark)
{
    if (mark->holders.fetch_sub(1, std::memory_order_acq_rel) == 1) delete mark;
}

} // namespace

qxMemoryCheck::qxMemoryCheck() : m_mark(new qxMemoryMark) {}

qxMemoryCheck::qxMemoryCheck(const qxMemoryCheck&) : qxMemoryCheck() {}

qxMemoryCheck::~qxMemoryCheck() noexcept(false)
{
    m_mark->isAlive.store(false, std::memory_order_release);
    letGo(m_mark);
}

qxMemoryWatch::qxMemoryWatch(const qxMemoryCheck& object) : m_mark(share(object.m_mark)) {}

qxMemoryWatch::qxMemoryWatch(const qxMemoryWatch& other) : m_mark(share(other.m_mark)) {}

qxMemoryWatch& qxMemoryWatch::operator=(const qxMemoryWatch& other)
{
    qxMemoryMark* const before = m_mark;
    m_mark = share(other.m_mark);
    letGo(before);
    return *this;
}

qxMemoryWatch::~qxMemoryWatch()
{
    letGo(m_mark);
}

bool qxMemoryWatch::isAlive() const
{
    return m_mark->isAlive.load(std::memory_order_acquire);
}
