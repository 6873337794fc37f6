// The smallest adapter, for tests of what the base class adds.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxserializeadapter.h"

#include <string>

/// Of qxSerializeAdapter::setPushBackMode.
inline constexpr unsigned char PUSH_BACK_MODES[] = {0, 1};

/// A stream that has only the one-byte operations and says whether a byte is left.
class TestStream : public qxSerializeAdapter
{
public:
    explicit TestStream(std::string text = {}) : content(std::move(text)) {}

    std::string content; // what is still to be read
    std::string written;

protected:
    using qxSerializeAdapter::read_imp;
    using qxSerializeAdapter::write_imp;

    void write_imp(unsigned char byte) override { written += static_cast<char>(byte); }
    unsigned char read_imp() override
    {
        if (content.empty()) return 0xEE;
        const char byte = content.front();
        content.erase(0, 1);
        return static_cast<unsigned char>(byte);
    }
    unsigned char hasData_imp() override { return !content.empty(); }
};

/// The same stream, which knows how much is left.
class TestBlock : public TestStream
{
public:
    using TestStream::TestStream;

protected:
    qxUInt64 length_imp() override { return content.size(); }
};

/// An `Adapter` that decodes its bytes, which the base must therefore not read past it.
template <class Adapter>
class InvertedStream final : public Adapter
{
public:
    using Adapter::Adapter;

protected:
    using Adapter::read_imp;
    unsigned char read_imp() override { return static_cast<unsigned char>(~Adapter::read_imp()); }
};

/// Reads up to `count` bytes in one block.
inline std::string readBlock(qxSerializeAdapter& adapter, unsigned int count)
{
    std::string bytes(count, '\0');
    bytes.resize(adapter.read(reinterpret_cast<unsigned char*>(bytes.data()), count));
    return bytes;
}

/// Reads byte by byte until there is no more data.
inline std::string readAll(qxSerializeAdapter& adapter)
{
    std::string bytes;
    while (adapter.hasData()) bytes += static_cast<char>(adapter.read());
    return bytes;
}

/// Writes a text as one block.
inline void writeText(qxSerializeAdapter& adapter, const std::string& text)
{
    adapter.write(text.data(), static_cast<unsigned int>(text.size()));
}

/// Gives a text back as one block.
inline void pushBackText(qxSerializeAdapter& adapter, const std::string& text)
{
    adapter.pushBack(reinterpret_cast<const unsigned char*>(text.data()),
                     static_cast<unsigned int>(text.size()));
}
