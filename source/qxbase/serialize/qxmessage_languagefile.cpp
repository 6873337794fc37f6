// SPDX-License-Identifier: see LICENSE

#include "qxserializeadapter.h"

#include "core/qxmessage_translator.h"
#include "serialize/qxurlschemes.h"

#include <algorithm>

namespace
{

constexpr unsigned int BLOCK_BYTES = 65536;
constexpr std::size_t MOST_BYTES = 16 * 1024 * 1024; // what is longer is no language file

} // namespace

bool qxDefaultMessageTranslator::readFile(const qxString& url, std::string& content)
{
    if (qxIsURLForCallersOnly(url)) return false; // the URL is a setting
    const qxRefPointer<qxSerializeAdapter> adapter = qxSerializeAdapter::getURLAdapter(url);
    if (!adapter) return false;

    unsigned char block[BLOCK_BYTES];
    while (adapter->hasData()) {
        const qxUInt64 available = std::max<qxUInt64>(adapter->length(), 1);
        const auto wanted = static_cast<unsigned int>(std::min<qxUInt64>(available, BLOCK_BYTES));
        const unsigned int count = adapter->read(block, wanted);
        content.append(reinterpret_cast<const char*>(block), count);
        if (count < wanted || content.size() > MOST_BYTES) return false;
    }
    return !adapter->hasError();
}
