// SPDX-License-Identifier: see LICENSE

#include "text/qxtokencodec.h"

#include "text/qxtokenscan.h"

#include <algorithm>

namespace
{

constexpr char16_t REPLACEMENT = 0xFFFD;

bool isHighSurrogate(unsigned int token)
{
    return (token & 0xFC00) == 0xD800;
}

bool isLowSurrogate(unsigned int token)
{
    return (token & 0xFC00) == 0xDC00;
}

unsigned int joinSurrogates(unsigned int high, unsigned int low)
{
    return 0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00);
}

qxUInt64 loadEight(const unsigned char* bytes)
{
    qxUInt64 word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

constexpr qxUInt64 HIGH_BITS = 0x8080808080808080ULL;

/// Widens leading bytes below 128, at most `count`, and returns how many.
std::size_t widenAscii(const unsigned char* bytes, std::size_t count, char16_t* out)
{
    typedef unsigned char Bytes __attribute__((vector_size(16)));
    typedef unsigned short Tokens __attribute__((vector_size(32)));
    std::size_t done = 0;
    while (count - done >= 16) {
        if (((loadEight(bytes + done) | loadEight(bytes + done + 8)) & HIGH_BITS) != 0) break;
        Bytes narrow;
        std::memcpy(&narrow, bytes + done, sizeof narrow);
        const Tokens wide = __builtin_convertvector(narrow, Tokens);
        std::memcpy(out + done, &wide, sizeof wide);
        done += 16;
    }
    while (done < count && bytes[done] < 0x80) {
        out[done] = bytes[done];
        ++done;
    }
    return done;
}

qxDecodeResult decodeBytes(const unsigned char* bytes, std::size_t count, char16_t* out, std::size_t room)
{
    const std::size_t taken = std::min(count, room);
    for (std::size_t i = 0; i < taken; ++i) out[i] = bytes[i];
    return {taken, taken, qxDecodeStop::DONE, false};
}

qxDecodeResult decodeUTF16(const unsigned char* bytes, std::size_t count, char16_t* out, std::size_t room,
                           bool bigEndian)
{
    const std::size_t tokens = std::min(count / 2, room);
    const std::size_t high = bigEndian ? 0 : 1;
    unsigned int seen = 0;
    for (std::size_t i = 0; i < tokens; ++i) {
        const unsigned int token = bytes[2 * i + high] * 256U + bytes[2 * i + 1 - high];
        out[i] = static_cast<char16_t>(token);
        seen |= (token & 0xF800) == 0xD800;
    }
    const bool isCut = tokens < room && count % 2 != 0;
    return {2 * tokens, tokens, isCut ? qxDecodeStop::SHORT : qxDecodeStop::DONE, seen != 0};
}

bool isContinuation(unsigned char byte)
{
    return (byte & 0xC0) == 0x80;
}

/// Decodes characters of two bytes and more up to the first ASCII byte.
class MultiByteDecoder
{
public:
    MultiByteDecoder(const unsigned char* in, const unsigned char* end, char16_t* out,
                     const char16_t* roomEnd)
        : m_in(in), m_end(end), m_out(out), m_roomEnd(roomEnd)
    {}

    void run()
    {
        while (m_stop == qxDecodeStop::DONE && m_in < m_end && m_roomEnd - m_out >= 2) {
            if (*m_in >= 0x80) {
                if (*m_in >= 0xE0 || decodePairs() == 0) decodeOne();
            } else if (m_end - m_in >= 2 && m_in[1] >= 0x80) {
                *m_out++ = *m_in++; // such as the blank between two words
            } else {
                break;
            }
        }
    }

    const unsigned char* m_in;
    const unsigned char* m_end;
    char16_t* m_out;
    const char16_t* m_roomEnd;
    qxDecodeStop m_stop = qxDecodeStop::DONE;
    bool m_hasPairs = false;

private:
    /// Decodes characters of two bytes, up to eight at once, and returns how many.
    unsigned int decodePairs()
    {
        if constexpr (std::endian::native != std::endian::little) return 0;
        if (m_end - m_in < 16 || m_roomEnd - m_out < 8) return 0;
        qxTokenVector pairs; // each the lead byte and, above it, the other
        std::memcpy(&pairs, m_in, sizeof pairs);
        const qxTokenAnswers others = ((pairs & 0xC0E0) != 0x80C0) | ((pairs & 0x1E) == 0);
        const qxTokenVector tokens = (pairs & 0x1F) << 6 | (pairs >> 8 & 0x3F);
        std::memcpy(m_out, &tokens, sizeof tokens);
        const unsigned int count = qxFirstAnswer(others);
        m_in += 2 * count;
        m_out += count;
        return count;
    }

    void decodeOne()
    {
        const unsigned int lead = *m_in;
        const std::ptrdiff_t there = m_end - m_in;
        if (lead >= 0xC2 && lead < 0xE0) {
            if (there < 2) return stop(qxDecodeStop::SHORT);
            if (!isContinuation(m_in[1])) return stop(qxDecodeStop::FAULT);
            *m_out++ = static_cast<char16_t>((lead & 0x1F) << 6 | (m_in[1] & 0x3FU));
            m_in += 2;
        } else if ((lead & 0xF0) == 0xE0) {
            if (there < 3) return stop(qxDecodeStop::SHORT);
            decodeThree(lead);
        } else if (lead >= 0xF0 && lead < 0xF5) {
            if (there < 4) return stop(qxDecodeStop::SHORT);
            decodeFour(lead);
        } else {
            stop(qxDecodeStop::FAULT);
        }
    }

    void decodeThree(unsigned int lead)
    {
        const unsigned int code = (lead & 0x0F) << 12 | (m_in[1] & 0x3FU) << 6 | (m_in[2] & 0x3FU);
        const bool isValid =
            isContinuation(m_in[1]) && isContinuation(m_in[2]) && code >= 0x800 && (code & 0xF800) != 0xD800;
        if (!isValid) return stop(qxDecodeStop::FAULT);
        *m_out++ = static_cast<char16_t>(code);
        m_in += 3;
    }

    void decodeFour(unsigned int lead)
    {
        const unsigned int code =
            (lead & 0x07) << 18 | (m_in[1] & 0x3FU) << 12 | (m_in[2] & 0x3FU) << 6 | (m_in[3] & 0x3FU);
        const bool isValid = isContinuation(m_in[1]) && isContinuation(m_in[2]) && isContinuation(m_in[3]) &&
                             code >= 0x10000 && code < 0x110000;
        if (!isValid) return stop(qxDecodeStop::FAULT);
        *m_out++ = static_cast<char16_t>(0xD800 + ((code - 0x10000) >> 10));
        *m_out++ = static_cast<char16_t>(0xDC00 + (code & 0x3FF));
        m_hasPairs = true;
        m_in += 4;
    }

    void stop(qxDecodeStop why) { m_stop = why; }
};

qxDecodeResult decodeUTF8(const unsigned char* bytes, std::size_t count, char16_t* out, std::size_t room)
{
    MultiByteDecoder decoder(bytes, bytes + count, out, out + room);
    while (decoder.m_stop == qxDecodeStop::DONE && decoder.m_in < decoder.m_end) {
        const std::size_t left = static_cast<std::size_t>(decoder.m_end - decoder.m_in);
        const std::size_t roomLeft = static_cast<std::size_t>(decoder.m_roomEnd - decoder.m_out);
        const std::size_t ascii = widenAscii(decoder.m_in, std::min(left, roomLeft), decoder.m_out);
        decoder.m_in += ascii;
        decoder.m_out += ascii;
        if (decoder.m_roomEnd - decoder.m_out < 2) break;
        decoder.run();
    }
    return {static_cast<std::size_t>(decoder.m_in - bytes), static_cast<std::size_t>(decoder.m_out - out),
            decoder.m_stop, decoder.m_hasPairs};
}

/// Narrows leading tokens below 128, at most `count`, and returns how many.
std::size_t narrowAscii(const char16_t* tokens, std::size_t count, char* out)
{
    typedef unsigned short Tokens __attribute__((vector_size(32)));
    typedef unsigned char Bytes __attribute__((vector_size(16)));
    std::size_t done = 0;
    while (count - done >= 16) {
        const qxTokenVector both = qxLoadTokens(tokens + done) | qxLoadTokens(tokens + done + 8);
        if (qxFirstAnswer(both > 0x7F) < 8) break;
        Tokens wide;
        std::memcpy(&wide, tokens + done, sizeof wide);
        const Bytes narrow = __builtin_convertvector(wide, Bytes);
        std::memcpy(out + done, &narrow, sizeof narrow);
        done += 16;
    }
    while (done < count && tokens[done] < 0x80) {
        out[done] = static_cast<char>(tokens[done]);
        ++done;
    }
    return done;
}

char* writeTwo(char* out, unsigned int code)
{
    out[0] = static_cast<char>(0xC0 | code >> 6);
    out[1] = static_cast<char>(0x80 | (code & 0x3F));
    return out + 2;
}

char* writeThree(char* out, unsigned int code)
{
    out[0] = static_cast<char>(0xE0 | code >> 12);
    out[1] = static_cast<char>(0x80 | (code >> 6 & 0x3F));
    out[2] = static_cast<char>(0x80 | (code & 0x3F));
    return out + 3;
}

char* writeFour(char* out, unsigned int code)
{
    out[0] = static_cast<char>(0xF0 | code >> 18);
    out[1] = static_cast<char>(0x80 | (code >> 12 & 0x3F));
    out[2] = static_cast<char>(0x80 | (code >> 6 & 0x3F));
    out[3] = static_cast<char>(0x80 | (code & 0x3F));
    return out + 4;
}

} // namespace

