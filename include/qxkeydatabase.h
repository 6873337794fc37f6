// The persistent settings of programs.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxarray.h"
#include "qxstring.h"

/// Which tree of the system's registry a key lives in. A settings document has one tree for all.
enum qxRegKeyHeader : unsigned int {
    QX_KEY_GLOBAL = 0, ///< the machine's: HKEY_LOCAL_MACHINE
    QX_KEY_USER = 1    ///< the user's: HKEY_CURRENT_USER
};

/// One value of a settings document.
struct qxKeyEntry {
    qxString path;
    qxString name;
    qxString value;
};

/// One value that has changed.
struct qxKeyChange {
    qxString path;
    qxString name;
    qxString before;       ///< empty also when there was none
    qxString after;        ///< empty also when there is none any more
    unsigned char existed; ///< 1 when there was one before
    unsigned char exists;
};

/// Is told when values of the settings document in force change, whichever program changes them.
///
/// Lifetime: must stay alive while it is registered; a class of an application removes itself in its own destructor.
/// Threads:  called on a thread of the library's own, one call at a time and with no lock held, so a receiver may use the
///           key database. It may remove itself and others.
/// Errors:   what a receiver raises is reported as of a thread's body, and ends that round of calls.
class QX_API qxKeyReceiverInterface
{
public:
    qxKeyReceiverInterface() = default;
    virtual ~qxKeyReceiverInterface();

    /// Changes that follow each other quickly may come as one.
    virtual void onKeyChange(const qxKeyChange& change) = 0;

    qxKeyReceiverInterface(const qxKeyReceiverInterface&) = delete;
    qxKeyReceiverInterface& operator=(const qxKeyReceiverInterface&) = delete;
};

/// Texts that outlive the program, each under a header, a path and a name.
///
/// They are looked for in the local registry, a settings document (docs/settings.md), then in the system's registry where
/// there is one and it is enabled. They are set in the system's registry where that is so, else in the document, which is
/// saved at once: as a whole or not at all, behind a lock that programs share, and after what other programs have changed
/// was read. A document that cannot be read is never replaced.
///
/// Paths have "/" or "\" between their parts; those at the ends, and more than one together, do not count. An empty path
/// is the default one. Paths may begin at any depth of a document.
///
/// Threads: any; one lock guards it all. Operations but the plain questions take the message lock first.
/// Errors:  a missing document, key or value is the empty text. What cannot be set or read answers 0, with a warning for
///          documents.
class QX_API qxKeyDatabase
{
public:
    qxKeyDatabase() = delete;

    static constexpr const char* SLASH = "/";   ///< between the parts of a path
    static constexpr const char* DSLASH = "//"; ///< before a path that may begin at any depth of a document

    /// The value; empty when there is none.
    static qxString getRegKey(qxRegKeyHeader header, qxString path, const qxString& name);

    /// `missing` in place of an empty value too.
    static qxString getDefaultRegKey(qxRegKeyHeader header, const qxString& path, const qxString& name,
                                     const qxString& missing);
    static unsigned char existRegKey(qxRegKeyHeader header, const qxString& path, const qxString& name);

    /// 1 when the value is kept: in a document it is on the disk then.
    static unsigned char setRegKey(qxRegKeyHeader header, const qxString& path, const qxString& name,
                                   const qxString& value);

    /// 0 also when there was none.
    static unsigned char removeRegKey(qxRegKeyHeader header, const qxString& path, const qxString& name);

    // Keys of the default path. `header` is a qxRegKeyHeader, and at first the user's.

    static qxString getUserKey(const qxString& name, unsigned char header = getUserHeader());
    static qxString getDefaultUserKey(const qxString& name, const qxString& missing,
                                      unsigned char header = getUserHeader());
    static unsigned char existUserKey(const qxString& name, unsigned char header = getUserHeader());
    static unsigned char setUserKey(const qxString& name, const qxString& value,
                                    unsigned char header = getUserHeader());

    /// Removes the variable of that name from the environment, too.
    static unsigned char removeUserKey(const qxString& name, unsigned char header = getUserHeader());

    // Keys of the default path in the machine's tree. Names and values are kept scrambled, which hides them from a glance and
    // from nobody else; what is there under the plain name is taken as it stands.

    static qxString getGlobalKey(const qxString& name);
    static qxString getDefaultGlobalKey(const qxString& name, const qxString& missing);
    static unsigned char existGlobalKey(const qxString& name);
    static unsigned char setGlobalKey(const qxString& name, const qxString& value);

    /// Removes the variable of that name from the environment, too.
    static unsigned char removeGlobalKey(const qxString& name);

    // The document

    /// Puts the document at `url` in force; an empty `url` leaves none. The present one is let go in any case. Until the
    /// first call it is "/usr/local/quaxosdk/quaxosdk.reg", which is read at the first operation, if it is there. 0, and
    /// the URL stays, when it cannot be read or is malformed.
    static unsigned char setLocalRegistry(const qxString& url);

    /// The same, but a file that is not there is a document without keys; the first one that is set makes it.
    static unsigned char openLocalRegistry(const qxString& url);
    static qxString getLocalRegistryURL();

    /// The document that the user wants: that of the environment variable QUAXO_SETTINGS; else the user's own in the
    /// system's folder for that, when it is there; else the system's, when it is there; else the user's own. Programs that
    /// want it open it.
    static qxString getPreferredRegistryURL();

    /// The values of the document at and beneath `path`, all of them for an empty one, sorted by path and name.
    static qxDynamicArray<qxKeyEntry> getLocalKeys(const qxString& path = qxString());

    /// Sets all values of the document at `url` in the document in force, all of them or none.
    static unsigned char importLocalRegistry(const qxString& url);

    /// Writes the document, with what it includes, to `adapter`.
    static unsigned char exportLocalRegistry(qxSerializeAdapter* adapter);

    /// Reads the document again if another program has changed its file. Setting does so anyway; receivers make it happen
    /// by itself. 0, and what was known stays, when it cannot be read.
    static unsigned char refreshLocalRegistry();

    /// From now on `receiver` is told of changes; 0 when the system cannot watch.
    static unsigned char addReceiver(qxKeyReceiverInterface* receiver);

    /// When this returns the receiver is not called any more, and is not inside, unless it asks for this itself. Not to be
    /// called with the message lock held.
    static void removeReceiver(qxKeyReceiverInterface* receiver);

    // The switches

    /// Whether the system's registry counts, where there is one; at first it does.
    static void enableSystemRegistry(unsigned char on);

    /// The path that an empty one stands for, at first "software/Norvale/QuaxoSDK".
    static qxString getDefaultRegistry();
    static void setDefaultRegistry(const qxString& path);

    /// The header of user keys that are asked for without one, at first QX_KEY_USER.
    static qxRegKeyHeader getDefaultKeyHeader();
    static void setDefaultKeyHeader(qxRegKeyHeader header);

private:
    static unsigned char getUserHeader() { return static_cast<unsigned char>(getDefaultKeyHeader()); }
};
