// SPDX-License-Identifier: see LICENSE

#include "qxserializeadapterqueue.h"

#include "qxmessage.h"

#include <algorithm>
#include <cstring>
#include <typeinfo>
#include <utility>

QX_DEFINE_TYPE(qxSerializeAdapterQueue, qxSerializeAdapter)

namespace
{

qxString translate(const char* text)
{
    return qxMessage::translate(qxMessage::getDefaultSender(), text);
}

} // namespace

qxSerializeAdapterQueue::qxSerializeAdapterQueue(qxUInt64 maxSize) : m_maxSize(maxSize) {}

qxSerializeAdapterQueue::~qxSerializeAdapterQueue() noexcept(false) = default;

void qxSerializeAdapterQueue::clear()
{
    qxSerializeAdapter::flush();
    m_pieces.clear();
    m_used = 0;
    m_window = {};
}

// Behind the last byte that the first piece has now.
const unsigned char* qxSerializeAdapterQueue::getFirstEnd() const
{
    return m_pieces.front().get() + (m_pieces.size() == 1 ? m_used : PIECE_SIZE);
}

qxUInt64 qxSerializeAdapterQueue::length_imp()
{
    if (m_pieces.empty()) return 0;
    const auto taken = static_cast<qxUInt64>(m_window.next - m_pieces.front().get());
    return static_cast<qxUInt64>(m_pieces.size() - 1) * PIECE_SIZE + m_used - taken;
}

void qxSerializeAdapterQueue::addPiece()
{
    m_pieces.push_back(m_spare ? std::move(m_spare)
                               : std::make_unique_for_overwrite<unsigned char[]>(PIECE_SIZE));
    m_used = 0;
    if (m_pieces.size() == 1) m_window = {m_pieces.front().get(), nullptr, nullptr};
}

void qxSerializeAdapterQueue::write_imp(unsigned char* bytes, unsigned int count)
{
    const qxUInt64 size = length_imp();
    const auto fitting =
        static_cast<unsigned int>(std::min<qxUInt64>(count, m_maxSize - std::min(size, m_maxSize)));
    for (unsigned int done = 0; done < fitting;) {
        if (m_pieces.empty() || m_used == PIECE_SIZE) addPiece();
        const unsigned int part = std::min(fitting - done, PIECE_SIZE - m_used);
        std::memcpy(m_pieces.back().get() + m_used, bytes + done, part);
        m_used += part;
        done += part;
    }
    if (fitting < count) setError(translate("Queue Adapter written beyond its largest size"));
}

void qxSerializeAdapterQueue::write_imp(unsigned char byte)
{
    write_imp(&byte, 1);
}

// Drops a first piece that was read; false when there is nothing to read.
bool qxSerializeAdapterQueue::hasPiece()
{
    if (m_pieces.empty()) return false;
    if (m_window.next < getFirstEnd()) return true;
    if (m_pieces.size() == 1) { // begins anew in it
        m_used = 0;
        m_window = {m_pieces.front().get(), nullptr, nullptr};
        return false;
    }
    m_spare = std::move(m_pieces.front());
    m_pieces.pop_front();
    m_window = {m_pieces.front().get(), nullptr, nullptr};
    return m_window.next < getFirstEnd();
}

void qxSerializeAdapterQueue::fillWindow(unsigned int)
{
    // A derived class may have a read_imp of its own, which the window would pass by.
    if (typeid(*this) == typeid(qxSerializeAdapterQueue) && hasPiece()) m_window.end = getFirstEnd();
}

unsigned int qxSerializeAdapterQueue::read_imp(unsigned char* buffer, unsigned int count)
{
    unsigned int done = 0;
    while (done < count && hasPiece()) {
        const auto part = std::min(count - done, static_cast<unsigned int>(getFirstEnd() - m_window.next));
        std::memcpy(buffer + done, m_window.next, part);
        m_window.next += part;
        done += part;
    }
    qxSerializeAdapterQueue::fillWindow(1); // what follows needs no call
    return done;
}

unsigned char qxSerializeAdapterQueue::read_imp()
{
    unsigned char byte = 0; // what comes when there is none
    if (qxSerializeAdapterQueue::read_imp(&byte, 1) == 0)
        setError(translate("Queue Adapter read beyond end"));
    return byte;
}
