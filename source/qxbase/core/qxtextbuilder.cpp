// SPDX-License-Identifier: see LICENSE

#include "core/qxtextbuilder.h"

#include "qxerror.h"
#include "qxmemory.h"
#include "qxstring.h"

#include <algorithm>

void qxThrowTooManyCharacters()
{
    qxExceptionThrows::qxThrowFatal("Too many characters in qxString");
}

qxTextBuilder::~qxTextBuilder()
{
    if (m_bytes != m_fixed) qx_free(m_bytes);
}

void qxTextBuilder::grow(std::size_t count)
{
    if (count > qxString::MAX_LENGTH - m_length) qxThrowTooManyCharacters();
    const std::size_t room =
        std::max(m_length + count, std::min<std::size_t>(2 * m_room, qxString::MAX_LENGTH));
    char* const bytes = static_cast<char*>(qx_realloc(m_bytes != m_fixed ? m_bytes : nullptr, room + 1));
    if (!bytes) qxThrowBadAlloc(__FILE__, __LINE__);
    if (m_bytes == m_fixed) std::memcpy(bytes, m_fixed, m_length);
    m_bytes = bytes;
    m_room = room;
}

void qxTextBuilder::copyLong(char* to, const char* from, std::size_t count)
{
    std::memcpy(to, from, count);
}
