// The items of an XML document that hold text.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxxmlitem.h"

#include <cstring>

/// The bytes of an item's text: up to 15 in place, more on the heap.
class QX_API qxXmlTextBytes
{
public:
    qxXmlTextBytes() : m_room(), m_shortLength(0) {}
    qxXmlTextBytes(const char* bytes, unsigned int length) : qxXmlTextBytes() { append(bytes, length); }
    explicit qxXmlTextBytes(const qxString& text) : qxXmlTextBytes(text.getString(), text.length()) {}
    qxXmlTextBytes(const qxXmlTextBytes& other) : qxXmlTextBytes(other.getBytes(), other.getLength()) {}
    qxXmlTextBytes& operator=(const qxXmlTextBytes&) = delete;
    ~qxXmlTextBytes()
    {
        if (m_shortLength == ON_HEAP) qx_delete(getHeap().bytes);
    }

    const char* getBytes() const { return m_shortLength == ON_HEAP ? getHeap().bytes : m_room; }
    unsigned int getLength() const { return m_shortLength == ON_HEAP ? getHeap().length : m_shortLength; }
    qxString getString() const { return qxString(getBytes(), getLength()); }

    void set(const qxString& text);

    /// Raises qxFatalError when the text would be too long for a string.
    void append(const char* bytes, unsigned int length);

private:
    static constexpr unsigned char ON_HEAP = 0xFF;
    static constexpr unsigned int SHORT = 15;

    struct Heap {
        char* bytes;
        unsigned int length; // the room behind it follows from it
    };

    Heap getHeap() const
    {
        Heap heap;
        std::memcpy(&heap.bytes, m_room, sizeof heap.bytes);
        std::memcpy(&heap.length, m_room + sizeof heap.bytes, sizeof heap.length);
        return heap;
    }
    void setHeap(char* bytes, unsigned int length);
    static unsigned int roomFor(unsigned int length);

    alignas(char*) char m_room[SHORT]; // the text, or the fields of a Heap
    unsigned char m_shortLength;       // or ON_HEAP
};

/// Character data: the text between tags. Its name is "<char_data>".
class QX_API qxXmlCharData : public qxXmlItem
{
public:
    explicit qxXmlCharData(const qxString& text = qxString());

    QX_DECLARE_TYPE;

    qxXmlCharData* clone() const override;

    qxString getCharData() const { return m_text.getString(); }
    void setCharData(const qxString& text) { m_text.set(text); }

protected:
    qxXmlCharData(const qxXmlCharData& other) = default;

private:
    friend class qxXmlTree;
    qxXmlCharData(const char* bytes, unsigned int length);

    qxXmlTextBytes m_text;
};

/// A CDATA section. Its name is "<cdata>".
class QX_API qxXmlCDATA : public qxXmlItem
{
public:
    explicit qxXmlCDATA(const qxString& text = qxString());

    QX_DECLARE_TYPE;

    qxXmlCDATA* clone() const override;

    qxString getCDATA() const { return m_text.getString(); }
    void setCDATA(const qxString& text) { m_text.set(text); }

protected:
    qxXmlCDATA(const qxXmlCDATA& other) = default;

private:
    friend class qxXmlTree;

    qxXmlTextBytes m_text;
};

/// A comment. Its name is "<comment>".
class QX_API qxXmlComment : public qxXmlItem
{
public:
    explicit qxXmlComment(const qxString& text = qxString());

    QX_DECLARE_TYPE;

    qxXmlComment* clone() const override;

    qxString getComment() const { return m_text.getString(); }
    void setComment(const qxString& text) { m_text.set(text); }

protected:
    qxXmlComment(const qxXmlComment& other) = default;

private:
    friend class qxXmlTree;

    qxXmlTextBytes m_text;
};

/// A reference that stands for a character or an entity. As an item of a tree its name is "<entity_ref>";
/// getName and setName of this class mean the name of what is referred to, without "&" and ";".
class QX_API qxXmlEntityReference : public qxXmlItem
{
public:
    explicit qxXmlEntityReference(const qxString& name = qxString());

    QX_DECLARE_TYPE;

    qxXmlEntityReference* clone() const override;

    qxString getName() const { return m_reference.getString(); }
    void setName(const qxString& name) { m_reference.set(name); }

protected:
    qxXmlEntityReference(const qxXmlEntityReference& other) = default;

private:
    friend class qxXmlTree;

    qxXmlTextBytes m_reference;
};

/// A processing instruction. Its name is "<pi>".
class QX_API qxXmlPI : public qxXmlItem
{
public:
    explicit qxXmlPI(const qxString& target = qxString(), const qxString& data = qxString());

    QX_DECLARE_TYPE;

    qxXmlPI* clone() const override;

    qxString getTarget() const { return m_target.getString(); }
    void setTarget(const qxString& target) { m_target.set(target); }
    qxString getData() const { return m_data.getString(); }
    void setData(const qxString& data) { m_data.set(data); }

protected:
    qxXmlPI(const qxXmlPI& other) = default;

private:
    friend class qxXmlTree;

    qxXmlTextBytes m_target;
    qxXmlTextBytes m_data;
};
