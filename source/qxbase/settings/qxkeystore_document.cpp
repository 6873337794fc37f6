// SPDX-License-Identifier: see LICENSE

#include "settings/qxkeystore.h"

#include "qxmessage.h"

#include "core/qxmessage_state.h"
#include "core/qxprocessguard.h"
#include "platform/qxplatformclock.h"
#include "platform/qxplatformerror.h"
#include "platform/qxplatformfilelock.h"
#include "platform/qxplatformfolder.h"
#include "platform/qxplatformthread.h"
#include "serialize/qxcuttext.h"
#include "settings/qxkeysource.h"

namespace
{

constexpr unsigned int MAX_SHOWN = 16384; // bytes of a URL in a message, which must fit a string
constexpr double LONGEST_WAIT = 10.0;     // seconds, for other programs that save
constexpr unsigned int WAIT_STEP = 1;     // milliseconds

class FileLock
{
public:
    explicit FileLock(qxPlatformFileLock* lock) : m_lock(lock) {}
    ~FileLock() { qxPlatformFileLockRelease(m_lock); }
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

private:
    qxPlatformFileLock* const m_lock;
};

bool writeFile(const std::string& name, const std::string& bytes, int& error)
{
    std::string temporary;
    qxPlatformFile* const file = qxPlatformFileTemporaryNamed(name.c_str(), ".tmp", temporary, error);
    if (!file) return false;
    const bool isWritten = qxPlatformFileWrite(file, bytes.data(), bytes.size(), error) == bytes.size() &&
                           qxPlatformFileSync(file, error);
    int closing;
    const bool isClosed = qxPlatformFileClose(file, closing);
    if (isWritten && !isClosed) error = closing;
    if (isWritten && isClosed && qxPlatformFileReplace(temporary.c_str(), name.c_str(), error)) return true;
    int ignored;
    qxPlatformFileRemove(temporary.c_str(), ignored);
    return false;
}

bool writeStream(const qxString& url, const std::string& bytes, std::string& reason)
{
    const qxRefPointer<qxSerializeAdapter> adapter =
        qxSerializeAdapter::getURLAdapter(url, QX_SERIALIZE_OUTPUT);
    reason = "it can not be opened";
    if (!adapter) return false;
    adapter->write(bytes.data(), static_cast<unsigned int>(bytes.size()));
    adapter->flush();
    if (adapter->hasError()) reason = adapter->getError().getString();
    return !adapter->hasError();
}

} // namespace

// Missing is what the default document may be without a word.
void qxKeyStore::loadDefault()
{
    m_isDefaultDue = false;
    m_source = qxDefaultKeySource();
    qxPlatformFileIdentity identity;
    int error;
    if (qxPlatformFileIdentify(m_source.file.c_str(), identity, error) && identity.exists)
        load(m_source, false);
}

bool qxKeyStore::load(const qxKeySource& source, bool mayBeMissing)
{
    std::unique_ptr<qxKeyDocument> document;
    qxPlatformFileIdentity identity;
    if (!readDocument(source, mayBeMissing, document, identity)) return false;
    m_source = source;
    exchange(std::move(document), identity);
    return true;
}

bool qxKeyStore::readDocument(const qxKeySource& source, bool mayBeMissing,
                              std::unique_ptr<qxKeyDocument>& document, qxPlatformFileIdentity& identity)
{
    const Busy busy(m_isBusy);
    document = std::make_unique<qxKeyDocument>();
    if (!source.file.empty()) {
        int error;
        const bool isKnown = qxPlatformFileIdentify(source.file.c_str(), identity, error);
        if (isKnown && !identity.exists && mayBeMissing) return true;
        const bool isGood =
            !identity.exists || (identity.isPlain && identity.size <= qxKeyDocument::MOST_BYTES);
        if (isKnown && !isGood) {
            qxMessage::message(QX_LEVEL_WARNING, "Settings '%s' are no file, or more than %d bytes",
                               qxCutText(source.url, MAX_SHOWN), qxKeyDocument::MOST_BYTES);
            return false;
        }
    }
    // The identity is the older of the two: what changes meanwhile is read again.
    const qxRefPointer<qxSerializeAdapter> adapter = qxSerializeAdapter::getURLAdapter(source.url);
    return adapter && document->read(*adapter);
}

