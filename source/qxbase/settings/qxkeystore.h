// The settings of the process.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxkeydatabase.h"
#include "qxmutex.h"

#include "core/qxmessage_state.h"
#include "core/qxprocessguard.h"
#include "platform/qxplatformfile.h"
#include "settings/qxkeydocument.h"
#include "settings/qxkeysource.h"

#include <functional>
#include <memory>
#include <string>

/// The document in force, the switches, and the system's registry behind them.
///
/// What may send messages takes the message lock before the lock of the settings: a translator, which is called with the
/// message lock held, asks for settings.
///
/// Lifetime: one, built on first use and never destroyed.
/// Threads:  any; each operation holds the lock for its whole run, but lets go of it while another program saves.
class qxKeyStore
{
public:
    static qxKeyStore& get();

    bool getKey(qxRegKeyHeader header, const qxString& path, const qxString& name, qxString& value);
    bool setKey(qxRegKeyHeader header, const qxString& path, const qxString& name, const qxString& value);
    bool removeKey(qxRegKeyHeader header, const qxString& path, const qxString& name);

    /// With `mayBeMissing` a file that is not there is an empty document.
    bool setURL(const qxString& url, bool mayBeMissing);
    qxString getURL();

    /// The values of the document, sorted.
    std::vector<qxKeyRow> getRows();

    /// Sets all values of the document at `url`, in one save.
    bool merge(const qxString& url);

    /// The document as a text of its own.
    bool exportTo(std::string& bytes);

    /// Reads the document again if its file has changed. False when that cannot be read; what was known stays.
    bool refresh();

    /// The full name of the document's file, empty when it is none.
    std::string getFile();

    qxString getDefaultPath();
    void setDefaultPath(const qxString& path);
    qxRegKeyHeader getDefaultHeader();
    void setDefaultHeader(qxRegKeyHeader header);
    void useSystemRegistry(bool on);

private:
    /// Changes a document; false, and the text, when that cannot be.
    typedef std::function<bool(qxKeyDocument& document, bool& isChanged, std::string& error)> Change;

    // While it lives the store has no document for those who ask on the same thread, such as a translator.
    class Busy
    {
    public:
        explicit Busy(bool& flag) : m_flag(flag), m_before(flag) { m_flag = true; }
        ~Busy() { m_flag = m_before; }
        Busy(const Busy&) = delete;
        Busy& operator=(const Busy&) = delete;

    private:
        bool& m_flag;
        const bool m_before;
    };
    enum Outcome { DONE, REFUSED, WAITING };

    qxKeyStore() = default;

    // These want the lock held; those that may send messages the message lock too.

    bool usesSystemRegistry() const;
    const qxString& pathOrDefault(const qxString& path) const;
    bool isReady() const { return !m_isDefaultDue || m_isBusy; }
    void loadDefault();
    bool load(const qxKeySource& source, bool mayBeMissing);
    bool readDocument(const qxKeySource& source, bool mayBeMissing, std::unique_ptr<qxKeyDocument>& document,
                      qxPlatformFileIdentity& identity);
    bool rereadIfChanged();
    Outcome tryChange(const Change& apply, bool makesFile);
    bool changeLocked(const Change& apply);
    bool save(const std::string& bytes, std::string& reason);
    void exchange(std::unique_ptr<qxKeyDocument> document, const qxPlatformFileIdentity& identity);
    static void noteChange();
    bool refuse(const char* reason) const;

    /// Takes the locks itself, and waits for other programs. With `makesFile` false a file that is missing stays so.
    bool changeDocument(const Change& apply, bool makesFile);
    bool changeKey(const qxString& path, const std::function<bool(const char*)>& inSystem,
                   const Change& inDocument, bool makesFile);

    /// Runs `work` with the lock held and the document read; it sends no messages.
    template <class Work>
    auto read(const Work& work)
    {
        {
            const qxProcessGuard guard(m_lock);
            if (isReady()) return work();
        }
        return change(work);
    }

    /// The same for work that may send messages.
    template <class Work>
    auto change(const Work& work)
    {
        const qxMessageLock messages;
        const qxProcessGuard guard(m_lock);
        if (!isReady()) loadDefault();
        return work();
    }

    const qxMutex m_lock; // guards the fields below
    bool m_isDefaultDue = true;
    bool m_isBusy = false; // a document is read or changed: what is asked meanwhile finds none
    bool m_usesSystemRegistry = true;
    qxRegKeyHeader m_defaultHeader = QX_KEY_USER;
    qxString m_defaultPath = "software/Norvale/QuaxoSDK";
    qxKeySource m_source;
    std::unique_ptr<qxKeyDocument> m_document;
    qxPlatformFileIdentity m_identity; // of the file when the document was read or written
};
