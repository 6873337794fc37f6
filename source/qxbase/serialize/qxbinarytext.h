// Bytes as text: Base64 and hexadecimal digits.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxtype.h"

#include <cstddef>

/// Writes the bytes as Base64, in one line, with padding when `count` is no multiple of 3; `text` has room for 4
/// characters for each begun group of 3. Returns how many were written.
std::size_t qxEncodeBase64(const unsigned char* bytes, std::size_t count, unsigned char* text);

/// Writes two hexadecimal digits for each byte and returns how many that are.
std::size_t qxEncodeHex(const unsigned char* bytes, std::size_t count, bool isUpper, unsigned char* text);

/// What is wrong with a text that is decoded.
enum qxBinaryTextFault {
    QX_BINARY_TEXT_OK,
    QX_BINARY_TEXT_NO_DIGIT, ///< a character that means nothing
    QX_BINARY_TEXT_PADDING,  ///< "=" where it can not stand, or behind bits that are not 0
    QX_BINARY_TEXT_GOES_ON,  ///< a digit behind the padding
    QX_BINARY_TEXT_CUT       ///< the end within a group of digits
};

/// Decodes Base64, whose padding must be there, or hexadecimal digits of either case, piece by piece. Blanks, tabs
/// and line ends mean nothing.
///
/// Threads: one at a time.
class qxBinaryTextDecoder
{
public:
    explicit qxBinaryTextDecoder(bool isBase64) : m_isBase64(isBase64) {}

    /// Decodes `count` characters into `bytes`, which has room for as many, and returns how many bytes came. Stops
    /// at the first fault and stays there.
    std::size_t decode(const unsigned char* text, std::size_t count, unsigned char* bytes);

    /// To be called behind the last character: false when the text is faulty or ends too early.
    bool end();

    qxBinaryTextFault getFault() const { return m_fault; }

    /// Characters decoded so far; those before the fault.
    qxUInt64 getOffset() const { return m_offset; }

private:
    bool add(unsigned char character, unsigned char*& bytes);
    bool addPadding();
    std::size_t decodeGroups(const unsigned char* text, std::size_t count, unsigned char*& bytes) const;
    unsigned int getGroupSize() const { return m_isBase64 ? 4 : 2; }
    bool fail(qxBinaryTextFault fault);

    const bool m_isBase64;
    qxBinaryTextFault m_fault = QX_BINARY_TEXT_OK;
    qxUInt64 m_offset = 0;
    unsigned int m_digits = 0;  // of the group under way
    unsigned int m_pending = 0; // the bits of it that made no byte yet
    unsigned int m_padding = 0;
};
