// SPDX-License-Identifier: see LICENSE

#include "qxserializeadapterfile.h"

#include "platform/qxplatformerror.h"
#include "platform/qxplatformfile.h"
#include "qxmessage.h"
#include "serialize/qxcuttext.h"
#include "serialize/qxfilebuffers.h"
#include "serialize/qxurl.h"

#include <algorithm>
#include <exception>

QX_DEFINE_TYPE(qxSerializeAdapterFile, qxSerializeAdapter)

namespace
{

constexpr unsigned int MAX_SHOWN_NAME = 32768; // bytes of a name in an error text, which must fit a string

qxString translate(const char* text)
{
    return qxMessage::translate(qxMessage::getDefaultSender(), text);
}

// The name as the library's search path finds it: as given, as long as there is no search path.
const qxString& getExtendedFileName(const qxString& name)
{
    return name;
}

qxPlatformFile* openForWriting(const char* name, bool update, int& error)
{
    if (!update) return qxPlatformFileOpen(name, QX_PLATFORM_FILE_WRITE, error);
    qxPlatformFile* const file = qxPlatformFileOpen(name, QX_PLATFORM_FILE_UPDATE, error);
    return file ? file : qxPlatformFileOpen(name, QX_PLATFORM_FILE_CREATE, error);
}

qxUInt64 goToEnd(qxPlatformFile* file)
{
    int error;
    const qxUInt64 size = qxPlatformFileSize(file, error);
    qxPlatformFileSeek(file, size, error); // what has no positions, such as a pipe, is always at its end
    return size;
}

} // namespace

qxSerializeAdapterFile::qxSerializeAdapterFile(const qxString& fileName, qxSerializeAction action,
                                               unsigned char update, qxUInt64 flags)
    : m_fileName(fileName), m_action(action == QX_SERIALIZE_APPEND ? QX_SERIALIZE_OUTPUT : action),
      m_update(action == QX_SERIALIZE_APPEND ? 1 : update)
{
    if (m_action == QX_SERIALIZE_INPUT && !(flags & NO_SEARCH)) m_fileName = getExtendedFileName(fileName);
    setName(m_fileName);
    if (m_fileName.isEmpty()) return;

    setURLBase(qxURLFolderOfPath(m_fileName));
    open();
}

qxSerializeAdapterFile::qxSerializeAdapterFile(const qxString& fileName, Unopened)
    : m_fileName(fileName), m_action(QX_SERIALIZE_OUTPUT)
{
    setName(m_fileName);
    if (!m_fileName.isEmpty()) setURLBase(qxURLFolderOfPath(m_fileName));
}

qxSerializeAdapterFile::~qxSerializeAdapterFile() noexcept(false)
{
    const bool isUnwinding = std::uncaught_exceptions() > 0;
    try {
        finish();
    } catch (...) { // a translator or a receiver of messages raised
        release();
        if (!isUnwinding) throw; // else the process would end
    }
}

void qxSerializeAdapterFile::finish()
{
    const bool isReading = m_action == QX_SERIALIZE_INPUT;
    const bool isWritten = isReading || (!m_file && getQueued() == 0) || writeThrough();
    const bool isClosed = close();
    release();
    if (isReading || (isWritten && isClosed)) return;
    const qxString error = qxSerializeAdapter::getError(); // nobody can ask for it any more
    qxMessage::messageText(qxMessage::getDefaultSender(), QX_LEVEL_WARNING, error.getString());
}

void qxSerializeAdapterFile::release()
{
    int ignored;
    qxPlatformFileClose(m_file, ignored);
    m_file = nullptr;
    qxFileBuffers::giveBack(m_buffer);
    m_buffer = nullptr;
    emptyQueue();
}

void qxSerializeAdapterFile::open()
{
    if (qxHasZeroByte(m_fileName)) {
        setFile(nullptr, 0);
        return;
    }
    int error = 0;
    const char* const name = m_fileName.getString();
    qxPlatformFile* const file = m_action == QX_SERIALIZE_INPUT
                                     ? qxPlatformFileOpen(name, QX_PLATFORM_FILE_READ, error)
                                     : openForWriting(name, m_update != 0, error);
    setFile(file, error);
}

