// A queue in memory as a byte stream.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxserializeadapter.h"

#include <deque>
#include <memory>

/// Reads the bytes that were written, in their order, and keeps only those that were not read yet. The queue grows and
/// shrinks in pieces of 16 KiB: nothing is ever moved.
///
/// Errors: what is written beyond the largest size is not kept and leaves an error text; so does a read of a
///         single byte from the empty queue. A block is read as far as there are bytes, which is no error.
class QX_API qxSerializeAdapterQueue : public qxSerializeAdapter
{
public:
    static constexpr unsigned int PIECE_SIZE = 16384; ///< bytes
    static constexpr qxUInt64 NO_LIMIT = 0xFFFFFFFFFFFFFFFF;

    /// The queue holds at most `maxSize` bytes.
    explicit qxSerializeAdapterQueue(qxUInt64 maxSize = NO_LIMIT);
    ~qxSerializeAdapterQueue() noexcept(false) override;

    QX_DECLARE_TYPE;

    /// Drops what was not read, with the bytes given back.
    void clear();

    qxUInt64 getMaxSize() const { return m_maxSize; }
    void setMaxSize(qxUInt64 size) { m_maxSize = size; }

protected:
    void write_imp(unsigned char* bytes, unsigned int count) override;
    void write_imp(unsigned char byte) override;
    unsigned int read_imp(unsigned char* buffer, unsigned int count) override;
    unsigned char read_imp() override;
    qxUInt64 length_imp() override;

private:
    using Piece = std::unique_ptr<unsigned char[]>;

    void fillWindow(unsigned int wanted) override;

    bool hasPiece();
    const unsigned char* getFirstEnd() const;
    void addPiece();

    std::deque<Piece> m_pieces; // all but the last are full; what is read next is where the window starts
    unsigned int m_used = 0;    // bytes written to the last piece
    Piece m_spare;              // one that was read, for the next that is needed
    qxUInt64 m_maxSize;
};
