// SPDX-License-Identifier: see LICENSE

#include "qxxmltext.h"

#include "qxerror.h"

#include "xml/qxxmltree.h"

QX_DEFINE_TYPE(qxXmlCharData, qxXmlItem)
QX_DEFINE_TYPE(qxXmlCDATA, qxXmlItem)
QX_DEFINE_TYPE(qxXmlComment, qxXmlItem)
QX_DEFINE_TYPE(qxXmlEntityReference, qxXmlItem)
QX_DEFINE_TYPE(qxXmlPI, qxXmlItem)

namespace
{

qxSharedName* newPermanentName(const char* text)
{
    qxSharedName* const name = new qxSharedName(qxString(text));
    name->hash(); // so that no thread has to compute it later
    name->makePermanent();
    return name;
}

// The names by which paths see the items that have none of their own.
struct ItemNames {
    qxSharedName* const charData = newPermanentName("<char_data>");
    qxSharedName* const cdata = newPermanentName("<cdata>");
    qxSharedName* const comment = newPermanentName("<comment>");
    qxSharedName* const reference = newPermanentName("<entity_ref>");
    qxSharedName* const instruction = newPermanentName("<pi>");
};

const ItemNames& itemNames()
{
    static const ItemNames* const names = new ItemNames; // stays: items may go after the library's statics
    return *names;
}

} // namespace

void qxXmlTextBytes::set(const qxString& text)
{
    if (m_shortLength == ON_HEAP) qx_delete(getHeap().bytes);
    m_shortLength = 0;
    append(text.getString(), text.length());
}

void qxXmlTextBytes::append(const char* bytes, unsigned int length)
{
    const unsigned int present = getLength();
    if (length > qxString::MAX_LENGTH - present)
        qxExceptionThrows::qxThrowFatal("Too many characters in qxString");
    if (length == 0) return;

    const unsigned int whole = present + length;
    if (whole <= SHORT) {
        std::memcpy(m_room + present, bytes, length);
        m_shortLength = static_cast<unsigned char>(whole);
        return;
    }
    char* text = m_shortLength == ON_HEAP ? getHeap().bytes : nullptr;
    if (!text || roomFor(present) != roomFor(whole)) {
        char* const larger = static_cast<char*>(qx_new(roomFor(whole)));
        std::memcpy(larger, getBytes(), present);
        qx_delete(text);
        text = larger;
    }
    std::memcpy(text + present, bytes, length);
    setHeap(text, whole);
}

// In steps of 16 bytes, then of a quarter of the power of two below, so that many small pieces are few moves.
unsigned int qxXmlTextBytes::roomFor(unsigned int length)
{
    if (length <= 64) return (length + 15) & ~15U;
    const unsigned int step = 1U << (std::bit_width(length) - 3);
    return (length + step - 1) & ~(step - 1);
}

void qxXmlTextBytes::setHeap(char* bytes, unsigned int length)
{
    std::memcpy(m_room, &bytes, sizeof bytes);
    std::memcpy(m_room + sizeof bytes, &length, sizeof length);
    m_shortLength = ON_HEAP;
}

qxXmlCharData::qxXmlCharData(const qxString& text) : qxXmlItem(itemNames().charData, CHAR_DATA), m_text(text)
{}

qxXmlCharData::qxXmlCharData(const char* bytes, unsigned int length)
    : qxXmlItem(itemNames().charData, CHAR_DATA), m_text(bytes, length)
{}

qxXmlCharData* qxXmlCharData::clone() const
{
    return qxXmlTree::finishClone(new qxXmlCharData(*this), *this);
}

qxXmlCDATA::qxXmlCDATA(const qxString& text) : qxXmlItem(itemNames().cdata, CDATA), m_text(text) {}

qxXmlCDATA* qxXmlCDATA::clone() const
{
    return qxXmlTree::finishClone(new qxXmlCDATA(*this), *this);
}

qxXmlComment::qxXmlComment(const qxString& text) : qxXmlItem(itemNames().comment, COMMENT), m_text(text) {}

qxXmlComment* qxXmlComment::clone() const
{
    return qxXmlTree::finishClone(new qxXmlComment(*this), *this);
}

qxXmlEntityReference::qxXmlEntityReference(const qxString& name)
    : qxXmlItem(itemNames().reference, REFERENCE), m_reference(name)
{}

qxXmlEntityReference* qxXmlEntityReference::clone() const
{
    return qxXmlTree::finishClone(new qxXmlEntityReference(*this), *this);
}

qxXmlPI::qxXmlPI(const qxString& target, const qxString& data)
    : qxXmlItem(itemNames().instruction, PI), m_target(target), m_data(data)
{}

qxXmlPI* qxXmlPI::clone() const
{
    return qxXmlTree::finishClone(new qxXmlPI(*this), *this);
}
