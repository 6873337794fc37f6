// Byte streams as text: Base64 and hexadecimal digits.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxserializeadapterfilter.h"

class qxBinaryTextDecoder;

/// The base of the two that follow.
class QX_API qxSerializeAdapterEncode : public qxSerializeAdapterFilter
{
public:
    ~qxSerializeAdapterEncode() noexcept(false) override;

    QX_DECLARE_TYPE;

protected:
    qxSerializeAdapterEncode(const qxRefPointer<qxSerializeAdapter>& stream, qxSerializeAction action,
                             bool isBase64);

    void encode(const unsigned char* bytes, unsigned int count) override;
    void encodeEnd() override;
    unsigned int decode(unsigned char* buffer, unsigned int count) override;

private:
    void putText(const unsigned char* bytes, unsigned int count);
    void setDecoderFault();

    const bool m_isBase64;
    std::unique_ptr<qxBinaryTextDecoder> m_decoder; // when reading
    std::unique_ptr<unsigned char[]> m_text;        // when writing
    unsigned char m_rest[3];                        // bytes of a group that is not full
    unsigned int m_restCount = 0;
};

/// Base64: four characters for three bytes, padded with "=", without line breaks when it is written. When it is read,
/// blanks, tabs and line ends mean nothing, and anything else that is not Base64 is an error with its offset in
/// the text. A flush leaves up to two bytes waiting for a third.
class QX_API qxSerializeAdapterBase64 : public qxSerializeAdapterEncode
{
public:
    qxSerializeAdapterBase64(const qxRefPointer<qxSerializeAdapter>& stream, qxSerializeAction action);
    ~qxSerializeAdapterBase64() noexcept(false) override;

    QX_DECLARE_TYPE;
};

/// Two hexadecimal digits for each byte, in upper case when they are written. When they are read, either case will do,
/// blanks, tabs and line ends mean nothing, and anything else is an error with its offset in the text.
class QX_API qxSerializeAdapterHex : public qxSerializeAdapterEncode
{
public:
    qxSerializeAdapterHex(const qxRefPointer<qxSerializeAdapter>& stream, qxSerializeAction action);
    ~qxSerializeAdapterHex() noexcept(false) override;

    QX_DECLARE_TYPE;
};
