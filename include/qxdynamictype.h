// A value whose type is known only at run time.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxarray.h"
#include "qxdynamicreflist.h"
#include "qxguid.h"
#include "qxserializedata.h"
#include "qxstring.h"
#include "qxtype.h"

#include <concepts>
#include <cstddef>
#include <type_traits>

struct qxDynamicBlock;
struct qxDynamicReferences;
struct qxDynamicTag;

/// A type tag, a block of bytes that holds the value in the tag's own layout, and the objects that it keeps alive.
///
/// | tag | value | | tag | value |
/// |---|---|---|---|---|
/// | "void" | none | | "ref" | a counted object, in the list of references |
/// | "num" | a double | | "error" | the text of an error |
/// | "llnum" | a signed 64-bit integer | | "array" | values in a row |
/// | "str" | a text | | "chain" | values in a row, under another tag |
/// | "vec2", "vec3", "vec4" | floats | | "cont" | values with names |
/// | "guid" | a qxGUID | | "ttag" | a value and a time |
/// | "ptr" | a pointer, not owned | | any other | see qxDynamicTypeCustom |
///
/// Classes derived from it, such as qxDynamicTypeInt64, add no data: they make values of further tags and read them
/// back, also from any qxDynamicType. Small values lie inside the object; larger blocks never change and are
/// shared by copies, and by the elements that are taken out of them.
///
/// Lifetime: a value. Copies share the referenced objects.
/// Threads:  one object is used by one thread at a time, or read by many; copies may go to other threads, their
///           objects as qxReference says.
/// Errors:   a getter that does not fit the tag raises qxFatalError and leaves the value as it was. Faulty data on a
///           stream gives "void" and an error on the adapter. Destructors may raise what those of objects raise.
class QX_API qxDynamicType : public qxSerializeData, public qxTypeInterface
{
public:
    static constexpr unsigned int MAX_LENGTH = 0xFFFE0000; ///< bytes of a block

    /// "void".
    qxDynamicType() noexcept {}

    qxDynamicType(double number);

    /// Integers and truth values become "num" too; qxDynamicTypeInt64 keeps all 64 bits of one.
    template <class Number>
    requires std::is_arithmetic_v<Number> qxDynamicType(Number number)
        : qxDynamicType(static_cast<double>(number))
    {}
    qxDynamicType(const qxString& text);

    /// Null is an empty text; more than 65,535 bytes raise qxFatalError, as in qxString.
    qxDynamicType(const char* text);
    qxDynamicType(const qxGUID& guid);
    qxDynamicType(const qxVec2& vector);
    qxDynamicType(const qxVec3& vector);
    qxDynamicType(const qxVec4& vector);
    explicit qxDynamicType(void* pointer);

    /// The value is one more holder of `object`, which may be null.
    explicit qxDynamicType(qxReference* object);

    qxDynamicType(const qxDynamicType& other) noexcept
        : qxSerializeData(other), qxTypeInterface(other), m_content(other.m_content)
    {
        if (m_content.holds) share(m_content);
    }
    qxDynamicType(qxDynamicType&& other) noexcept : m_content(other.m_content) { other.m_content = {}; }

    ~qxDynamicType() noexcept(false) override
    {
        if (m_content.holds) drop(m_content);
    }

    qxDynamicType& operator=(const qxDynamicType& other)
    {
        if (other.m_content.holds) share(other.m_content);
        replace(other.m_content);
        return *this;
    }
    qxDynamicType& operator=(qxDynamicType&& other)
    {
        const Content taken = other.m_content;
        other.m_content = {};
        replace(taken);
        return *this;
    }

    QX_DECLARE_TYPE;

    /// Makes it "void".
    void reset() { replace({}); }

    // What it is made of

    /// The tag.
    qxString getDynamicType() const;
    bool is(const char* tag) const;
    bool is(const qxString& tag) const;

    /// A copy of the block.
    qxArray<unsigned char> getDynamicData() const;

    /// The block itself, of getDataLength bytes. It stays valid until the value changes.
    const unsigned char* getDataBytes() const
    {
        return m_content.size > Content::ROOM ? m_content.data.outside.bytes : m_content.data.inside;
    }
    unsigned int getDataLength() const { return m_content.size; }

    const qxDynRefList& getDynamicReferences() const;
    bool hasDynamicReferences() const { return m_content.references != nullptr; }

    // The value, each for its tag

    /// Of "num", and of "llnum" the nearest double.
    double getNumber() const;
    qxString getString() const;
    qxVec2 getVec2() const;
    qxVec3 getVec3() const;
    qxVec4 getVec4() const;
    qxGUID getGUID() const;

    /// Null when the value was read from an adapter or a text: addresses mean nothing elsewhere.
    void* getPointer() const;

    /// Null when it was read from an adapter or a text, too. The value stays a holder.
    qxReference* getReference() const;

    /// True when tags and blocks are the same; the references are not compared. So a number that is none equals
    /// itself, and 0.0 does not equal -0.0.
    bool operator==(const qxDynamicType& other) const
    {
        return m_content.size == other.m_content.size &&
               (m_content.tag == other.m_content.tag || hasSameTag(other)) && hasSameBytes(other);
    }

    // On a stream: the tag, the length of the block as a qxVarUInt64 and the block

    /// Writes the tag as a terminated text, or as the ID that it has in the table of unique strings of this process:
    /// 252 and the ID less 1 in two bytes, the low one first. A text that itself begins with 252 has 252, 255, 255
    /// before it.
    void write(qxSerializeAdapter* adapter) override;