void qxKeyStore::exchange(std::unique_ptr<qxKeyDocument> document, const qxPlatformFileIdentity& identity)
{
    m_document = std::move(document);
    m_identity = identity;
    noteChange();
}

bool qxKeyStore::rereadIfChanged()
{
    qxPlatformFileIdentity identity;
    int error;
    const bool isOther = m_source.file.empty(); // streams are not looked at again
    const bool isSame =
        isOther || (qxPlatformFileIdentify(m_source.file.c_str(), identity, error) && identity == m_identity);
    return (m_document && isSame) || load(m_source, true);
}

bool qxKeyStore::changeDocument(const Change& apply, bool makesFile)
{
    const double start = qxPlatformSteadySeconds();
    for (;;) {
        const Outcome outcome = change([&] { return tryChange(apply, makesFile); });
        if (outcome != WAITING) return outcome == DONE;
        if (qxPlatformSteadySeconds() - start > LONGEST_WAIT) {
            const qxMessageLock messages;
            const qxProcessGuard guard(m_lock);
            return refuse("another program holds their lock");
        }
        qxPlatformSleep(WAIT_STEP); // nothing is held meanwhile
    }
}

qxKeyStore::Outcome qxKeyStore::tryChange(const Change& apply, bool makesFile)
{
    if (m_isBusy || m_source.url.isEmpty()) return REFUSED;
    if (m_source.file.empty()) return changeLocked(apply) ? DONE : REFUSED;

    int error = 0;
    std::string file;
    qxPlatformFileIdentity identity;
    if (!makesFile && qxPlatformFileIdentify(m_source.file.c_str(), identity, error) && !identity.exists)
        return REFUSED;
    qxPlatformFileLock* lock = nullptr;
    if (qxPlatformFileResolve(m_source.file.c_str(), file, error) &&
        qxPlatformFolderCreateFor(file.c_str(), error))
        lock = qxPlatformFileLockTry(file.c_str(), error);
    if (!lock && error == 0) return WAITING;
    if (!lock) {
        refuse(qxPlatformErrorText(error).c_str());
        return REFUSED;
    }
    const FileLock held(lock);
    return changeLocked(apply) ? DONE : REFUSED;
}

bool qxKeyStore::changeLocked(const Change& apply)
{
    if (!rereadIfChanged()) return false;
    bool isChanged = false;
    std::string reason;
    bool isDone = apply(*m_document, isChanged, reason);
    if (isChanged) {
        std::string bytes;
        isDone = isDone && m_document->write(bytes, false, reason) && save(bytes, reason);
        if (isDone)
            noteChange();
        else if (!load(m_source, true)) // what is in memory is not what was kept
            exchange(nullptr, {});
    }
    return isDone || (reason.empty() ? false : refuse(reason.c_str()));
}

bool qxKeyStore::save(const std::string& bytes, std::string& reason)
{
    const Busy busy(m_isBusy);
    if (bytes.size() > qxKeyDocument::MOST_BYTES) {
        reason = "they are too long";
        return false;
    }
    if (m_source.file.empty()) {
        const qxString scheme = qxSerializeAdapter::getURLScheme(m_source.url);
        if (scheme != "mem" && scheme != "con") return writeStream(m_source.url, bytes, reason);
        reason = "it is no place to keep them";
        return false;
    }
    int error;
    if (!writeFile(m_source.file, bytes, error)) {
        reason = qxPlatformErrorText(error);
        return false;
    }
    qxPlatformFileIdentify(m_source.file.c_str(), m_identity, error);
    return true;
}

bool qxKeyStore::refuse(const char* reason) const
{
    qxMessage::message(QX_LEVEL_WARNING, "Could not save settings '%s' (%s)",
                       qxCutText(m_source.url, MAX_SHOWN), reason);
    return false;
}
