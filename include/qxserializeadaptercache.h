// Named blocks of memory that the streams of a process share.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxserializeadapter.h"

#include <memory>
#include <string>
#include <vector>

/// Reads or writes the block of a name: what one has written, others read. URLs of "cache:NAME" open it.
///
/// Writing collects the bytes apart and puts them in the place of the block at flush and at the end, so that nobody reads
/// half of them; with QX_SERIALIZE_APPEND they begin with the block as it is. Of two that write, the last one to end is
/// kept. Who reads sees the block as it was when the stream was opened.
///
/// All blocks together, with their names, are limited, at the start to 64 MiB.
///
/// Lifetime: a block stays until it is removed or the process ends.
/// Threads:  the static operations any; one stream belongs to one thread.
/// Errors:   stored on the adapter: a name that has no block, and what goes beyond the limit, of which nothing is kept.
class QX_API qxSerializeAdapterCache : public qxSerializeAdapter
{
public:
    static constexpr qxUInt64 DEFAULT_LIMIT = 64 * 1024 * 1024; ///< bytes

    qxSerializeAdapterCache(const qxString& name, qxSerializeAction action);
    ~qxSerializeAdapterCache() noexcept(false) override;

    QX_DECLARE_TYPE;

    unsigned char supportAction(qxSerializeAction action) override;
    unsigned char canSeek() override; ///< 1 when reading

    /// When reading, moves to a place in the block, its end too; SEEK_FAILED otherwise.
    qxUInt64 seek(qxInt64 offset, qxOriginPos origin) override;

    /// When writing, makes what was written so far the block.
    void flush() override;

    static bool has(const qxString& name);

    /// False when there is no such block. Streams that read it go on.
    static bool remove(const qxString& name);
    static void removeAll();

    /// Bytes that all blocks and their names take now.
    static qxUInt64 getUsed();
    static qxUInt64 getLimit();

    /// Blocks beyond a smaller limit stay.
    static void setLimit(qxUInt64 limit);

protected:
    void write_imp(unsigned char* bytes, unsigned int count) override;
    void write_imp(unsigned char byte) override;
    unsigned int read_imp(unsigned char* buffer, unsigned int count) override;
    unsigned char read_imp() override;

    /// When reading, bytes not read yet; when writing, the length that the block will have.
    qxUInt64 length_imp() override;

private:
    using Bytes = std::vector<unsigned char>;

    bool isReading() const { return m_action == QX_SERIALIZE_INPUT; }
    bool keep(Bytes&& bytes);
    void setLimitError();

    const std::string m_key;
    const qxSerializeAction m_action;
    const qxUInt64 m_limit;               // as it was when the stream was opened
    std::shared_ptr<const Bytes> m_block; // when reading; empty when there is none
    std::size_t m_position = 0;
    Bytes m_written;
    bool m_isKept = false; // nothing was written since it was kept
};
