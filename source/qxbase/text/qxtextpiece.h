// Pieces of texts from outside, cut to a length that fits.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxstring.h"

#include <string_view>

/// The first `maximum` bytes of `text`, less those of a character that does not fit whole.
inline qxString qxPieceOf(std::string_view text, unsigned int maximum)
{
    std::size_t length = text.size() < maximum ? text.size() : maximum;
    while (length > 0 && length < text.size() && (text[length] & 0xC0) == 0x80) --length;
    return qxString(text.data(), length);
}
