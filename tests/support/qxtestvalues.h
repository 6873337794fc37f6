// What the tests of values on byte streams share.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxserializeadaptermemory.h"
#include "qxserializedata.h"

#include "qxteststream.h"

#include <gtest/gtest.h>

#include <string>

/// The flags of numbers: least, then most significant byte first.
inline constexpr unsigned char BYTE_ORDERS[] = {0, 1};

/// "80 01" for two bytes.
inline std::string toHex(const std::string& bytes)
{
    std::string text;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        if (!text.empty()) text += ' ';
        text += {"0123456789ABCDEF"[byte >> 4], "0123456789ABCDEF"[byte & 15]};
    }
    return text;
}

inline std::string fromHex(const std::string& text)
{
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); i += 3)
        bytes += static_cast<char>(std::stoi(text.substr(i, 2), nullptr, 16));
    return bytes;
}

/// A block of memory as a stream whose window is open already: nothing in front of it goes through a virtual call.
class LentBlock
{
public:
    explicit LentBlock(const std::string& content)
        : m_block("x" + content), stream(m_block.data(), static_cast<unsigned int>(m_block.size()))
    {
        stream.read();
    }

    /// The bytes written so far.
    std::string written() const { return m_block.substr(1, stream.getCurrentPos() - 1); }

private:
    std::string m_block;

public:
    qxSerializeAdapterMemory stream;
};

/// What `data` writes, in hexadecimal. To a stream of single bytes, to memory and when it is given back it is the same.
inline std::string wireOf(qxSerializeData& data)
{
    TestStream single;
    data.write(&single);

    LentBlock lent(std::string(single.written.size(), '?')); // just large enough
    data.write(&lent.stream);
    EXPECT_EQ(toHex(lent.written()), toHex(single.written));
    EXPECT_FALSE(lent.stream.hasError());

    for (const unsigned char mode : PUSH_BACK_MODES) {
        TestBlock target("rest");
        target.setPushBackMode(mode);
        data.pushBack(&target);
        EXPECT_EQ(toHex(readAll(target)), toHex(single.written + "rest"));
    }
    return toHex(single.written);
}

/// Calls `read` with a stream of each kind that holds `bytes`.
template <class Read>
void forEachStream(const std::string& bytes, Read&& read)
{
    {
        SCOPED_TRACE("single bytes");
        TestStream stream(bytes);
        read(stream);
    }
    {
        SCOPED_TRACE("memory");
        std::string block = bytes;
        qxSerializeAdapterMemory stream(block.data(), static_cast<unsigned int>(block.size()));
        read(stream);
    }
    {
        SCOPED_TRACE("lent memory");
        LentBlock lent(bytes);
        read(lent.stream);
    }
    {
        SCOPED_TRACE("the first byte given back");
        LentBlock lent(bytes.empty() ? bytes : bytes.substr(1));
        pushBackText(lent.stream, bytes.substr(0, 1));
        read(lent.stream);
    }
}
