// SPDX-License-Identifier: see LICENSE

#include "dynamic/qxdynamicelements.h"

#include <algorithm>
#include <cstring>
#include <vector>

using Parts = qxDynamicParts;

namespace
{

constexpr qxUInt64 MANY = 1ULL << 32; // more than any block has room for

std::string_view textOf(const unsigned char* bytes, std::size_t count)
{
    return {reinterpret_cast<const char*>(bytes), count};
}

bool isEscaped(std::string_view tag)
{
    return static_cast<unsigned char>(tag.front()) == QX_DYNAMIC_ESCAPE;
}

unsigned char* putText(unsigned char* place, std::string_view text)
{
    std::memcpy(place, text.data(), text.size());
    place[text.size()] = 0;
    return place + text.size() + 1;
}

unsigned int referencesOf(const qxDynamicType& item)
{
    return item.hasDynamicReferences() ? item.getDynamicReferences().entries() : 0;
}

// The number of bytes that a plain value must have; -1 for texts and custom values, which may have any.
int fixedSize(qxDynamicKind kind)
{
    switch (kind) {
    case QX_DYNAMIC_VOID:
    case QX_DYNAMIC_REF:
        return 0;
    case QX_DYNAMIC_NUM:
    case QX_DYNAMIC_LLNUM:
    case QX_DYNAMIC_VEC2:
    case QX_DYNAMIC_PTR:
        return 8;
    case QX_DYNAMIC_VEC3:
        return 12;
    case QX_DYNAMIC_VEC4:
    case QX_DYNAMIC_GUID:
        return 16;
    default:
        return -1;
    }
}

bool isPlainBlock(qxDynamicKind kind, std::size_t size)
{
    if (kind == QX_DYNAMIC_STR || kind == QX_DYNAMIC_ERROR) return size <= qxString::MAX_LENGTH;
    const int fixed = fixedSize(kind);
    return fixed < 0 || size == static_cast<std::size_t>(fixed);
}

qxDynamicKind kindOf(std::string_view tag)
{
    const qxDynamicTag* const own = qxDynamicTag::find(tag);
    return own ? own->kind : QX_DYNAMIC_CUSTOM;
}

// The element with its own of the objects of `value`, of which the next is `object`.
qxDynamicType cutElement(const qxDynamicType& value, const qxDynamicElement& element,
                         qxDynRefList::Iterator& object)
{
    qxDynamicType item = Parts::cut(value, qxDynamicTag::make(element.tag), element.data);
    qxDynRefList own;
    // A stream carries the number of objects, but none of them.
    for (qxUInt64 left = element.references; left > 0 && object != qxDynRefList::Iterator(); --left, ++object)
        own.insert(*object);
    Parts::setReferences(item, std::move(own));
    return item;
}

/// Checks a block and those in it, which lie in it in one piece: one place moves on from its start to its end.
class Checker
{
public:
    Checker(qxDynamicKind kind, qxDynamicBytes block) : m_cursor(block), m_first(kind) {}

    bool check()
    {
        if (!enter(m_first, m_cursor.getRest())) return false;
        while (!m_levels.empty()) {
            Level& level = m_levels.back();
            if (level.left == 0) {
                if (m_cursor.getRest() != level.behind) return false;
                m_levels.pop_back();
                continue;
            }
            --level.left;
            if (!checkElement(level)) return false;
        }
        return true;
    }

    bool hasAddresses() const { return m_hasAddresses; }

private:
    struct Level {
        qxUInt64 left;      // elements to come
        std::size_t behind; // bytes of the whole that follow the block
        qxDynamicKind kind;
    };

    bool checkElement(Level level)
    {
        qxDynamicElement element;
        const bool isThere = level.kind == QX_DYNAMIC_TTAG
                                 ? m_cursor.takeForm(element)
                                 : m_cursor.takeElement(element, level.kind == QX_DYNAMIC_CONT);
        if (!isThere || m_cursor.getRest() < level.behind) return false;
        const qxDynamicKind kind = kindOf(element.tag);
        m_hasAddresses = m_hasAddresses || kind == QX_DYNAMIC_PTR;
        if (!qxHoldsDynamicElements(kind)) return isPlainBlock(kind, element.data.size());
        const std::size_t behind = m_cursor.getRest();
        m_cursor = qxDynamicCursor({element.data.data(), element.data.size() + behind});
        return enter(kind, element.data.size());
    }

    // Begins the block of `size` bytes that lies at the cursor.
    bool enter(qxDynamicKind kind, std::size_t size)
    {
        const std::size_t behind = m_cursor.getRest() - size;
        qxUInt64 count = 1;
        if (kind == QX_DYNAMIC_TTAG ? size < QX_DYNAMIC_TIME_SIZE || !m_cursor.skip(QX_DYNAMIC_TIME_SIZE)
                                    : !m_cursor.takeVar(count) || count > size)
            return false;
        m_levels.push_back({count, behind, kind});
        return m_cursor.getRest() >= behind;
    }

    qxDynamicCursor m_cursor;
    qxDynamicKind m_first;
    std::vector<Level> m_levels;
    bool m_hasAddresses = false;
};

} // namespace

unsigned char* qxPutVar(unsigned char* place, qxUInt64 value)
{
    for (; value > 0x7F; value >>= 7) *place++ = static_cast<unsigned char>(value | 0x80);
    *place++ = static_cast<unsigned char>(value);
    return place;
}