void qxSerializeAdapterFile::setFile(qxPlatformFile* file, int systemError)
{
    m_file = file;
    if (!file) {
        const bool isReading = m_action == QX_SERIALIZE_INPUT;
        const std::string reason =
            systemError ? qxPlatformErrorText(systemError) : std::string("the name has a zero byte");
        setError(translate("Could not open '") + qxCutText(m_fileName, MAX_SHOWN_NAME) +
                 translate(isReading ? "' for reading" : "' for writing") + " (" + reason.c_str() + ")");
        return;
    }
    int error;
    m_count = m_action == QX_SERIALIZE_INPUT ? qxPlatformFileSize(file, error) : goToEnd(file);
}

void qxSerializeAdapterFile::setFileError(const char* text, int systemError)
{
    qxString error = translate(text) + qxCutText(m_fileName, MAX_SHOWN_NAME) + "'";
    if (systemError) error += qxString(" (") + qxPlatformErrorText(systemError).c_str() + ")";
    setError(error);
}

bool qxSerializeAdapterFile::close()
{
    emptyQueue();
    if (!m_file) return true;
    int error;
    const bool isKept = qxPlatformFileClose(m_file, error);
    m_file = nullptr;
    if (!isKept) setFileError("Could not flush to file '", error);
    return isKept;
}

unsigned char qxSerializeAdapterFile::canSeek()
{
    return m_action == QX_SERIALIZE_INPUT ? 1 : m_update;
}

void qxSerializeAdapterFile::setSeekMode(unsigned char mode)
{
    m_largeChunks = !mode;
}

unsigned char qxSerializeAdapterFile::supportAction(qxSerializeAction action)
{
    return action == m_action;
}

qxUInt64 qxSerializeAdapterFile::length_imp()
{
    return getQueued() + m_count;
}

void qxSerializeAdapterFile::flush()
{
    qxSerializeAdapter::flush();
    if (m_action == QX_SERIALIZE_INPUT) return;
    writeThrough();
    if (m_file) goToEnd(m_file);
}

qxUInt64 qxSerializeAdapterFile::seek(qxInt64 offset, qxOriginPos origin)
{
    if (m_action != QX_SERIALIZE_INPUT) writeQueueAndGoToEnd();
    if (!m_file) return 0;

    int error;
    const qxUInt64 size = qxPlatformFileSize(m_file, error);
    const qxUInt64 base = origin == QX_ORIGIN_START ? 0
                          : origin == QX_ORIGIN_END ? size
                                                    : qxPlatformFilePosition(m_file, error) - getQueued();
    const qxUInt64 target = base + static_cast<qxUInt64>(offset);
    if (offset < 0 && target > base) return 0; // before the start
    if (m_action != QX_SERIALIZE_INPUT && !m_update && target > size) return 0;

    const auto position = static_cast<unsigned int>(target); // all that reset takes
    if (position != target)
        qxMessage::message(QX_LEVEL_WARNING, "Position %d of file '%s' is beyond 4 GiB, %d is used", target,
                           qxCutText(m_fileName, MAX_SHOWN_NAME), position);
    return reset(position) ? target : 0;
}

void qxSerializeAdapterFile::writeQueueAndGoToEnd()
{
    writeQueue();
    if (m_file) goToEnd(m_file);
}

unsigned char qxSerializeAdapterFile::reset(unsigned int position)
{
    int error = 0;
    const bool isReading = m_action == QX_SERIALIZE_INPUT;
    if (!isReading) {
        writeQueueAndGoToEnd();
        if (m_file && !m_update && position > qxPlatformFileSize(m_file, error)) return 0;
    }
    emptyQueue();
    if (!m_file) return 0;

    const qxUInt64 size = qxPlatformFileSize(m_file, error);
    m_count = size;
    if (!qxPlatformFileSeek(m_file, position, error)) return 0;
    m_count = isReading ? size - std::min<qxUInt64>(position, size) : position;
    qxSerializeAdapter::flush(); // bytes given back belonged to the old place
    return 1;
}

void qxSerializeAdapterFile::cleanUpLargeFiles()
{
    qxFileBuffers::freeIdle();
}
