// What the adapters ask of texts from outside.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxstring.h"

#include <cstring>

/// The first `maximum` bytes of `text`, less those of a character that does not fit whole.
inline qxString qxCutText(const qxString& text, unsigned int maximum)
{
    if (text.length() <= maximum) return text;
    const char* const bytes = text.getString();
    unsigned int length = maximum;
    while (length > 0 && (bytes[length] & 0xC0) == 0x80) --length;
    return qxString(bytes, length);
}

/// True for a name that the system would end too early, and so take for another one.
inline bool qxHasZeroByte(const qxString& name)
{
    return std::memchr(name.getString(), 0, name.length()) != nullptr;
}
