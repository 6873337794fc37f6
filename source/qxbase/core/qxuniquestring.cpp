// SPDX-License-Identifier: see LICENSE

#include "qxuniquestring.h"

#include "core/qxneverdestroyed.h"
#include "core/qxprocessguard.h"
#include "core/qxuniquelookup.h"
#include "qxdict.h"
#include "qxerror.h"
#include "qxmemory.h"

std::atomic<unsigned int> qxUniqueChanges = 0;

namespace
{

constexpr unsigned int ENTRIES = 65535;
constexpr unsigned int BUCKETS = 10;

struct Entry {
    char* text; // null while the entry is free
    unsigned int hash;
    unsigned short length;
};

// The text of an entry as a key. It is no qxString: comparing those would turn the probe unique.
class Key
{
public:
    Key(const char* text, unsigned int length)
        : m_text(text), m_length(length), m_hash(qxString::hash(text, length))
    {}

    unsigned int hash() const { return m_hash; }
    bool operator==(const Key& other) const
    {
        return m_length == other.m_length && std::memcmp(m_text, other.m_text, m_length) == 0;
    }

private:
    const char* m_text;
    unsigned int m_length;
    unsigned int m_hash;
};

// Why a text could not be entered, for the error that is raised when the lock is given back.
struct Conflict {
    qxString text; // the unique string in the way; empty: the table was full
    unsigned short id = 0;
    bool isSameText = false;
};

} // namespace

/// The process-wide table: entry i holds the text with the ID i + 1. All members but the lock want it held.
class qxUniqueTable
{
public:
    static qxUniqueTable& get();

    qxMutex& lock() { return m_lock; }
    bool isFree(unsigned short id) const { return !s_entries[id - 1].text; }
    unsigned short nextFreeId();

    /// Enters the text of an ordinary string that is not empty and makes the string unique.
    bool enter(qxString& string, unsigned short id, Conflict& conflict);

    /// Makes the string unique when the table holds its text.
    bool findAndGive(qxString& string) const;

    /// The ID of a text that is not empty; 0 without one.
    unsigned short find(const char* text, unsigned int length) const
    {
        const Entry* const known = m_byText.find(Key(text, length));
        return known ? idOf(*known) : static_cast<unsigned short>(0);
    }

    /// Makes `string` the unique one with the ID of `entry`.
    void give(qxString& string, const Entry& entry) const;
    const Entry& entryOf(unsigned short id) const { return s_entries[id - 1]; }

    void clear();

private:
    unsigned short idOf(const Entry& entry) const
    {
        return static_cast<unsigned short>(&entry - s_entries + 1);
    }

    unsigned int stateOf(const Entry& entry) const
    {
        return static_cast<unsigned int>(idOf(entry)) << 16 | entry.length;
    }

    static Entry s_entries[ENTRIES];
    qxMutex m_lock{0};
    qxDict<Key, Entry> m_byText{BUCKETS};
    unsigned int m_lowestFree = 0; // no entry before it is free
};

Entry qxUniqueTable::s_entries[ENTRIES]; // all zero: the system gives the memory when it is touched

qxUniqueTable& qxUniqueTable::get()
{
    static qxNeverDestroyed<qxUniqueTable> table;
    return table.get();
}

unsigned short qxUniqueTable::nextFreeId()
{
    while (m_lowestFree < ENTRIES && s_entries[m_lowestFree].text) ++m_lowestFree;
    return m_lowestFree < ENTRIES ? static_cast<unsigned short>(m_lowestFree + 1) : 0;
}

