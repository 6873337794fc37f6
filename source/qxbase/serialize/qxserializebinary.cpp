// SPDX-License-Identifier: see LICENSE

#include "qxserializebinary.h"

#include "qxmessage.h"

qxWireForm<wchar_t>::Wire qxWireForm<wchar_t>::toWire(wchar_t value)
{
    constexpr Wire REPLACEMENT = 0xFFFD; // the character for what cannot be shown
    const auto code = static_cast<qxUInt64>(static_cast<std::make_unsigned_t<wchar_t>>(value));
    if (code <= 0xFFFF) return static_cast<Wire>(code);
    qxMessage::message(QX_LEVEL_WARNING, "Character %d does not fit two bytes", code);
    return REPLACEMENT;
}
