// The binary form of dynamic values.
// SPDX-License-Identifier: see LICENSE

#include "qxdynamictype.h"

#include "core/qxuniquelookup.h"
#include "dynamic/qxdynamicelements.h"
#include "qxmessage.h"
#include "serialize/qxadapterbytes.h"
#include "serialize/qxterminatedtext.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

using Parts = qxDynamicParts;

namespace
{

constexpr unsigned int AT_ONCE = 64;     // bytes of values that are written in one piece
constexpr std::size_t STEP = 1U << 16;   // bytes that are believed to come without being there
constexpr unsigned int LONGEST_VAR = 10; // bytes of an integer of variable length

struct Unref {
    void operator()(const qxDynamicTag* tag) const { tag->unref(); }
};
using TagHolder = std::unique_ptr<const qxDynamicTag, Unref>;

unsigned int headSize(const qxDynamicTag& tag, unsigned short id, unsigned int length)
{
    if (id != 0) return 3 + qxVarSize(length);
    return static_cast<unsigned int>(qxDynamicFormSize(tag, length) - length);
}

unsigned char* putHead(unsigned char* place, const qxDynamicTag& tag, unsigned short id, unsigned int length)
{
    if (id == 0) return qxPutDynamicHead(place, tag, length);
    *place++ = QX_DYNAMIC_ESCAPE;
    *place++ = static_cast<unsigned char>((id - 1) & 0xFF);
    *place++ = static_cast<unsigned char>((id - 1) >> 8);
    return qxPutVar(place, length);
}

// Reads a value of the library's that lies in memory as a whole, without an error. False when that is not so: then
// nothing was read.
bool readLent(qxSerializeAdapter& adapter, qxDynamicType& value)
{
    const qxDynamicBytes bytes = qxAdapterBytes::peek(adapter);
    const qxDynamicTag* const tag = bytes.size() < 8 ? nullptr : qxDynamicTag::findAt(bytes.data());
    if (!tag) return false;
    qxDynamicCursor cursor(bytes.subspan(tag->text.size() + 1));
    qxUInt64 length = 0;
    if (!cursor.takeVar(length) || length > cursor.getRest()) return false;
    const qxDynamicBytes block(cursor.getNext(), static_cast<std::size_t>(length));
    bool hasAddresses = false;
    if (length > qxDynamicType::MAX_LENGTH || !qxIsDynamicBlock(tag->kind, block, hasAddresses)) return false;
    std::memcpy(Parts::prepare(value, tag, length), block.data(), block.size());
    Parts::setForeign(value, hasAddresses);
    cursor.skip(block.size());
    qxAdapterBytes::consume(adapter, static_cast<unsigned int>(bytes.size() - cursor.getRest()));
    return true;
}

/// Reads one value, or tells why there is none.
class Reader
{
public:
    explicit Reader(qxSerializeAdapter& adapter) : m_adapter(adapter) {}

    bool read(qxDynamicType& value)
    {
        const TagHolder tag = readTag();
        qxUInt64 length = 0;
        if (!tag || !readLength(length) || !readBlock(value, *tag, length)) return false;
        bool hasAddresses = false;
        if (qxIsDynamicBlock(tag->kind, Parts::bytes(value), hasAddresses)) {
            Parts::setForeign(value, hasAddresses);
            return true;
        }
        return fail("qxDynamicType::read: the value of type '%s' is malformed", tag->text.data());
    }

    const qxString& getError() const { return m_error; }

private:
    template <class... Arguments>
    bool fail(const char* text, const Arguments&... arguments)
    {
        m_error.format(qxMessage::translate(qxMessage::getDefaultSender(), text), arguments...);
        return false;
    }
    bool failAtEnd() { return fail("qxDynamicType::read: the data ends within a value"); }

    TagHolder readTag()
    {
        qxString tag;
        if (!readTagText(tag)) return nullptr;
        const std::string_view whole(tag.getString(), tag.length());
        if (!qxDynamicTag::isPossible(whole)) {
            fail("qxDynamicType::read: malformed type");
            return nullptr;
        }
        return TagHolder(qxDynamicTag::make(whole));
    }

