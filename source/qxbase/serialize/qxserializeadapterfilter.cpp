// SPDX-License-Identifier: see LICENSE

#include "qxserializeadapterfilter.h"

#include "qxerror.h"
#include "qxmessage.h"
#include "qxserializeadaptermemory.h"

#include <algorithm>
#include <cstring>
#include <exception>

QX_DEFINE_TYPE(qxSerializeAdapterFilter, qxSerializeAdapter)

namespace
{

constexpr unsigned int BLOCK = 65536; // bytes of the buffers

qxString translate(const char* text)
{
    return qxMessage::translate(qxMessage::getDefaultSender(), text);
}

} // namespace

qxSerializeAdapterFilter::qxSerializeAdapterFilter(const qxRefPointer<qxSerializeAdapter>& stream,
                                                   qxSerializeAction action)
    : m_stream(stream), m_action(action == QX_SERIALIZE_APPEND ? QX_SERIALIZE_OUTPUT : action)
{
    if (!m_stream) qxExceptionThrows::qxThrowFatal("qxSerializeAdapterFilter needs a stream");
    setName(m_stream->getName());
    setURLBase(m_stream->getURLBase());
    if (m_stream->hasError()) setError(m_stream->getError());
    m_buffer = std::make_unique_for_overwrite<unsigned char[]>(BLOCK);
    m_window.next = m_buffer.get();
    if (isReading())
        m_input = std::make_unique_for_overwrite<unsigned char[]>(BLOCK);
    else
        m_window.roomEnd = m_buffer.get() + BLOCK;
}

qxSerializeAdapterFilter::~qxSerializeAdapterFilter() noexcept(false) = default;

unsigned char qxSerializeAdapterFilter::supportAction(qxSerializeAction action)
{
    return action == m_action;
}

void qxSerializeAdapterFilter::setFault(const char* text, qxUInt64 offset)
{
    setError(translate(text) + qxString::str(" at offset %d", offset));
}

void qxSerializeAdapterFilter::takeError()
{
    if (m_stream->hasError()) setError(m_stream->getError());
}

// Writing

void qxSerializeAdapterFilter::put(const unsigned char* bytes, unsigned int count)
{
    if (count == 0) return;
    m_stream->write(bytes, count);
    takeError();
}

void qxSerializeAdapterFilter::encodeFlush() {}

void qxSerializeAdapterFilter::encodeWaiting()
{
    const auto count = static_cast<unsigned int>(m_window.next - m_buffer.get());
    m_window.next = m_buffer.get();
    if (count > 0 && !qxSerializeAdapter::hasError()) encode(m_buffer.get(), count);
}

void qxSerializeAdapterFilter::flush()
{
    qxSerializeAdapter::flush();
    if (isReading() || m_isDone) return;
    encodeWaiting();
    if (!qxSerializeAdapter::hasError()) encodeFlush();
    flushStream();
}

void qxSerializeAdapterFilter::flushStream()
{
    // A flush empties a block of memory, and there is nothing beneath it that it could hand on to.
    if (!m_stream->isOfType(qxSerializeAdapterMemory::getClassType())) m_stream->flush();
    takeError();
}

bool qxSerializeAdapterFilter::close()
{
    if (!isReading() && !m_isDone) {
        encodeWaiting();
        if (!qxSerializeAdapter::hasError()) encodeEnd();
        m_isDone = true;
        m_window.roomEnd = nullptr;
        flushStream();
    }
    return !qxSerializeAdapter::hasError();
}

void qxSerializeAdapterFilter::finish()
{
    const bool wasDone =
        m_isDone || qxSerializeAdapter::hasError(); // then the error was there to be asked for
    const bool isUnwinding = std::uncaught_exceptions() > 0;
    try {
        if (close() || wasDone || isReading()) return;
        qxMessage::messageText(qxMessage::getDefaultSender(), QX_LEVEL_WARNING,
                               qxSerializeAdapter::getError().getString());
    } catch (...) {              // a receiver of messages raised, or the other stream
        if (!isUnwinding) throw; // else the process would end
    }
}

void qxSerializeAdapterFilter::write_imp(unsigned char* bytes, unsigned int count)
{
    if (isReading()) return setError(translate("The stream is open for reading"));
    if (m_isDone) return setError(translate("The stream is closed"));
    encodeWaiting();
    while (count >= BLOCK) {
        if (qxSerializeAdapter::hasError()) return;
        encode(bytes, BLOCK);
        bytes += BLOCK;
        count -= BLOCK;
    }
    if (count > 0) std::memcpy(m_buffer.get(), bytes, count);
    m_window.next += count;
}

void qxSerializeAdapterFilter::write_imp(unsigned char byte)
{
    write_imp(&byte, 1);
}

// Reading

std::span<const unsigned char> qxSerializeAdapterFilter::look()
{
    if (m_inputNext == m_inputEnd) {
        m_inputNext = 0;
        m_inputEnd = 0;
        if (!m_stream->hasData()) { // which waits for a byte: what came with it is taken without waiting
            takeError();
            return {};
        }
        const auto there = static_cast<unsigned int>(std::clamp<qxUInt64>(m_stream->length(), 1, BLOCK));
        m_inputEnd = m_stream->read(m_input.get(), there);
        if (m_inputEnd == 0) takeError();
    }
    return {m_input.get() + m_inputNext, m_inputEnd - m_inputNext};
}

void qxSerializeAdapterFilter::take(unsigned int count)
{
    m_inputNext += count;
    m_taken += count;
}

// Decodes the next bytes unless some are there; false at the end.
void qxSerializeAdapterFilter::fillWindow(unsigned int)
{
    if (getLent() > 0 || !isReading() || m_isDone) return;
    const unsigned int count = decode(m_buffer.get(), BLOCK);
    m_window.next = m_buffer.get();
    m_window.end = m_window.next + count;
    m_isDone = count == 0;
}

unsigned int qxSerializeAdapterFilter::read_imp(unsigned char* buffer, unsigned int count)
{
    if (!isReading()) setError(translate("The stream is open for writing"));
    return readFromWindow(buffer, count);
}

unsigned char qxSerializeAdapterFilter::read_imp()
{
    unsigned char byte = 0; // what comes behind the end
    read_imp(&byte, 1);
    return byte;
}

qxUInt64 qxSerializeAdapterFilter::length_imp()
{
    return getLent();
}

unsigned char qxSerializeAdapterFilter::hasData_imp()
{
    fillWindow(1);
    return getLent() > 0;
}
