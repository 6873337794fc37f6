// An optional name for objects.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxforward.h"
#include "qxmemory.h"
#include "qxstring.h"

/// A text that several objects have as their name and that goes with the last of them.
///
/// Threads: the count is a plain field, so the holders of one text are used by one thread at a time. A
///          permanent text is not counted and may be shared by all threads.
class qxSharedName final : public qxSharedMemory, public qxString
{
public:
    explicit qxSharedName(const qxString& text) : qxString(text), m_holders(0) {}
    qxSharedName(const char* text, std::size_t length) : qxString(text, length), m_holders(0) {}

    /// A copy has no holders yet.
    qxSharedName(const qxSharedName& other) : qxSharedMemory(), qxString(other), m_holders(0) {}
    qxSharedName& operator=(const qxSharedName&) = delete;

    void hold()
    {
        if (m_holders != PERMANENT) ++m_holders;
    }

    void release()
    {
        if (m_holders != PERMANENT && --m_holders == 0) delete this;
    }

    bool isPermanent() const { return m_holders == PERMANENT; }
    void makePermanent() { m_holders = PERMANENT; }

private:
    // Also where the count ends up after 4,294,967,295 holders: such a text merely stays.
    static constexpr unsigned int PERMANENT = 0xFFFFFFFF;

    unsigned int m_holders;
};

/// Gives a class an optional name that can be written to and read from a byte stream.
///
/// Threads: one object is used by one thread at a time.
class QX_API qxNameInterface
{
public:
    qxNameInterface() : m_name(nullptr) {}

    /// An empty name is no name.
    explicit qxNameInterface(const qxString& name) : m_name(nullptr) { setName(name); }
    qxNameInterface(const qxNameInterface& other);
    qxNameInterface& operator=(const qxNameInterface& other);

    virtual ~qxNameInterface() noexcept(false) // classes with this base may raise when they go
    {
        if (m_name) m_name->release();
    }

    void setName(const qxString& name);

    /// Empty when there is no name.
    qxString getName() const;
    bool hasName() const { return m_name != nullptr; }

    /// Bytes that write produces for names of up to 256 bytes: the length and a terminator.
    unsigned int getDataSize(qxSerializeAdapter* adapter) const;

    /// Writes at most 256 bytes of the name, whole characters, and a zero byte. Defined above the adapters.
    void write(qxSerializeAdapter* adapter) const;

    /// Reads up to a zero byte or the end of the data; keeps at most 256 bytes. Defined above the adapters.
    void read(qxSerializeAdapter* adapter);

protected:
    /// Shares `name` with its other holders.
    explicit qxNameInterface(qxSharedName* name) : m_name(name)
    {
        if (m_name) m_name->hold();
    }

    /// Null when there is no name.
    qxSharedName* getSharedName() const { return m_name; }

private:
    void take(qxSharedName* name);

    qxSharedName* m_name;
};
