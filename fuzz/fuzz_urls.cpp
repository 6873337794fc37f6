// Takes any bytes for a URL and a base, divided by a line feed: what URLs are taken into must be parts of them, and
// resolving twice must change nothing.
// SPDX-License-Identifier: see LICENSE

#include "qxmessage.h"
#include "qxserializeadapter.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace
{

void require(bool condition)
{
    if (!condition) std::abort();
}

std::string textOf(const qxString& text)
{
    return {text.getString(), text.length()};
}

qxString stringOf(const std::string& text)
{
    return qxString(text.data(), std::min<std::size_t>(text.size(), qxString::MAX_LENGTH));
}

void checkParts(const qxString& url)
{
    const std::string whole = textOf(url);
    require(whole.starts_with(textOf(qxSerializeAdapter::getURLFolder(url))));
    const std::string scheme = textOf(qxSerializeAdapter::getURLScheme(url));
    require(scheme.empty() || (scheme.size() > 1 && whole[scheme.size()] == ':'));
    for (const char* const name : {"encoding", "x", ""}) {
        const std::string value = textOf(qxSerializeAdapter::getURLAttributeValue(url, name, "?"));
        require(value == "?" || (value.size() < whole.size() && whole.find('?') != std::string::npos));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    qxMessage::setMessageLevel(QX_LEVEL_ALWAYS);
    const std::string input(reinterpret_cast<const char*>(data), size);
    const std::size_t end = std::min(input.find('\n'), input.size());
    const qxString url = stringOf(input.substr(0, end));
    const qxString base = stringOf(input.substr(std::min(end + 1, input.size())));
    checkParts(url);
    checkParts(base);

    const qxString resolved = qxSerializeAdapter::resolveURL(url, base);
    checkParts(resolved);
    const bool isAbsolute = !textOf(qxSerializeAdapter::getURLScheme(resolved)).empty();
    if (isAbsolute) require(textOf(qxSerializeAdapter::resolveURL(resolved, base)) == textOf(resolved));

    // Documents must not reach memory by a base that does not name it itself.
    if (textOf(qxSerializeAdapter::getURLScheme(resolved)) == "mem")
        require(textOf(qxSerializeAdapter::getURLScheme(url)) == "mem" ||
                textOf(qxSerializeAdapter::getURLScheme(base)) == "mem");
    return 0;
}