    bool readTagText(qxString& text)
    {
        if (!m_adapter.hasData()) return failAtEnd();
        const unsigned char first = m_adapter.read();
        if (first == 0) return true; // an empty text
        if (first != QX_DYNAMIC_ESCAPE) return readRest(text, static_cast<char>(first));
        if (!m_adapter.hasData(2)) return failAtEnd();
        unsigned int id = m_adapter.read();
        id += m_adapter.read() * 256U + 1;
        if (id == 0x10000) return readRest(text, 0);
        if (qxFindUniqueText(static_cast<unsigned short>(id), text)) return true;
        return fail("qxDynamicType::read: no unique string has the ID %d", id);
    }

    // The text up to its terminator, behind the character that is known already unless that is 0.
    bool readRest(qxString& text, char first)
    {
        if (!qxReadTerminatedText(m_adapter, 0, qxString::MAX_LENGTH - 1, text))
            return fail("qxDynamicType::read: malformed type");
        if (first != 0) text = qxString(&first, 1) + text;
        return true;
    }

    bool readLength(qxUInt64& length)
    {
        length = 0;
        for (unsigned int i = 0; i < LONGEST_VAR; ++i) {
            if (!m_adapter.hasData()) return failAtEnd();
            const unsigned char byte = m_adapter.read();
            length |= static_cast<qxUInt64>(byte & 0x7F) << 7 * i % 64;
            if (byte > 0x7F) continue;
            if (length <= qxDynamicType::MAX_LENGTH) return true;
            break;
        }
        return fail("qxDynamicType::read: a value is too long");
    }

    bool readBlock(qxDynamicType& value, const qxDynamicTag& tag, qxUInt64 length)
    {
        // Memory for a long block is taken only when its bytes are there.
        if (length > STEP && m_adapter.length() < length) return readInSteps(value, tag, length);
        tag.ref();
        const auto count = static_cast<unsigned int>(length);
        unsigned char* const place = Parts::prepare(value, &tag, length);
        return count == 0 || m_adapter.readWhole(place, count) == count || failAtEnd();
    }

    bool readInSteps(qxDynamicType& value, const qxDynamicTag& tag, qxUInt64 length)
    {
        std::vector<unsigned char> bytes;
        while (bytes.size() < length) {
            const std::size_t before = bytes.size();
            const auto step =
                static_cast<unsigned int>(std::min<qxUInt64>(length - before, std::max(before, STEP)));
            bytes.resize(before + step);
            if (m_adapter.readWhole(bytes.data() + before, step) != step) return failAtEnd();
        }
        tag.ref();
        std::copy(bytes.begin(), bytes.end(), Parts::prepare(value, &tag, length));
        return true;
    }

    qxSerializeAdapter& m_adapter;
    qxString m_error;
};

} // namespace

void qxDynamicType::write(qxSerializeAdapter* adapter)
{
    const qxDynamicTag& tag = Parts::tag(*this);
    const unsigned short id = tag.getUniqueID();
    const unsigned int length = getDataLength();
    const unsigned int head = headSize(tag, id, length);
    if (unsigned char* const place = qxAdapterBytes::takeRoom(*adapter, head + length)) {
        std::memcpy(putHead(place, tag, id, length), getDataBytes(), length);
    } else if (head + length <= AT_ONCE) {
        unsigned char bytes[AT_ONCE];
        std::memcpy(putHead(bytes, tag, id, length), getDataBytes(), length);
        adapter->write(bytes, head + length);
    } else {
        std::vector<unsigned char> bytes(head);
        putHead(bytes.data(), tag, id, length);
        adapter->write(bytes.data(), head);
        if (length > 0) adapter->write(getDataBytes(), length);
    }
}

void qxDynamicType::read(qxSerializeAdapter* adapter)
{
    if (readLent(*adapter, *this)) return;
    Reader reader(*adapter);
    qxDynamicType value;
    if (reader.read(value)) {
        *this = std::move(value);
        return;
    }
    reset();
    adapter->setError(reader.getError());
}

unsigned int qxDynamicType::getDataSize(qxSerializeAdapter*)
{
    const qxDynamicTag& tag = Parts::tag(*this);
    return headSize(tag, tag.getUniqueID(), getDataLength()) + getDataLength();
}
