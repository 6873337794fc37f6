// SPDX-License-Identifier: see LICENSE

#include "xml/qxxmlbinary.h"

#include "serialize/qxbinarytext.h"

namespace
{

const unsigned char* bytesOf(std::string_view text)
{
    return reinterpret_cast<const unsigned char*>(text.data());
}

unsigned char* bytesOf(std::string& text)
{
    return reinterpret_cast<unsigned char*>(text.data());
}

} // namespace

void qxXmlAppendBinary(std::string& text, std::string_view bytes, bool isBase64)
{
    const std::size_t before = text.size();
    text.resize(before + (isBase64 ? (bytes.size() + 2) / 3 * 4 : bytes.size() * 2));
    if (isBase64)
        qxEncodeBase64(bytesOf(bytes), bytes.size(), bytesOf(text) + before);
    else
        qxEncodeHex(bytesOf(bytes), bytes.size(), false, bytesOf(text) + before);
}

bool qxXmlReadBinary(std::string_view text, bool isBase64, std::string& bytes)
{
    qxBinaryTextDecoder decoder(isBase64);
    bytes.resize(text.size());
    bytes.resize(decoder.decode(bytesOf(text), text.size(), bytesOf(bytes)));
    return decoder.end();
}
