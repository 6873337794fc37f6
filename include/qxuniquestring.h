// Strings that are unique from the start, and the IDs of unique strings.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxstring.h"

/// A string that enters itself in the table of unique strings when it is made; see qxString::makeUnique.
///
/// It stays an ordinary string when the table is full, and when it is made from an empty text without an ID.
///
/// Lifetime: the table keeps a text until cleanAllUniqueId empties it.
/// Threads:  the table has a lock of its own; the string itself is not shared without a lock.
/// Errors:   a text or an ID that is already used otherwise raises qxFatalError.
class QX_API qxUniqueString : public qxString
{
public:
    /// With an `id` of 0 the text keeps the ID that it has in the table, or gets the lowest free one.
    explicit qxUniqueString(const qxString& text, unsigned short id = 0);

    /// The text with this ID; when there is none, "Unique(%d)" with the ID.
    explicit qxUniqueString(unsigned short id);

    /// The lowest free ID; 0 when the table is full.
    static unsigned short getNextFreeId();

    /// False for 0, which is no ID.
    static bool isFreeId(unsigned short id);

    /// Empties the table. Every unique string, and every string that was found equal to one, is invalid after
    /// it.
    static void cleanAllUniqueId();
};
