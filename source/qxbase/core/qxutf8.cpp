// SPDX-License-Identifier: see LICENSE

#include "qxutf8.h"

#include "core/qxutf8scan.h"
#include "qxmessage.h"

namespace
{

constexpr std::size_t LONGEST_SEQUENCE = 6; // a sequence ends at the latest with the terminator of its text

} // namespace

unsigned int qxUTF8Size(unsigned int code)
{
    const unsigned int size = qxMeasureUTF8(code);
    if (size == 0) qxMessage::message(QX_LEVEL_WARNING, "Utf encoding on faulty data set");
    return size;
}

unsigned int qxUTF8Size(const char* text)
{
    unsigned char size = 0;
    qxUTF8ToULong(text, &size);
    return size;
}

unsigned int qxUInt32ToUTF8(char* out, unsigned int code)
{
    return qxUTF8Size(code) == 0 ? 0 : qxWriteUTF8(out, code);
}

unsigned int qxUTF8ToULong(const char* text, unsigned char* size)
{
    unsigned int bytes = 0;
    const unsigned int code = qxReadUTF8(text, LONGEST_SEQUENCE, bytes);
    if (bytes == 0) qxMessage::message(QX_LEVEL_WARNING, "Utf decoding on faulty data input");
    if (size) *size = static_cast<unsigned char>(bytes);
    return code;
}
