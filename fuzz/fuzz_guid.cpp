// Feeds bytes from outside to the texts of identifiers: what is taken comes back, in every form; all else is the null GUID.
// SPDX-License-Identifier: see LICENSE

#include "qxguid.h"
#include "qxmessage.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace
{

void expect(bool condition)
{
    if (!condition) std::abort();
}

// The text as asString would write it, if it is one.
std::string usualForm(std::string text)
{
    for (char& c : text)
        if (c >= 'a' && c <= 'f') c = static_cast<char>(c - 'a' + 'A');
    return text.size() == 36 ? "{" + text + "}" : text;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    qxMessage::setMessageLevel(QX_LEVEL_ALWAYS);
    if (size == 0) return 0; // would be measured
    const auto* const bytes = reinterpret_cast<const char*>(data);
    const std::string text(bytes, size);
    const std::wstring wide(data, data + size);

    const qxGUID guid(bytes, size);
    expect(qxGUID(wide.data(), size) == guid);
    expect(size > qxString::MAX_LENGTH || qxGUID(qxString(bytes, size)) == guid);
    if (std::memchr(bytes, 0, size) == nullptr) expect(qxGUID(text.c_str()) == guid);

    const std::string written = guid.asString().getString();
    expect(guid.isNull() || written == usualForm(text));
    expect(qxGUID(written.c_str()) == guid);
    return 0;
}
