// SPDX-License-Identifier: see LICENSE

#include "qxserializeadapterencode.h"

#include "serialize/qxbinarytext.h"

#include <algorithm>

QX_DEFINE_TYPE(qxSerializeAdapterEncode, qxSerializeAdapterFilter)
QX_DEFINE_TYPE(qxSerializeAdapterBase64, qxSerializeAdapterEncode)
QX_DEFINE_TYPE(qxSerializeAdapterHex, qxSerializeAdapterEncode)

namespace
{

constexpr unsigned int PIECE = 24576;    // bytes turned into text at once, a multiple of 3
constexpr unsigned int TEXT = 2 * PIECE; // characters of their text at most

} // namespace

qxSerializeAdapterEncode::qxSerializeAdapterEncode(const qxRefPointer<qxSerializeAdapter>& stream,
                                                   qxSerializeAction action, bool isBase64)
    : qxSerializeAdapterFilter(stream, action), m_isBase64(isBase64)
{
    if (isReading())
        m_decoder = std::make_unique<qxBinaryTextDecoder>(isBase64);
    else
        m_text = std::make_unique_for_overwrite<unsigned char[]>(TEXT);
}

qxSerializeAdapterEncode::~qxSerializeAdapterEncode() noexcept(false)
{
    finish();
}

void qxSerializeAdapterEncode::putText(const unsigned char* bytes, unsigned int count)
{
    const std::size_t size = m_isBase64 ? qxEncodeBase64(bytes, count, m_text.get())
                                        : qxEncodeHex(bytes, count, true, m_text.get());
    put(m_text.get(), static_cast<unsigned int>(size));
}

void qxSerializeAdapterEncode::encode(const unsigned char* bytes, unsigned int count)
{
    const unsigned int group = m_isBase64 ? 3 : 1;
    while (m_restCount > 0 && m_restCount < group && count > 0) {
        m_rest[m_restCount++] = *bytes++;
        --count;
    }
    if (m_restCount == group) {
        putText(m_rest, group);
        m_restCount = 0;
    }
    while (count >= group && m_restCount == 0) {
        const unsigned int piece = std::min(PIECE, count - count % group);
        putText(bytes, piece);
        bytes += piece;
        count -= piece;
    }
    if (m_restCount == 0)
        while (count > 0) m_rest[m_restCount++] = *bytes++, --count;
}

void qxSerializeAdapterEncode::encodeEnd()
{
    if (m_restCount > 0) putText(m_rest, m_restCount);
    m_restCount = 0;
}

unsigned int qxSerializeAdapterEncode::decode(unsigned char* buffer, unsigned int count)
{
    while (m_decoder->getFault() == QX_BINARY_TEXT_OK) {
        const std::span<const unsigned char> text = look();
        if (text.empty()) break;
        const auto part = static_cast<unsigned int>(std::min<std::size_t>(text.size(), count));
        const std::size_t done = m_decoder->decode(text.data(), part, buffer);
        take(part);
        if (done > 0) return static_cast<unsigned int>(done);
    }
    if (!qxSerializeAdapter::hasError() && !m_decoder->end()) setDecoderFault();
    return 0;
}

void qxSerializeAdapterEncode::setDecoderFault()
{
    const qxUInt64 offset = m_decoder->getOffset();
    switch (m_decoder->getFault()) {
    case QX_BINARY_TEXT_PADDING:
        return setFault("Wrong padding of Base64", offset);
    case QX_BINARY_TEXT_GOES_ON:
        return setFault("Base64 goes on behind its padding", offset);
    case QX_BINARY_TEXT_CUT:
        return setFault(m_isBase64 ? "Base64 ends too early" : "Hexadecimal digits end too early", offset);
    default:
        return setFault(m_isBase64 ? "No character of Base64" : "No hexadecimal digit", offset);
    }
}

qxSerializeAdapterBase64::qxSerializeAdapterBase64(const qxRefPointer<qxSerializeAdapter>& stream,
                                                   qxSerializeAction action)
    : qxSerializeAdapterEncode(stream, action, true)
{}

qxSerializeAdapterBase64::~qxSerializeAdapterBase64() noexcept(false) = default;

qxSerializeAdapterHex::qxSerializeAdapterHex(const qxRefPointer<qxSerializeAdapter>& stream,
                                             qxSerializeAction action)
    : qxSerializeAdapterEncode(stream, action, false)
{}

qxSerializeAdapterHex::~qxSerializeAdapterHex() noexcept(false) = default;
