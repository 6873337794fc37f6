// SPDX-License-Identifier: see LICENSE

#include "serialize/qxserializeadapterstream.h"

#include "platform/qxplatformerror.h"
#include "platform/qxplatformfile.h"
#include "qxmessage.h"
#include "serialize/qxcuttext.h"
#include "serialize/qxurl.h"

#include <algorithm>
#include <cstring>
#include <exception>

namespace
{

constexpr unsigned int BUFFER_SIZE = 65536;
constexpr unsigned int MAX_SHOWN_NAME = 32768; // bytes of a name in an error text, which must fit a string

qxString translate(const char* text)
{
    return qxMessage::translate(qxMessage::getDefaultSender(), text);
}

} // namespace

qxRefPointer<qxSerializeAdapter>
qxSerializeAdapterStream::openStandard(const qxString& url, qxSerializeAction action, bool isErrors)
{
    const qxPlatformStandardFile which = action == QX_SERIALIZE_INPUT ? QX_PLATFORM_STANDARD_INPUT
                                         : isErrors                   ? QX_PLATFORM_STANDARD_ERRORS
                                                                      : QX_PLATFORM_STANDARD_OUTPUT;
    int error = 0;
    qxPlatformFile* const file = qxPlatformFileStandard(which, error);
    return new qxSerializeAdapterStream(url, action, file, error);
}

qxRefPointer<qxSerializeAdapter> qxSerializeAdapterStream::openDevice(const qxString& path)
{
    int error = 0;
    qxPlatformFile* const file = qxPlatformFileOpen(path.getString(), QX_PLATFORM_FILE_READ, error);
    const qxRefPointer<qxSerializeAdapter> adapter(
        new qxSerializeAdapterStream(path, QX_SERIALIZE_INPUT, file, error));
    adapter->setURLBase(qxURLFolderOfPath(path));
    return adapter;
}

qxSerializeAdapterStream::qxSerializeAdapterStream(const qxString& name, qxSerializeAction action,
                                                   qxPlatformFile* file, int systemError)
    : m_action(action == QX_SERIALIZE_APPEND ? QX_SERIALIZE_OUTPUT : action), m_file(file), m_isDone(!file)
{
    setName(name);
    if (!file) {
        setError(translate("Could not open '") + qxCutText(name, MAX_SHOWN_NAME) +
                 translate(isReading() ? "' for reading" : "' for writing") + " (" +
                 qxPlatformErrorText(systemError).c_str() + ")");
        return;
    }
    m_buffer = std::make_unique<unsigned char[]>(BUFFER_SIZE);
    m_window.next = m_buffer.get();
    if (!isReading()) m_window.roomEnd = m_buffer.get() + BUFFER_SIZE;
}

qxSerializeAdapterStream::~qxSerializeAdapterStream() noexcept(false)
{
    int ignored;
    const bool isLost = !isReading() && !m_isDone && !writeOut();
    qxPlatformFileClose(m_file, ignored);
    if (!isLost || std::uncaught_exceptions() > 0) return; // receivers may raise, which would end the process
    qxMessage::messageText(qxMessage::getDefaultSender(), QX_LEVEL_WARNING,
                           qxSerializeAdapter::getError().getString());
}

unsigned char qxSerializeAdapterStream::supportAction(qxSerializeAction action)
{
    return action == m_action;
}

void qxSerializeAdapterStream::flush()
{
    qxSerializeAdapter::flush();
    if (!isReading()) writeOut();
}

void qxSerializeAdapterStream::setSystemError(const char* text, int systemError)
{
    setError(translate(text) + qxCutText(getName(), MAX_SHOWN_NAME) + "' (" +
             qxPlatformErrorText(systemError).c_str() + ")");
}

// Gives `bytes` to the system; false, and nothing more is written, when that failed.
bool qxSerializeAdapterStream::hand(const unsigned char* bytes, unsigned int count)
{
    int error = 0;
    if (m_isDone || qxPlatformFileWrite(m_file, bytes, count, error) == count) return !m_isDone;
    m_isDone = true;
    setSystemError("Could not flush to file '", error);
    return false;
}

bool qxSerializeAdapterStream::writeOut()
{
    if (!m_buffer) return false;
    const auto count = static_cast<unsigned int>(m_window.next - m_buffer.get());
    m_window.next = m_buffer.get();
    return count == 0 || hand(m_buffer.get(), count);
}

void qxSerializeAdapterStream::write_imp(unsigned char* bytes, unsigned int count)
{
    if (isReading()) return setError(translate("The stream is open for reading"));
    if (!writeOut()) return;
    if (count >= BUFFER_SIZE) {
        hand(bytes, count);
        return;
    }
    std::memcpy(m_buffer.get(), bytes, count);
    m_window.next += count;
}

void qxSerializeAdapterStream::write_imp(unsigned char byte)
{
    write_imp(&byte, 1);
}

// Waits for the next bytes unless some are there; false at the end.
void qxSerializeAdapterStream::fillWindow(unsigned int)
{
    if (getLent() > 0 || m_isDone || !isReading()) return;
    int error = 0;
    const std::size_t count = qxPlatformFileReadSome(m_file, m_buffer.get(), BUFFER_SIZE, error);
    m_window.next = m_buffer.get();
    m_window.end = m_window.next + count;
    if (error) setSystemError("Could not read from file '", error);
    m_isDone = count == 0;
}

unsigned int qxSerializeAdapterStream::read_imp(unsigned char* buffer, unsigned int count)
{
    if (!isReading()) setError(translate("The stream is open for writing"));
    return readFromWindow(buffer, count);
}

unsigned char qxSerializeAdapterStream::read_imp()
{
    unsigned char byte = 0; // what comes behind the end
    read_imp(&byte, 1);
    return byte;
}

qxUInt64 qxSerializeAdapterStream::length_imp()
{
    return getLent();
}

unsigned char qxSerializeAdapterStream::hasData_imp()
{
    fillWindow(1);
    return getLent() > 0;
}