    /// Makes the value "void" and stores an error on the adapter when the data ends within it, when its ID has no
    /// text and when its block is not one of its tag. Objects do not travel.
    void read(qxSerializeAdapter* adapter) override;

    unsigned int getDataSize(qxSerializeAdapter* adapter) override;

    // As text

    /// Numbers in the shortest form that reads back, texts and errors, with `isQuoted` in double quotes, GUIDs in
    /// braces, vectors, arrays and chains in brackets with `separator` between the items; without `hasBrackets` the
    /// outermost array or chain has none. Containers and values with a time are JSON; all others are empty. In quotes
    /// a backslash is doubled, and quotes and control characters are \xHH. Raises qxFatalError when the text has more
    /// than 65,535 bytes.
    qxString asString(bool isQuoted = false, bool hasBrackets = true, const qxString& separator = ",") const;

    /// The item of this index as text; any value but arrays and chains is its only item. An index beyond the end
    /// raises qxFatalError.
    template <std::integral Index>
    requires(!std::is_same_v<Index, bool>) qxString
        asString(Index index, bool isQuoted = false, bool hasBrackets = true, const qxString& separator = ",")
    const { return itemAsString(static_cast<qxUInt64>(index), isQuoted, hasBrackets, separator); }

    /// The value of a text in the form that asString writes, with `isQuoted`, of numbers, texts, GUIDs and arrays, and
    /// of the words yes, no, true and false; qxDynamicTypeArgumentParser tells the form. An empty text is "void". Without
    /// `hasBrackets` the text is a list, whose values become an array. `ok` tells whether all of the text is a value;
    /// else the result is an "error" that says what is wrong. Defined above, with the parser.
    static qxDynamicType fromString(const qxString& text, const qxString& separator = ",", bool* ok = nullptr,
                                    bool hasBrackets = true);

    // As JSON: "void" is null, numbers, texts and arrays are what they are, containers are objects

    /// Vectors become arrays, GUIDs texts, chains arrays, errors {"error":TEXT}, values with a time
    /// {"time":TIME,"value":VALUE}, and what JSON has no word for null: pointers, references, custom values,
    /// numbers that are infinite or none. Bytes that are no UTF-8 become U+FFFD. Raises qxFatalError when the text
    /// has more than 65,535 bytes.
    qxString asJSON() const;

    /// Writes a text of any length.
    void asJSON(qxSerializeAdapter* adapter) const;

    /// Reads "void", "num", "str", "array" and "cont". 64-bit integers from 2^53 on, of either sign, become
    /// "llnum", true and false 1 and 0; numbers out of range become infinite or 0. False leaves the value as it
    /// was, and `error` receives what is wrong, with line and column.
    bool fromJSON(const qxString& text, qxString* error = nullptr);

    /// As above, from `length` bytes.
    bool fromJSON(const char* text, std::size_t length, qxString* error = nullptr);

    /// As above, all data that the adapter has; the error is stored on it.
    bool fromJSON(qxSerializeAdapter* adapter);

    // As XML, an element "qxDyn" as qxXmlSax::writeDynamicType writes it. Defined above, with the reader of XML.

    /// Without a header and in one line. Every value comes back, but without objects and addresses. Raises qxFatalError
    /// when the text has more than 65,535 bytes.
    qxString asXML() const;

    /// Writes a text of any length.
    void asXML(qxSerializeAdapter* adapter) const;

    /// The value of a document whose root element, of any name, holds one. `ok` tells whether there is one; else the
    /// result is an "error" that says what is wrong, with line and column, and it is sent as a warning unless
    /// `isSilent`.
    static qxDynamicType fromXML(const qxString& text, bool* ok = nullptr, bool isSilent = false);

    /// As above, all data that the adapter has.
    static qxDynamicType fromXML(qxSerializeAdapter* adapter, bool* ok = nullptr, bool isSilent = false);

private:
    friend class qxDynamicParts;

    struct Content {
        static constexpr unsigned int ROOM = 16;

        union Data {
            unsigned char inside[ROOM]; // up to 16 bytes, and zeros behind them
            struct {
                qxDynamicBlock* block; // shared; the bytes may be a piece of it
                const unsigned char* bytes;
            } outside;
        };

        const qxDynamicTag* tag = nullptr; // null is "void"
        Data data = {{}};
        qxDynamicReferences* references = nullptr; // null without any
        unsigned int size = 0;
        bool holds = false;     // a block, a tag or references that are counted
        bool isForeign = false; // the addresses in it come from outside and mean nothing
    };

    qxString itemAsString(qxUInt64 index, bool isQuoted, bool hasBrackets, const qxString& separator) const;
    static void share(const Content& content) noexcept;
    static void drop(const Content& content);
    bool hasSameTag(const qxDynamicType& other) const;

    void replace(const Content& content)
    {
        const Content old = m_content;
        m_content = content;
        if (old.holds) drop(old);
    }

    bool hasSameBytes(const qxDynamicType& other) const // with the same size
    {
        const unsigned char* const left = getDataBytes();
        const unsigned char* const right = other.getDataBytes();
        // What lies inside is compared whole, which takes no call.
        return std::memcmp(left, right, Content::ROOM) == 0 &&
               (m_content.size <= Content::ROOM || left == right ||
                std::memcmp(left, right, m_content.size) == 0);
    }

    Content m_content;
};
