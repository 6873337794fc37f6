// The byte stream that everything in the library reads from and writes to.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxforward.h"
#include "qxname.h"
#include "qxreference.h"
#include "qxstring.h"

#include <cstring>
#include <memory>
#include <vector>

class qxRefInstanceArray;
class qxRefInstanceDictionary;
class qxURLManagerInterface;

/// What a stream is opened for.
enum qxSerializeAction : unsigned int {
    QX_SERIALIZE_OUTPUT = 1, ///< write
    QX_SERIALIZE_INPUT = 2,  ///< read
    QX_SERIALIZE_APPEND = 3  ///< write and keep what is there
};

/// What an offset counts from; see qxSerializeAdapter::seek.
typedef unsigned int qxOriginPos;
constexpr qxOriginPos QX_ORIGIN_START = 0;
constexpr qxOriginPos QX_ORIGIN_CURRENT = 1;
constexpr qxOriginPos QX_ORIGIN_END = 2;

/// A stream of bytes: the base of files, memory blocks and every other source or sink.
///
/// Readers may give bytes back: they lie in a store in front of the stream, and reading takes them from there
/// first, the last one given back before the others. Writing does not touch the store.
///
/// A concrete adapter supplies read_imp() and write_imp(byte), and what else it can do better than the
/// defaults. The byte operations hide those of the name: call qxNameInterface::write(adapter) and
/// qxNameInterface::read(adapter) by their full names.
///
/// Lifetime: reference counted, or on the stack; never copied: holders that are copied share it.
/// Threads:  one thread at a time; only the reference count is locked.
/// Errors:   trouble of the stream is stored as a text on the adapter. Misuse raises.
class QX_API qxSerializeAdapter : public qxThreadSafeReference, public qxNameInterface
{
public:
    static constexpr qxUInt64 SEEK_FAILED = 0xFFFFFFFFFFFFFFFF;

    qxSerializeAdapter();
    ~qxSerializeAdapter() noexcept(false) override;
    qxSerializeAdapter(const qxSerializeAdapter&) = delete;
    qxSerializeAdapter& operator=(const qxSerializeAdapter&) = delete;

    QX_DECLARE_TYPE;

    /// False: a stream cannot be cloned.
    bool useDeepCopy() override;

    virtual unsigned char canSeek();

    /// With 1 the adapter reads no more ahead than it is asked for.
    virtual void setSeekMode(unsigned char mode);

    /// Moves to `offset` bytes from `origin` and returns the new position; SEEK_FAILED where that is not
    /// supported.
    virtual qxUInt64 seek(qxInt64 offset, qxOriginPos origin);

    /// 1 when the stream can do `action`.
    virtual unsigned char supportAction(qxSerializeAction action);

    /// Asked before an owner closes the stream; 1 agrees.
    virtual unsigned char aboutToClose(unsigned char force);

    /// Adds to the associated data; the base ignores `data`.
    virtual void mergeAssociatedData(qxReference* data);

    /// Empties the store of bytes given back and keeps its memory. Adapters with buffers write them out.
    virtual void flush();

    virtual unsigned char hasError();
    virtual qxString getError();

    /// An empty text is no error.
    virtual void setError(const qxString& text);

    /// The tables of shared objects, made when first asked for; they stay the adapter's.
    virtual qxRefInstanceDictionary* getRefInstanceDictionary();
    virtual qxRefInstanceArray* getRefInstanceArray();

    /// 0, 1, 2 and so on.
    virtual unsigned int getNewSharedInstanceID();

    /// Empties both tables and starts the IDs from 0.
    virtual void clearSharedRefs();

    /// 1 when the stream uses the extension of this name; the base knows none.
    virtual unsigned char useExtension(const qxString& name);

    /// Takes over the tables of shared objects and the next ID of `other`.
    void copySharedRefData(qxSerializeAdapter* other);

    // Bytes

    void write(unsigned char byte)
    {
        if (m_window.next < m_window.roomEnd) [[likely]]
            *takeRoom(1) = byte;
        else
            write_imp(byte);
    }
    void write(const unsigned char* bytes, unsigned int count)
    {
        if (count == 0 || count > getRoom()) return writeBlock(bytes, count);
        std::memmove(takeRoom(count), bytes, count); // they may be bytes of the block that is written
    }
    void write(const char* bytes, unsigned int count);

    /// One byte. What comes when there is none depends on the adapter: ask hasData first.
    unsigned char read()
    {
        if (m_window.next < m_window.end && m_head == m_tail) [[likely]]
            return *m_window.next++;
        return readByte();
    }

