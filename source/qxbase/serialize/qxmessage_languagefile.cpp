// SPDX-License-Identifier: see LICENSE

#include "core/qxmessage_translator.h"
#include "platform/qxplatformfile.h"

#include <memory>

namespace
{

constexpr std::size_t BLOCK_BYTES = 65536;
constexpr std::size_t MOST_BYTES = 16 * 1024 * 1024;

struct Closer {
    void operator()(qxPlatformFile* file) const
    {
        int error = 0;
        qxPlatformFileClose(file, error);
    }
};

} // namespace

bool qxDefaultMessageTranslator::readFile(const qxString& url, std::string& content)
{
    std::string_view name = url.getString();
    if (name.starts_with("file:")) name.remove_prefix(5);

    int error = 0;
    const std::unique_ptr<qxPlatformFile, Closer> file(
        qxPlatformFileOpen(std::string(name).c_str(), QX_PLATFORM_FILE_READ, error));
    if (!file) return false;

    while (content.size() < MOST_BYTES) {
        const std::size_t before = content.size();
        content.resize(before + BLOCK_BYTES);
        const std::size_t count = qxPlatformFileRead(file.get(), content.data() + before, BLOCK_BYTES, error);
        content.resize(before + count);
        if (count < BLOCK_BYTES) return error == 0;
    }
    return false;
}
