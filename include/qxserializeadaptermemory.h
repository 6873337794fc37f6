// A block of memory as a byte stream.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxserializeadapter.h"

/// Reads and writes a caller's block of memory in place, both from one position.
///
/// Lifetime: the block must outlive the adapter, which frees it only when told to.
/// Errors:   what does not fit the block is not read or written and leaves an error text.
class QX_API qxSerializeAdapterMemory : public qxSerializeAdapter
{
public:
    /// Starts at the beginning of the block of `size` bytes.
    qxSerializeAdapterMemory(void* address, unsigned int size);
    ~qxSerializeAdapterMemory() noexcept(false) override;

    QX_DECLARE_TYPE;

    unsigned char canSeek() override;
    void setSeekMode(unsigned char mode) override;

    /// The new position may be the end of the block. Outside the block the position stays and SEEK_FAILED is
    /// returned; an unknown origin returns the position.
    qxUInt64 seek(qxInt64 offset, qxOriginPos origin) override;
    unsigned char supportAction(qxSerializeAction action) override;

    /// Leaves the adapter empty: size and position are 0 afterwards.
    void flush() override;

    /// With 1 the destructor gives the block to the C library's free.
    void setDeleteMemOnDestruction(unsigned char mode) { m_deleteOnDestruction = mode; }
    unsigned char getDeleteMemOnDestruction() const { return m_deleteOnDestruction; }

    /// Takes a new block unless `address` is null, goes to the start and forgets shared objects.
    void reset(void* address, unsigned int size);

    void* getCurrentAddress() const { return m_address + getCurrentPos(); }
    unsigned int getCurrentPos() const { return static_cast<unsigned int>(m_window.next - m_address); }

    /// The sum of all bytes of the block, modulo 65536, wherever the position is.
    unsigned short checksum() const;

protected:
    void write_imp(unsigned char* bytes, unsigned int count) override;
    void write_imp(unsigned char byte) override;
    unsigned int read_imp(unsigned char* buffer, unsigned int count) override;
    unsigned char read_imp() override;
    qxUInt64 length_imp() override;

public:
    /// Moves by `delta` bytes, but not to the end of the block.
    virtual void move(int delta);

private:
    void fillWindow(unsigned int wanted) override;

    unsigned int getRest() const { return m_size - getCurrentPos(); }
    void setPosition(unsigned int position);
    void setTranslatedError(const char* text);

    unsigned char m_deleteOnDestruction = 0;
    unsigned char* m_address;
    unsigned int m_size;
    // the position is where the window starts
};
