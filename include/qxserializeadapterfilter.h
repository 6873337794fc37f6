// A byte stream over another one.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxserializeadapter.h"

#include <memory>
#include <span>

/// The base of streams that change the bytes of another one on their way: what is written is encoded and written to
/// the other, what is read is read from the other and decoded. Each works in one of the two directions.
///
/// Reading takes more from the other stream than was asked for, so that nobody else should read it meanwhile. What is
/// written waits here until a block is full; close writes what belongs behind the last byte.
///
/// Lifetime: holds the other stream, which must be counted, not on the stack. The destructors of the derived classes
///           close, and send a warning when that fails.
/// Errors:   stored on the adapter, those of the other stream too. A fault of what is read is stored when all that
///           came before it has been read. The wrong direction stores an error and does nothing.
class QX_API qxSerializeAdapterFilter : public qxSerializeAdapter
{
public:
    ~qxSerializeAdapterFilter() noexcept(false) override;

    QX_DECLARE_TYPE;

    unsigned char supportAction(qxSerializeAction action) override;

    /// When writing, hands on what can be encoded without an end and flushes the other stream, unless that is a block
    /// of memory, which a flush would empty.
    void flush() override;

    /// When writing, writes the end and flushes the other stream as above, once. True when there never was an error. What is
    /// written afterwards is an error.
    bool close();

    qxSerializeAdapter* getStream() const { return m_stream; }

protected:
    qxSerializeAdapterFilter(const qxRefPointer<qxSerializeAdapter>& stream, qxSerializeAction action);

    bool isReading() const { return m_action == QX_SERIALIZE_INPUT; }

    /// For the destructors of derived classes, whose operations the base can not call any more.
    void finish();

    /// Encodes `count` bytes, which are not 0, and puts the result.
    virtual void encode(const unsigned char* bytes, unsigned int count) = 0;

    /// Puts what can be put of what was encoded; the base has nothing to put.
    virtual void encodeFlush();

    /// Puts what belongs behind the last byte.
    virtual void encodeEnd() = 0;

    /// Writes to the other stream.
    void put(const unsigned char* bytes, unsigned int count);

    /// Decodes into `buffer` and returns how many bytes came, at most `count`; waits for the other stream until there
    /// are some. 0 at the end, which may be a fault; it is not called again.
    virtual unsigned int decode(unsigned char* buffer, unsigned int count) = 0;

    /// What comes next from the other stream and was not taken yet; waits for it. Nothing at its end.
    std::span<const unsigned char> look();

    /// Takes the first `count` bytes of those.
    void take(unsigned int count);

    /// Bytes taken from the other stream.
    qxUInt64 getTaken() const { return m_taken; }

    /// Stores `text`, translated, with the offset in the other stream as the error.
    void setFault(const char* text, qxUInt64 offset);

    void write_imp(unsigned char* bytes, unsigned int count) final;
    void write_imp(unsigned char byte) final;
    unsigned int read_imp(unsigned char* buffer, unsigned int count) final;
    unsigned char read_imp() final;
    qxUInt64 length_imp() final;
    unsigned char hasData_imp() final;

private:
    void fillWindow(unsigned int wanted) final;

    void encodeWaiting();
    void flushStream();
    void takeError();

    const qxRefPointer<qxSerializeAdapter> m_stream;
    const qxSerializeAction m_action;
    std::unique_ptr<unsigned char[]> m_buffer; // decoded bytes, or those to encode: what the window shows
    std::unique_ptr<unsigned char[]> m_input;  // what was read from the other stream
    unsigned int m_inputNext = 0;
    unsigned int m_inputEnd = 0;
    qxUInt64 m_taken = 0;
    bool m_isDone = false; // closed, at the end, or nothing more can be written
};
