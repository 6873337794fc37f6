// SPDX-License-Identifier: see LICENSE

#include "qxserializeadapterstring.h"

#include "qxmessage.h"

#include <algorithm>
#include <cstring>
#include <typeinfo>

QX_DEFINE_TYPE(qxSerializeAdapterString, qxSerializeAdapter)

namespace
{

qxString translate(const char* text)
{
    return qxMessage::translate(qxMessage::getDefaultSender(), text);
}

const unsigned char* bytesOf(const std::string& text)
{
    return reinterpret_cast<const unsigned char*>(text.data());
}

} // namespace

qxSerializeAdapterString::qxSerializeAdapterString(const qxString& text)
    : m_text(text.getString(), text.length())
{
    setPosition(0);
}

qxSerializeAdapterString::~qxSerializeAdapterString() noexcept(false) = default;

void qxSerializeAdapterString::setText(const qxString& text)
{
    m_text.assign(text.getString(), text.length());
    qxSerializeAdapter::flush();
    setPosition(0);
    clearSharedRefs();
}

unsigned int qxSerializeAdapterString::getPosition() const
{
    return static_cast<unsigned int>(m_window.next - bytesOf(m_text));
}

void qxSerializeAdapterString::setPosition(unsigned int position)
{
    m_window.next = bytesOf(m_text) + position;
    m_window.end = nullptr; // the text may lie elsewhere now
}

void qxSerializeAdapterString::fillWindow(unsigned int)
{
    // A derived class may have a read_imp of its own, which the window would pass by.
    if (typeid(*this) == typeid(qxSerializeAdapterString)) m_window.end = bytesOf(m_text) + m_text.size();
}

unsigned char qxSerializeAdapterString::canSeek()
{
    return 1;
}

qxUInt64 qxSerializeAdapterString::seek(qxInt64 offset, qxOriginPos origin)
{
    const auto size = static_cast<qxInt64>(m_text.size());
    const qxInt64 base = origin == QX_ORIGIN_START ? 0 : origin == QX_ORIGIN_END ? size : getPosition();
    if (offset < -base || offset > size - base) { // so written, no offset overflows
        setError(translate("String Adapter moved outside the text"));
        return SEEK_FAILED;
    }
    qxSerializeAdapter::flush(); // bytes given back belonged to the old place
    setPosition(static_cast<unsigned int>(base + offset));
    return getPosition();
}

void qxSerializeAdapterString::write_imp(unsigned char* bytes, unsigned int count)
{
    const unsigned int fitting = std::min(count, MAX_LENGTH - static_cast<unsigned int>(m_text.size()));
    const unsigned int position = getPosition();
    m_text.append(reinterpret_cast<const char*>(bytes), fitting);
    setPosition(position);
    if (fitting < count) setError(translate("String Adapter written beyond 65535 bytes"));
}

void qxSerializeAdapterString::write_imp(unsigned char byte)
{
    write_imp(&byte, 1);
}

unsigned int qxSerializeAdapterString::read_imp(unsigned char* buffer, unsigned int count)
{
    const auto there = static_cast<unsigned int>(std::min<qxUInt64>(count, length_imp()));
    if (there > 0) std::memcpy(buffer, m_window.next, there);
    m_window.next += there;
    return there;
}

unsigned char qxSerializeAdapterString::read_imp()
{
    unsigned char byte = 0; // what comes behind the end
    if (qxSerializeAdapterString::read_imp(&byte, 1) == 0)
        setError(translate("String Adapter read beyond end"));
    return byte;
}

qxUInt64 qxSerializeAdapterString::length_imp()
{
    return m_text.size() - getPosition();
}
