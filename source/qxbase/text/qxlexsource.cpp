// SPDX-License-Identifier: see LICENSE

#include "text/qxlexsource.h"

#include "text/qxlexstate.h"

#include <algorithm>

int qxLexStreamSource::peek()
{
    if (m_maxCharacters != 0 && m_count >= m_maxCharacters) {
        m_isLimited = true;
        return -1;
    }
    if (m_next >= qxLexState::MAX_TOKEN) return -1;
    qxLexCharacter character;
    do {
        character = qxDecodeCharacter(m_form, m_bytes.data() + m_next, m_bytes.size() - m_next);
    } while (character.isShort && pull());
    m_size = character.size;
    return character.size == 0 ? -1 : static_cast<int>(character.code);
}

void qxLexStreamSource::takeRun(unsigned int kinds)
{
    for (int c = peek(); c >= 0 && qxTokenKinds::isOfKind(static_cast<unsigned int>(c), kinds); c = peek())
        take();
}

void qxLexStreamSource::skipTo(unsigned char one, unsigned char other)
{
    for (int c = peek(); c >= 0 && c != one && c != other; c = peek()) take();
}

/// Adds the bytes of a character of the queue, or one byte of the adapter; false at the end.
bool qxLexStreamSource::pull()
{
    if (m_isAtEnd) return false;
    if (m_queueEnds.size() < m_queue.size()) {
        unsigned char bytes[4];
        const unsigned int size = qxEncodeCharacter(m_form, m_queue[m_queueEnds.size()], bytes);
        m_bytes.insert(m_bytes.end(), bytes, bytes + size);
        m_queuedBytes += size;
        m_queueEnds.push_back(m_queuedBytes);
        return true;
    }
    if (m_lentUsed == m_lent.size()) {
        qxAdapterBytes::consume(m_adapter, static_cast<unsigned int>(m_lentUsed));
        m_lentUsed = 0;
        m_lent = qxAdapterBytes::borrow(m_adapter, qxLexState::BLOCK);
    }
    if (!m_lent.empty()) {
        m_bytes.push_back(m_lent[m_lentUsed++]);
        return true;
    }
    if (!m_adapter.hasData()) {
        m_isAtEnd = true;
        return false;
    }
    m_bytes.push_back(m_adapter.read());
    return true;
}

unsigned int qxLexStreamSource::finish(unsigned int size)
{
    const auto inToken = std::upper_bound(m_queueEnds.begin(), m_queueEnds.end(), size);
    m_queue.erase(m_queue.begin(), m_queue.begin() + (inToken - m_queueEnds.begin()));

    const unsigned int kept = std::max(size, m_queuedBytes);
    const std::size_t excess = m_bytes.size() - kept;
    const std::size_t stillLent = std::min(excess, m_lentUsed);
    qxAdapterBytes::consume(m_adapter, static_cast<unsigned int>(m_lentUsed - stillLent));
    if (excess > stillLent)
        m_adapter.pushBack(m_bytes.data() + kept, static_cast<unsigned int>(excess - stillLent));
    m_bytes.resize(size);
    return size - std::min(size, m_queuedBytes);
}
