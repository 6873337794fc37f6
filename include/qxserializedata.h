// The base of values that put themselves on a byte stream.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxforward.h"

/// A value that can be written to and read from a qxSerializeAdapter.
///
/// Threads: one thread at a time, as the adapter.
class QX_API qxSerializeData
{
public:
    qxSerializeData() = default;
    qxSerializeData(const qxSerializeData&) = default;
    qxSerializeData& operator=(const qxSerializeData&) = default;
    virtual ~qxSerializeData() noexcept(false) {} // derived classes may hold counted objects

    virtual void write(qxSerializeAdapter* adapter) = 0;

    /// Takes exactly the bytes of one value.
    virtual void read(qxSerializeAdapter* adapter) = 0;

    /// Gives the bytes that write would produce back to `adapter`, so that the next reads return them.
    virtual void pushBack(qxSerializeAdapter* adapter);

    /// Bytes that write would produce now; some classes give an upper bound.
    virtual unsigned int getDataSize(qxSerializeAdapter* adapter) = 0;
};
