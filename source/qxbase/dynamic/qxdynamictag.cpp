// SPDX-License-Identifier: see LICENSE

#include "dynamic/qxdynamictag.h"

#include "qxmemory.h"

#include <cstring>
#include <new>

constinit const qxDynamicTag qxDynamicTags[QX_DYNAMIC_CUSTOM] = {
    {"void", QX_DYNAMIC_VOID},   {"num", QX_DYNAMIC_NUM},     {"llnum", QX_DYNAMIC_LLNUM},
    {"str", QX_DYNAMIC_STR},     {"vec2", QX_DYNAMIC_VEC2},   {"vec3", QX_DYNAMIC_VEC3},
    {"vec4", QX_DYNAMIC_VEC4},   {"guid", QX_DYNAMIC_GUID},   {"ptr", QX_DYNAMIC_PTR},
    {"ref", QX_DYNAMIC_REF},     {"error", QX_DYNAMIC_ERROR}, {"array", QX_DYNAMIC_ARRAY},
    {"chain", QX_DYNAMIC_CHAIN}, {"cont", QX_DYNAMIC_CONT},   {"ttag", QX_DYNAMIC_TTAG},
};

namespace
{

constexpr std::size_t LONGEST = 5; // bytes of the library's tags

/// The first bytes of a text and the zero behind it as one word, which is compared under the mask.
struct Word {
    qxUInt64 mask = 0;
    qxUInt64 bytes = 0;
};

struct Words {
    Words()
    {
        for (std::size_t i = 0; i < QX_DYNAMIC_CUSTOM; ++i) {
            const std::string_view text = qxDynamicTags[i].text;
            std::memcpy(&words[i].bytes, text.data(), text.size());
            std::memset(&words[i].mask, 0xFF, text.size() + 1);
        }
    }

    Word words[QX_DYNAMIC_CUSTOM];
};

} // namespace

const qxDynamicTag* qxDynamicTag::find(std::string_view text)
{
    if (text.size() > LONGEST) return nullptr;
    for (const qxDynamicTag& tag : qxDynamicTags)
        if (tag.text == text) return &tag;
    return nullptr;
}

const qxDynamicTag* qxDynamicTag::findAt(const unsigned char* bytes)
{
    static const Words table;
    qxUInt64 word = 0;
    std::memcpy(&word, bytes, sizeof word);
    for (std::size_t i = 0; i < QX_DYNAMIC_CUSTOM; ++i)
        if ((word & table.words[i].mask) == table.words[i].bytes) return &qxDynamicTags[i];
    return nullptr;
}

bool qxDynamicTag::isPossible(std::string_view text)
{
    return !text.empty() && text.size() <= qxString::MAX_LENGTH && text.find('\0') == text.npos;
}

const qxDynamicTag* qxDynamicTag::make(std::string_view text)
{
    if (const qxDynamicTag* const own = find(text)) return own;
    void* const room = qx_new(sizeof(qxDynamicTag) + text.size() + 1);
    char* const bytes = static_cast<char*>(room) + sizeof(qxDynamicTag);
    std::memcpy(bytes, text.data(), text.size());
    bytes[text.size()] = 0;
    return new (room) qxDynamicTag{{bytes, text.size()}, QX_DYNAMIC_CUSTOM, 1};
}

unsigned short qxDynamicTag::findUniqueID() const
{
    const qxUInt64 changes = qxUniqueChanges.load(std::memory_order_acquire);
    const unsigned short id = qxFindUniqueID(text.data(), static_cast<unsigned int>(text.size()));
    knownID.store(changes << 16 | id, std::memory_order_relaxed);
    return id;
}

void qxDynamicTag::drop() const
{
    if (holders.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
    qx_delete(const_cast<qxDynamicTag*>(this)); // made in make, whose room was not constant
}
