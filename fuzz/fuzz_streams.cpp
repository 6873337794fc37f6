// Decodes any bytes as Base64, hexadecimal digits or compressed data: in blocks and byte by byte, which must make no
// difference; what came is encoded and decoded again.
// SPDX-License-Identifier: see LICENSE

#include "qxmessage.h"
#include "qxserializeadaptercompress.h"
#include "qxserializeadapterencode.h"
#include "qxserializeadapterqueue.h"

#include <cctype>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace
{

using Stream = qxRefPointer<qxSerializeAdapter>;

constexpr std::size_t MOST_BYTES = 150000; // a few compressed bytes may become many

void require(bool condition)
{
    if (!condition) std::abort();
}

enum Form { BASE64, HEX, GZIP, FORMS };

Stream filter(Form form, const Stream& stream, qxSerializeAction action)
{
    if (form == BASE64) return new qxSerializeAdapterBase64(stream, action);
    if (form == HEX) return new qxSerializeAdapterHex(stream, action);
    return new qxSerializeAdapterCompress(stream, action, 1);
}

Stream queueOf(const std::string& bytes)
{
    Stream queue(new qxSerializeAdapterQueue);
    queue->write(bytes.data(), static_cast<unsigned int>(bytes.size()));
    return queue;
}

struct Result {
    std::string bytes;
    std::string error;
    bool isWhole = true;

    bool operator==(const Result& other) const = default;
};

// A `step` of 0 reads byte by byte.
Result decode(Form form, const std::string& text, unsigned int step)
{
    const Stream stream = filter(form, queueOf(text), QX_SERIALIZE_INPUT);
    Result result;
    while (result.isWhole && stream->hasData()) {
        if (step == 0) {
            result.bytes += static_cast<char>(stream->read());
        } else {
            std::string block(step, '\0');
            block.resize(stream->read(reinterpret_cast<unsigned char*>(block.data()), step));
            result.bytes += block;
        }
        result.isWhole = result.bytes.size() < MOST_BYTES;
    }
    result.bytes.resize(std::min(result.bytes.size(), MOST_BYTES));
    if (result.isWhole) result.error = stream->getError().getString();
    return result;
}

std::string encode(Form form, const std::string& bytes, std::size_t step)
{
    const Stream text = queueOf("");
    {
        const Stream stream = filter(form, text, QX_SERIALIZE_OUTPUT);
        for (std::size_t i = 0; i < bytes.size(); i += step) {
            const std::string part = bytes.substr(i, step);
            if (part.size() == 1)
                stream->write(static_cast<unsigned char>(part[0]));
            else
                stream->write(part.data(), static_cast<unsigned int>(part.size()));
            if (i % 3 == 1) stream->flush();
        }
    }
    std::string result(text->length(), '\0');
    text->read(reinterpret_cast<unsigned char*>(result.data()), static_cast<unsigned int>(result.size()));
    return result;
}

// The one text that encoding makes of what this one means.
std::string plain(Form form, const std::string& text)
{
    std::string result;
    for (const char c : text) {
        if (c == ' ' || c == '\t' || c == '\r' || c == '\n') continue;
        result += form == HEX ? static_cast<char>(std::toupper(static_cast<unsigned char>(c))) : c;
    }
    return result;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    qxMessage::setMessageLevel(QX_LEVEL_ALWAYS);
    if (size < 2) return 0;
    const auto form = static_cast<Form>(data[0] % FORMS);
    const unsigned int step = 1U + data[1] * 7U;
    const std::string text(reinterpret_cast<const char*>(data) + 2, size - 2);

    const Result result = decode(form, text, step);
    require(result == decode(form, text, 0));
    if (form != GZIP && result.error.empty()) require(encode(form, result.bytes, step) == plain(form, text));

    const Result again = decode(form, encode(form, text, step), step);
    require(again.error.empty() && again.bytes == text.substr(0, MOST_BYTES));
    return 0;
}