    /// Reads up to `count` bytes and returns how many came. A null `buffer` skips `count` bytes, one by one,
    /// and returns `count`.
    unsigned int read(unsigned char* buffer, unsigned int count)
    {
        if (!buffer || count == 0 || m_head != m_tail || count > getLent()) return readBlock(buffer, count);
        std::memmove(buffer, m_window.next, count);
        m_window.next += count;
        return count;
    }

    /// As read, for who needs all of the bytes: from a stream that gives what it has, in several pieces. Fewer only at the
    /// end of the data.
    unsigned int readWhole(unsigned char* buffer, unsigned int count)
    {
        const unsigned int done = read(buffer, count);
        return done == count ? done : readRest(buffer, done, count);
    }

    /// Bytes known to be there now, those given back included.
    qxUInt64 length();

    /// 1 when `count` bytes can be read. Consumes nothing, but may have to wait for the stream.
    unsigned char hasData(unsigned int count = 1)
    {
        if (count == 1 && m_head == m_tail && m_window.next < m_window.end) return 1;
        return askForData(count);
    }

    /// Calls the write or read of `data`; any other action does nothing.
    void serialize(qxSerializeData* data, qxSerializeAction action);

    // Giving bytes back

    void pushBack(unsigned char byte);

    /// Gives a block back so that it is read again in its order.
    void pushBack(const unsigned char* bytes, unsigned int count);

    /// Prepares for `count` bytes that are given back one by one.
    void allocPushBack(unsigned int count);

    /// Takes all bytes that the stream has now into the store, behind those already there.
    void pushBackAdapterData();

    unsigned int getPushBackCount() const { return m_tail - m_head; }

    /// Bytes that the store holds before it grows, a multiple of its step of 8 or what allocPushBack set.
    unsigned int getPushBackCapacity() const { return m_capacity; }

    /// 0, the start: the byte given back last is read first; 1: the one given back first.
    void setPushBackMode(unsigned char mode) { m_mode = mode; }
    unsigned char getPushBackMode() const { return m_mode; }

    // What belongs to the stream

    /// The folder, as a URL, that relative URLs in the data are meant from.
    const qxString& getURLBase() const { return m_urlBase; }
    void setURLBase(const qxString& base) { m_urlBase = base; }
    const qxString& getDefaultPath() const { return m_defaultPath; }
    void setDefaultPath(const qxString& path) { m_defaultPath = path; }
    const qxString& getPassword() const { return m_password; }
    void setPassword(const qxString& password) { m_password = password; }
    const qxString& getAttributes() const { return m_attributes; }
    void setAttributes(const qxString& attributes) { m_attributes = attributes; }
    qxUInt64 getAdapterFlags() const { return m_flags; }
    void setAdapterFlags(qxUInt64 flags) { m_flags = flags; }

    /// The format version of the data, for readers of old data.
    unsigned int getAdapterVersion() const { return m_version; }
    void setAdapterVersion(unsigned int version) { m_version = version; }
    qxReference* getAssociatedData() const { return m_associatedData; }
    void setAssociatedData(qxReference* data) { m_associatedData = data; }

    // URLs

    /// Opens `url`, which is resolved against `base` when it is relative. docs/urls.md tells the schemes; a manager
    /// may be registered for others. Never hand on URLs from outside without refusing "mem", which names addresses in
    /// this process. The adapter gets what stands behind "?" as its attributes, of which "encoding" (b64, hex or gz)
    /// makes it decode what it reads and encode what it writes; its URL base becomes the folder of `url`. Null, and a
    /// warning, when there is no such stream.
    static qxRefPointer<qxSerializeAdapter> getURLAdapter(const qxString& url,
                                                          qxSerializeAction action = QX_SERIALIZE_INPUT,
                                                          const qxString& base = qxString());

    /// The value of the attribute `name` behind the "?" of `url`, with %HH decoded; `defaultValue` when there is none.
    /// Plain paths and "file:" with a path have attributes only where what follows the last "?" looks like them.
    static qxString getURLAttributeValue(const qxString& url, const qxString& name,
                                         const qxString& defaultValue = qxString());

    /// What the bytes at `url` are encoded as: its attribute "encoding" in lower case, empty when there is none.
    static qxString getURLBaseEncoding(const qxString& url);

    /// `url` itself when it is absolute, else joined to the folder `base`, with "." and ".." taken away as
    /// far as that goes. Empty when the result would be too long for a string.
    static qxString resolveURL(const qxString& url, const qxString& base);

    /// The folder of the document at `url`, with its final "/": what relative URLs in it are meant from.
    static qxString getURLFolder(const qxString& url);