qxUInt64 qxDynamicFormSize(const qxDynamicTag& tag, qxUInt64 length)
{
    return (isEscaped(tag.text) ? 3 : 0) + tag.text.size() + 1 + qxVarSize(length) + length;
}

unsigned char* qxPutDynamicHead(unsigned char* place, const qxDynamicTag& tag, qxUInt64 length)
{
    if (isEscaped(tag.text)) {
        *place++ = QX_DYNAMIC_ESCAPE;
        *place++ = 255;
        *place++ = 255;
    }
    return qxPutVar(putText(place, tag.text), length);
}

bool qxDynamicCursor::takeVar(qxUInt64& value)
{
    value = 0;
    for (unsigned int shift = 0; shift < 64 && m_next != m_end; shift += 7) {
        const unsigned char byte = *m_next++;
        value |= static_cast<qxUInt64>(byte & 0x7F) << shift;
        if (byte <= 0x7F) return value < MANY;
    }
    return false;
}

bool qxDynamicCursor::takeName(std::string_view& name)
{
    const std::size_t most = std::min<std::size_t>(getRest(), qxString::MAX_LENGTH + 1);
    const void* const hit = most == 0 ? nullptr : std::memchr(m_next, 0, most);
    if (!hit) return false;
    name = textOf(m_next, static_cast<std::size_t>(static_cast<const unsigned char*>(hit) - m_next));
    m_next += name.size() + 1;
    return true;
}

bool qxDynamicCursor::takeForm(qxDynamicElement& element)
{
    const bool isMarked = getRest() > 0 && *m_next == QX_DYNAMIC_ESCAPE;
    // Within blocks there are no IDs: what a value is must not depend on the process that looks at it.
    if (isMarked && (getRest() < 3 || m_next[1] != 255 || m_next[2] != 255 || !skip(3))) return false;
    qxUInt64 length = 0;
    if (!takeName(element.tag) || element.tag.empty() || !takeVar(length) || length > getRest()) return false;
    element.data = {m_next, static_cast<std::size_t>(length)};
    return skip(element.data.size());
}

bool qxDynamicCursor::takeElement(qxDynamicElement& element, bool hasName)
{
    return (!hasName || takeName(element.name)) && takeVar(element.references) && takeForm(element);
}

bool qxDynamicCursor::skip(std::size_t count)
{
    if (count > getRest()) return false;
    m_next += count;
    return true;
}

bool qxIsDynamicBlock(qxDynamicKind kind, qxDynamicBytes block, bool& hasAddresses)
{
    if (!qxHoldsDynamicElements(kind)) {
        hasAddresses = kind == QX_DYNAMIC_PTR;
        return isPlainBlock(kind, block.size());
    }
    Checker checker(kind, block);
    const bool isBlock = checker.check();
    hasAddresses = checker.hasAddresses();
    return isBlock;
}

void qxPutDynamicElements(qxDynamicType& value, qxDynamicKind kind, const qxDynamicType* items,
                          std::size_t count, const qxString* names)
{
    qxUInt64 size = qxVarSize(count);
    for (std::size_t i = 0; i < count; ++i) {
        if (names) size += names[i].length() + 1U;
        size += qxVarSize(referencesOf(items[i])) +
                qxDynamicFormSize(Parts::tag(items[i]), items[i].getDataLength());
    }
    qxDynamicType made;
    unsigned char* place = qxPutVar(Parts::prepare(made, kind, size), count);
    qxDynRefList objects;
    bool isForeign = false;
    for (std::size_t i = 0; i < count; ++i) {
        const qxDynamicType& item = items[i];
        if (names) place = putText(place, {names[i].getString(), names[i].length()});
        place = qxPutVar(place, referencesOf(item));
        place = qxPutDynamicHead(place, Parts::tag(item), item.getDataLength());
        place = std::copy_n(item.getDataBytes(), item.getDataLength(), place);
        if (item.hasDynamicReferences())
            for (qxReference* const object : item.getDynamicReferences()) objects.insert(object);
        isForeign = isForeign || Parts::isForeign(item);
    }
    Parts::setReferences(made, std::move(objects));
    Parts::setForeign(made, isForeign);
    value = std::move(made);
}

qxDynamicType qxGetDynamicElement(const qxDynamicType& value, const qxDynamicElement& element,
                                  qxUInt64 objectsBefore)
{
    const qxDynRefList& objects = value.getDynamicReferences();
    auto object = objects.begin();
    for (; objectsBefore > 0 && object != objects.end(); --objectsBefore) ++object;
    return cutElement(value, element, object);
}

qxArray<qxDynamicType> qxGetDynamicElements(const qxDynamicType& value, qxArray<qxString>* names)
{
    const bool hasNames = Parts::kind(value) == QX_DYNAMIC_CONT;
    qxDynamicCursor cursor(Parts::bytes(value));
    qxUInt64 count = 0;
    cursor.takeVar(count);
    qxArray<qxDynamicType> items(static_cast<std::size_t>(count));
    if (names) *names = qxArray<qxString>(items.entries());
    auto object = value.getDynamicReferences().begin();
    for (unsigned int i = 0; i < items.entries(); ++i) {
        qxDynamicElement element;
        cursor.takeElement(element, hasNames);
        if (names) (*names)[i] = qxString(element.name.data(), element.name.size());
        items[i] = cutElement(value, element, object);
    }
    return items;
}
