// Strings whose memory is used again for the next text.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxstring.h"

#include <cstddef>
#include <cstring>

/// Sets strings without the heap where the memory that they have fits.
class qxStringRefill
{
public:
    /// Sets the text to `count` bytes, at most 65,535. Up to 15 bytes behind them are read, but mean nothing.
    static void set(qxString& text, const char* bytes, std::size_t count)
    {
        const auto length = static_cast<unsigned int>(count);
        if (length == 0 || text.isEmpty() || text.isUnique() ||
            qxString::roomFor(length) != qxString::roomFor(text.length())) {
            text.setBytes(bytes, count);
            return;
        }
        // Rooms are multiples of 16, and this is cheaper than to copy exactly the bytes.
        static_assert(qxString::ROOM_STEP == 16);
        for (std::size_t i = 0; i < count; i += 16) std::memcpy(text.m_text + i, bytes + i, 16);
        text.m_text[length] = 0;
        text.m_lengthAndID = length;
        text.setHashPending();
    }
};