bool qxUniqueTable::enter(qxString& string, unsigned short id, Conflict& conflict)
{
    const Key key(string.m_text,
                  string.length()); // with a fresh hash: the string's own may be that of an old text
    const Entry* const known = m_byText.find(key);
    if (known && (id == 0 || id == idOf(*known))) {
        give(string, *known);
        return true;
    }
    if (!known && id == 0) id = nextFreeId();
    if (!known && id == 0) return false;
    if (known || !isFree(id)) {
        const Entry& other = known ? *known : entryOf(id);
        conflict.text = qxString(other.text, other.length);
        conflict.id = idOf(other);
        conflict.isSameText = known != nullptr;
        return false;
    }
    Entry& entry = s_entries[id - 1];
    m_byText.enter(key, &entry);
    entry = {string.m_text, key.hash(), string.length()}; // the buffer changes its owner
    string.m_lengthAndID = stateOf(entry);
    string.m_hash = entry.hash;
    ++qxUniqueChanges;
    return true;
}

bool qxUniqueTable::findAndGive(qxString& string) const
{
    const Entry* const known = m_byText.find(Key(string.m_text, string.length()));
    if (known) give(string, *known);
    return known != nullptr;
}

void qxUniqueTable::give(qxString& string, const Entry& entry) const
{
    string.releaseText();
    string.m_text = entry.text;
    string.m_lengthAndID = stateOf(entry);
    string.m_hash = entry.hash;
}

void qxUniqueTable::clear()
{
    m_byText.clear();
    for (Entry& entry : s_entries) {
        qx_free(entry.text);
        entry = {};
    }
    m_lowestFree = 0;
    ++qxUniqueChanges;
}

unsigned short qxFindUniqueID(const char* text, unsigned int length)
{
    qxUniqueTable& table = qxUniqueTable::get();
    const qxProcessGuard guard(table.lock());
    return table.find(text, length);
}

bool qxFindUniqueText(unsigned short id, qxString& text)
{
    qxUniqueTable& table = qxUniqueTable::get();
    const qxProcessGuard guard(table.lock());
    if (table.isFree(id)) return false;
    const Entry& entry = table.entryOf(id);
    text = qxString(entry.text, entry.length);
    return true;
}

bool qxString::makeUnique(unsigned short id)
{
    if (isUnique()) return true;
    if (isEmpty() && id == 0) return false;

    Conflict conflict;
    qxString name; // of an ID without a text
    qxString& text = isEmpty() ? name : *this;
    {
        qxUniqueTable& table = qxUniqueTable::get();
        const qxProcessGuard guard(table.lock());
        if (isEmpty() && !table.isFree(id)) {
            table.give(*this, table.entryOf(id));
            return true;
        }
        if (isEmpty()) name.format("Unique(%d)", id);
        if (table.enter(text, id, conflict)) {
            *this = text;
            return true;
        }
    }
    if (conflict.text.isEmpty()) return false;

    // Raised without the lock: a receiver of messages may make strings unique as well.
    if (conflict.isSameText)
        qxExceptionThrows::qxThrowFatal(
            "Bad unique string (\"%s\":%d). String already used with ID (\"%s\":%d)", text, id, conflict.text,
            conflict.id);
    qxExceptionThrows::qxThrowFatal("Bad unique string (\"%s\":%d). ID already used with string (\"%s\":%d)",
                                    text, id, conflict.text, conflict.id);
}

bool qxString::checkUnique()
{
    if (isUnique()) return true;
    if (isEmpty()) return false;
    qxUniqueTable& table = qxUniqueTable::get();
    const qxProcessGuard guard(table.lock());
    return table.findAndGive(*this);
}

qxUniqueString::qxUniqueString(const qxString& text, unsigned short id) : qxString(text)
{
    makeUnique(id);
}

qxUniqueString::qxUniqueString(unsigned short id)
{
    makeUnique(id);
}

unsigned short qxUniqueString::getNextFreeId()
{
    qxUniqueTable& table = qxUniqueTable::get();
    const qxProcessGuard guard(table.lock());
    return table.nextFreeId();
}

bool qxUniqueString::isFreeId(unsigned short id)
{
    if (id == 0) return false;
    qxUniqueTable& table = qxUniqueTable::get();
    const qxProcessGuard guard(table.lock());
    return table.isFree(id);
}

void qxUniqueString::cleanAllUniqueId()
{
    qxUniqueTable& table = qxUniqueTable::get();
    const qxProcessGuard guard(table.lock());
    table.clear();
}
