// SPDX-License-Identifier: see LICENSE

#include "qxserializeadapterfile.h"

#include "platform/qxplatformfile.h"
#include "qxerror.h"
#include "serialize/qxfilebuffers.h"

#include <algorithm>
#include <cstring>
#include <typeinfo>

// One rule for all reads: what the queue holds goes first; of the rest, large parts come straight from the
// file and small ones through a queue that is filled as far as it goes.

namespace
{

constexpr unsigned int DIRECT_SIZE = 16384; // bytes; from here on a copy costs more than a call of the system

} // namespace

void qxSerializeAdapterFile::takeBuffer()
{
    if (m_buffer) return;
    m_buffer = qxFileBuffers::take();
    emptyQueue();
}

void qxSerializeAdapterFile::setQueue(const unsigned char* next, unsigned char* end)
{
    // A derived class may have a read_imp of its own, which the window would pass by.
    const bool isLent = m_action == QX_SERIALIZE_INPUT && typeid(*this) == typeid(qxSerializeAdapterFile);
    m_window.next = next;
    m_window.end = isLent ? end : nullptr;
    m_queueEnd = end;
}

void qxSerializeAdapterFile::requireInput() const
{
    if (m_action != QX_SERIALIZE_INPUT)
        qxExceptionThrows::qxThrowWarning("Can use QX_SERIALIZE_OUTPUT on a file opened for reading !\n");
}

void qxSerializeAdapterFile::requireOutput() const
{
    if (m_action == QX_SERIALIZE_INPUT)
        qxExceptionThrows::qxThrowWarning("Can use QX_SERIALIZE_INPUT on a file opened for writing !\n");
}

unsigned int qxSerializeAdapterFile::read_imp(unsigned char* buffer, unsigned int count)
{
    requireInput();
    unsigned int done = takeQueued(buffer, count);
    const auto rest = static_cast<unsigned int>(std::min<qxUInt64>(count - done, m_count));
    if (rest == 0) return done;

    buffer += done;
    if (rest >= DIRECT_SIZE || !m_largeChunks) return done + readFile(buffer, rest);
    fillQueue(QUEUE_SIZE);
    return done + takeQueued(buffer, rest);
}

unsigned char qxSerializeAdapterFile::read_imp()
{
    requireInput();
    if (getQueued() == 0 && m_count != 0) fillQueue(m_largeChunks ? QUEUE_SIZE : 1);
    if (getQueued() == 0) qxExceptionThrows::qxThrowFatal("qxQueue:pop out of data");
    return *m_window.next++;
}

void qxSerializeAdapterFile::fillWindow(unsigned int wanted)
{
    if (m_action != QX_SERIALIZE_INPUT || getQueued() != 0 || m_count == 0) return;
    fillQueue(m_largeChunks ? QUEUE_SIZE : wanted);
}

unsigned int qxSerializeAdapterFile::takeQueued(unsigned char* buffer, unsigned int count)
{
    const unsigned int taken = std::min(count, getQueued());
    if (taken > 0) std::memcpy(buffer, m_window.next, taken);
    m_window.next += taken;
    return taken;
}

// Call with the queue empty.
void qxSerializeAdapterFile::fillQueue(unsigned int count)
{
    takeBuffer();
    emptyQueue();
    const auto wanted = std::min(static_cast<unsigned int>(std::min<qxUInt64>(count, m_count)), QUEUE_SIZE);
    const unsigned int got = readFile(m_buffer, wanted);
    setQueue(m_buffer, m_buffer + got);
}

unsigned int qxSerializeAdapterFile::readFile(unsigned char* buffer, unsigned int count)
{
    int error;
    const auto got = static_cast<unsigned int>(qxPlatformFileRead(m_file, buffer, count, error));
    m_count -= count;
    if (got < count) {
        m_count = 0; // the file has become shorter, or the disk fails
        setFileError("Could not read from file '", error);
    }
    return got;
}

void qxSerializeAdapterFile::write_imp(unsigned char* bytes, unsigned int count)
{
    requireOutput();
    if (count <= QUEUE_SIZE - getQueued()) {
        append(bytes, count);
        return;
    }
    if (!writeQueue()) {
        append(
            bytes,
            std::min(count, QUEUE_SIZE - getQueued())); // deliberate: the rest is lost, which the error tells
        return;
    }
    if (count <= QUEUE_SIZE) {
        append(bytes, count);
        return;
    }
    unsigned int written;
    writeFile(bytes, count, written);
}

void qxSerializeAdapterFile::write_imp(unsigned char byte)
{
    requireOutput();
    if (getQueued() == QUEUE_SIZE && !writeQueue()) return;
    takeBuffer();
    *m_queueEnd++ = byte;
}

void qxSerializeAdapterFile::append(const unsigned char* bytes, unsigned int count)
{
    if (count == 0) return;
    takeBuffer();
    std::memcpy(m_queueEnd, bytes, count);
    m_queueEnd += count;
}

bool qxSerializeAdapterFile::writeFile(const unsigned char* bytes, unsigned int count, unsigned int& written)
{
    int error;
    written = static_cast<unsigned int>(qxPlatformFileWrite(m_file, bytes, count, error));
    m_count += written;
    m_isUnsynced = true;
    if (written == count) return true;
    setFileError("Could not flush to file '", error);
    return false;
}

bool qxSerializeAdapterFile::writeQueue()
{
    if (!m_file) {
        setFileError("Could not flush to file '", 0);
        return false;
    }
    const unsigned int queued = getQueued();
    if (queued == 0) return true;
    unsigned int written;
    const bool isWritten = writeFile(m_buffer, queued, written);
    std::memmove(m_buffer, m_buffer + written, queued - written); // the rest may fit the disk later
    setQueue(m_buffer, m_buffer + queued - written);
    return isWritten;
}

bool qxSerializeAdapterFile::writeThrough()
{
    if (!writeQueue()) return false;
    if (!m_isUnsynced) return true;
    int error;
    if (!qxPlatformFileSync(m_file, error)) {
        setFileError("Could not flush to file '", error);
        return false;
    }
    m_isUnsynced = false;
    return true;
}
