// Feeds bytes from outside to the conversions of strings: none reads beyond its text, and those that have an
// inverse come back.
// SPDX-License-Identifier: see LICENSE

#include "qxmessage.h"
#include "qxstring.h"
#include "qxutf8.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace
{

void expect(bool condition)
{
    if (!condition) std::abort();
}

bool isSame(const qxString& left, const qxString& right)
{
    return left.length() == right.length() &&
           std::memcmp(left.getString(), right.getString(), left.length()) == 0;
}

void decodeOneByOne(const qxString& text)
{
    for (unsigned int i = 0; i < text.length();) {
        unsigned char size = 0;
        const unsigned int code = qxUTF8ToULong(text.getString() + i, &size);
        expect(size <= 6 && qxUTF8Size(text.getString() + i) == size);
        if (size == 0) return;
        char bytes[6];
        const unsigned int written = qxUInt32ToUTF8(bytes, code);
        expect(written > 0 && written <= size); // fewer for forms that are longer than they need to be
        i += size;
    }
}

// Every text in wide units comes back as it was.
void widenAndBack(const qxString& text)
{
    const unsigned int units = text.getWideStringLength();
    std::vector<wchar_t> wide(units + 1);
    expect(text.getWideString(wide.data()) == units && wide[units] == 0);
    const qxString encoded(wide.data(), units);
    std::vector<wchar_t> again(encoded.getWideStringLength() + 1);
    encoded.getWideString(again.data());
    expect(isSame(encoded, qxString(again.data(), again.size() - 1)));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    qxMessage::setMessageLevel(QX_LEVEL_ALWAYS);
    if (size > 10000) return 0; // conversions make up to six bytes of one
    const qxString text(reinterpret_cast<const char*>(data), size);
    decodeOneByOne(text);
    widenAndBack(text);

    expect(isSame(qxString(text).convertAsciiToUTF8().convertUTF8ToAscii(), text));
    expect(isSame(qxString(text).convertCtrlToText().convertTextToCtrl(), text));
    expect(isSame(qxString(text).convertCtrlToText(true).convertTextToCtrl(), text));
    expect(isSame(qxString(text).scramble(42).scramble(42), text));
    const qxString encoded = qxString(text).convertAsciiToUTF8();
    expect(isSame(qxString(encoded).reverse().reverse(), encoded));
    expect(isSame(qxString(encoded).convertUTF8ToNumList(",", "0x").convertNumListToUTF8(), encoded));
    qxString(text).convertUTF8ToAscii();
    qxString(text).convertNumListToUTF8();
    qxString(text).convertTextToCtrl();
    return 0;
}
