// SPDX-License-Identifier: see LICENSE

#include "qxserializeadaptercompress.h"

#include "qxmemory.h"

#include <algorithm>

#include <zlib.h>

QX_DEFINE_TYPE(qxSerializeAdapterCompress, qxSerializeAdapterFilter)

namespace
{

constexpr unsigned int PIECE = 65536;         // compressed bytes written at once
constexpr int GZIP_WINDOW = MAX_WBITS + 16;   // the largest window, in the form of gzip
constexpr int MEMORY_LEVEL = 8;               // zlib's own choice
constexpr int UNKNOWN_SYSTEM = 255;           // so that all systems write the same
constexpr unsigned char FIRST_OF_MEMBER = 31; // of the two bytes that gzip data begins with
constexpr qxUInt64 HEADER_SIZE = 10;          // bytes

} // namespace

struct qxSerializeAdapterCompress::State {
    explicit State(bool isReading, int level) : isInflating(isReading)
    {
        const int result = isReading ? inflateInit2(&stream, GZIP_WINDOW)
                                     : deflateInit2(&stream, level, Z_DEFLATED, GZIP_WINDOW, MEMORY_LEVEL,
                                                    Z_DEFAULT_STRATEGY);
        if (result != Z_OK) qxThrowBadAlloc(__FILE__, __LINE__); // all that can be wrong with these arguments
        if (isReading) return;
        header.os = UNKNOWN_SYSTEM;
        deflateSetHeader(&stream, &header);
        output = std::make_unique_for_overwrite<unsigned char[]>(PIECE);
    }
    ~State()
    {
        if (isInflating)
            inflateEnd(&stream);
        else
            deflateEnd(&stream);
    }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    const bool isInflating;
    bool isInMember = false; // behind a member that ended, before the next began, it is not
    bool hasMember = false;
    bool isSound = true;
    bool hasOutput = false; // the last call filled the room: there may be more without further input
    z_stream stream = {};
    gz_header header = {};
    std::unique_ptr<unsigned char[]> output;
};

qxSerializeAdapterCompress::qxSerializeAdapterCompress(const qxRefPointer<qxSerializeAdapter>& stream,
                                                       qxSerializeAction action, int level)
    : qxSerializeAdapterFilter(stream, action),
      m_state(std::make_unique<State>(isReading(), std::clamp(level, 0, 9)))
{}

qxSerializeAdapterCompress::~qxSerializeAdapterCompress() noexcept(false)
{
    finish();
}

// Compresses the input that the state holds, in zlib's `mode`, and puts what comes.
void qxSerializeAdapterCompress::deflateAll(int mode)
{
    z_stream& stream = m_state->stream;
    do {
        stream.next_out = m_state->output.get();
        stream.avail_out = PIECE;
        deflate(&stream, mode); // has nothing to complain about but a lack of room or of work
        put(m_state->output.get(), PIECE - stream.avail_out);
    } while (stream.avail_out == 0 && !qxSerializeAdapter::hasError());
}

void qxSerializeAdapterCompress::encode(const unsigned char* bytes, unsigned int count)
{
    m_state->stream.next_in = const_cast<unsigned char*>(bytes); // zlib only reads it
    m_state->stream.avail_in = count;
    deflateAll(Z_NO_FLUSH);
}

void qxSerializeAdapterCompress::encodeFlush()
{
    deflateAll(Z_SYNC_FLUSH);
}

void qxSerializeAdapterCompress::encodeEnd()
{
    deflateAll(Z_FINISH);
}

// Whether a member begins or goes on here; false at the end of the data and at a fault.
bool qxSerializeAdapterCompress::isAtMember()
{
    const std::span<const unsigned char> input = look();
    if (qxSerializeAdapter::hasError()) return false;
    if (m_state->isInMember) {
        if (input.empty() && !m_state->hasOutput) setFault("Compressed data ends too early", getTaken());
        return !input.empty() || m_state->hasOutput;
    }
    if (input.empty()) {
        if (!m_state->hasMember) setFault("Compressed data ends too early", getTaken());
        return false;
    }
    if (m_state->hasMember) {
        if (input[0] != FIRST_OF_MEMBER) {
            setFault("Other bytes behind the compressed data", getTaken());
            return false;
        }
        inflateReset(&m_state->stream);
    }
    m_state->isInMember = true;
    m_state->hasMember = true;
    return true;
}

unsigned int qxSerializeAdapterCompress::decode(unsigned char* buffer, unsigned int count)
{
    z_stream& stream = m_state->stream;
    while (m_state->isSound && isAtMember()) {
        const std::span<const unsigned char> input = look();
        stream.next_in = const_cast<unsigned char*>(input.data());
        stream.avail_in = static_cast<unsigned int>(input.size());
        stream.next_out = buffer;
        stream.avail_out = count;
        const int result = inflate(&stream, Z_NO_FLUSH);
        take(static_cast<unsigned int>(input.size()) - stream.avail_in);
        m_state->hasOutput = stream.avail_out == 0;
        if (result == Z_MEM_ERROR) qxThrowBadAlloc(__FILE__, __LINE__);
        if (result == Z_STREAM_END) m_state->isInMember = false;
        // Z_BUF_ERROR: nothing was waiting for room after all.
        m_state->isSound = result == Z_OK || result == Z_STREAM_END || result == Z_BUF_ERROR;
        if (stream.avail_out < count) return count - stream.avail_out;
    }
    if (!m_state->isSound) {
        const bool isAnything = getTaken() <= HEADER_SIZE;
        setFault(isAnything ? "No compressed data" : "Wrong compressed data", getTaken());
    }
    return 0;
}