    /// The name of the file that `url`, a path or "file:", stands for, without its attributes; empty for other URLs.
    static qxString getURLPath(const qxString& url);

    /// The scheme in lower case, empty for paths; a single letter is a drive, not a scheme.
    static qxString getURLScheme(const qxString& url);

    /// `manager` opens URLs of `scheme` (without ":") from now on. False for what is no scheme, for a
    /// scheme of the library itself and one that has a manager. The four functions may be called from any thread.
    static bool registerURLManager(const qxString& scheme, qxURLManagerInterface* manager);

    /// Takes `manager` out of all schemes.
    static void unregisterURLManager(qxURLManagerInterface* manager);
    static qxRefPointer<qxURLManagerInterface> getURLManager(const qxString& scheme);
    static bool hasRegisteredURLManager(const qxString& scheme);

protected:
    /// Writes a block; the base writes it byte by byte.
    virtual void write_imp(unsigned char* bytes, unsigned int count);
    virtual void write_imp(unsigned char byte) = 0;

    /// Reads up to `count` bytes and returns how many came; the base reads byte by byte while there is data.
    virtual unsigned int read_imp(unsigned char* buffer, unsigned int count);
    virtual unsigned char read_imp() = 0;

    /// Bytes known to be there, without those given back.
    virtual qxUInt64 length_imp();

    /// 1 when a byte can be read.
    virtual unsigned char hasData_imp();

    /// True while hasData tries to read: finding less is then no error.
    bool isProbing() const { return m_isProbing; }

    /// Bytes of the stream that lie in memory. What lies before `end` is read there without a call of read_imp,
    /// and what fits before `roomEnd` is written there, at the same place, without a call of write_imp. A class
    /// that others derive from leaves both null unless read_imp and write_imp are its own.
    struct Window {
        const unsigned char* next = nullptr;
        const unsigned char* end = nullptr;
        const unsigned char* roomEnd = nullptr;
    };
    Window m_window;

    /// For read_imp of a class whose fillWindow waits for bytes: takes `count` out of the window, fewer only at the end.
    unsigned int readFromWindow(unsigned char* buffer, unsigned int count);

    /// Bytes that can be read from the window now.
    unsigned int getLent() const
    {
        return m_window.next < m_window.end ? static_cast<unsigned int>(m_window.end - m_window.next) : 0;
    }

private:
    friend class qxAdapterBytes;

    /// Makes an empty window hold bytes, `wanted` if it can; stays empty at the end and where nothing is
    /// lent.
    virtual void fillWindow(unsigned int wanted);

    unsigned int getRoom() const
    {
        return m_window.next < m_window.roomEnd ? static_cast<unsigned int>(m_window.roomEnd - m_window.next)
                                                : 0;
    }

    /// The place for the next `count` bytes, which go there at once. Call with that much room.
    unsigned char* takeRoom(unsigned int count)
    {
        const unsigned char* const place = m_window.next;
        m_window.next += count;
        return const_cast<unsigned char*>(place); // room is lent by adapters whose memory is their own
    }
    void writeBlock(const unsigned char* bytes, unsigned int count);
    unsigned int readBlock(unsigned char* buffer, unsigned int count);
    unsigned int readRest(unsigned char* buffer, unsigned int done, unsigned int count);
    unsigned char readByte();
    unsigned char askForData(unsigned int count);
    unsigned char takePushedBack();
    unsigned int takePushedBack(unsigned char* buffer, unsigned int count);
    void skip(unsigned int count);
    void readUpTo(unsigned int count, std::vector<unsigned char>& bytes);
    void makeRoom(unsigned int count);

    qxString m_urlBase;
    qxString m_defaultPath;
    qxString m_password;
    qxString m_attributes;
    qxUInt64 m_flags = 0;
    unsigned int m_version = 0;
    qxRefPointer<qxReference> m_associatedData;

    // The store of bytes given back. The capacity is a multiple of the step; the memory behind it may be
    // smaller and grows by doubling, so that neither a small step nor a huge one costs anything.
    unsigned char* m_bytes = nullptr;
    unsigned int m_head = 0; // the bytes from here to m_tail are there
    unsigned int m_tail = 0;
    unsigned int m_capacity = 0;
    unsigned int m_allocated = 0;
    unsigned int m_step = 8;
    unsigned char m_mode = 0;

    bool m_isProbing = false;
    qxString m_error;
    unsigned int m_nextSharedID = 0;
    std::unique_ptr<qxRefInstanceArray> m_sharedArray;
    std::unique_ptr<qxRefInstanceDictionary> m_sharedDictionary;
};