qxDecodeResult qxDecodeTokens(qxTokenForm form, const unsigned char* bytes, std::size_t count, char16_t* out,
                              std::size_t room)
{
    switch (form) {
    case qxTokenForm::UTF8:
        return decodeUTF8(bytes, count, out, room);
    case qxTokenForm::UTF16_LITTLE:
        return decodeUTF16(bytes, count, out, room, false);
    case qxTokenForm::UTF16_BIG:
        return decodeUTF16(bytes, count, out, room, true);
    case qxTokenForm::BYTE:
        break;
    }
    return decodeBytes(bytes, count, out, room);
}

std::size_t qxMeasureSource(qxTokenForm form, const char16_t* tokens, std::size_t count)
{
    if (form == qxTokenForm::BYTE) return count;
    if (form != qxTokenForm::UTF8) return 2 * count;
    std::size_t bytes = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const unsigned int token = tokens[i];
        if (isHighSurrogate(token)) continue;
        bytes += isLowSurrogate(token) ? 4 : 1U + (token >= 0x80) + (token >= 0x800);
    }
    return bytes;
}

void qxEncodeSource(qxTokenForm form, const char16_t* tokens, std::size_t count, unsigned char* out)
{
    if (form == qxTokenForm::UTF8) {
        // Deliberate: a low surrogate at the start writes its whole character, as it is counted; what its
        // high half was is asked for one token before, which the caller still holds.
        for (std::size_t i = 0; i < count; ++i) {
            char bytes[12];
            const bool isPair = isLowSurrogate(tokens[i]);
            if (isHighSurrogate(tokens[i])) continue;
            const std::size_t written = qxTokensToUTF8(tokens + i - isPair, 1U + isPair, bytes);
            std::memcpy(out, bytes, written);
            out += written;
        }
        return;
    }
    for (std::size_t i = 0; i < count; ++i) {
        const unsigned char low = static_cast<unsigned char>(tokens[i]);
        const unsigned char high = static_cast<unsigned char>(tokens[i] >> 8);
        if (form == qxTokenForm::UTF16_BIG) *out++ = high;
        *out++ = low;
        if (form == qxTokenForm::UTF16_LITTLE) *out++ = high;
    }
}

std::size_t qxTokensToUTF8(const char16_t* tokens, std::size_t count, char* out)
{
    char* const start = out;
    const char16_t* const end = tokens + count;
    while (tokens < end) {
        const std::size_t ascii = narrowAscii(tokens, static_cast<std::size_t>(end - tokens), out);
        tokens += ascii;
        out += ascii;
        while (tokens < end && *tokens >= 0x80) {
            const unsigned int token = *tokens++;
            if (token < 0x800) {
                out = writeTwo(out, token);
            } else if ((token & 0xF800) != 0xD800) {
                out = writeThree(out, token);
            } else if (isHighSurrogate(token) && tokens < end && isLowSurrogate(*tokens)) {
                out = writeFour(out, joinSurrogates(token, *tokens++));
            } else {
                out = writeThree(out, REPLACEMENT);
            }
        }
    }
    return static_cast<std::size_t>(out - start);
}
