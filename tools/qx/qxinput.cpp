// SPDX-License-Identifier: see LICENSE

#include "qxinput.h"

#include "qxoutput.h"
#include "qxusage.h"

#include "qxserializeadapterreplace.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>

namespace
{

/// A stream of the C library, read in blocks as they come: standard input, a pipe, a device.
class Stream : public qxSerializeAdapter
{
public:
    Stream(const std::string& name, std::FILE* stream) : m_stream(stream) { setName(name.c_str()); }

    ~Stream() noexcept(false) override
    {
        if (m_stream != stdin) std::fclose(m_stream);
    }

    unsigned char supportAction(qxSerializeAction action) override { return action == QX_SERIALIZE_INPUT; }
    const unsigned long long& getTotal() const { return m_total; }

protected:
    void write_imp(unsigned char*, unsigned int) override {} // never written
    void write_imp(unsigned char) override {}

    unsigned int read_imp(unsigned char* buffer, unsigned int count) override
    {
        unsigned int done = 0;
        while (done < count && fill()) {
            const unsigned int part = std::min(count - done, m_end - m_next);
            std::memcpy(buffer + done, m_bytes + m_next, part);
            m_next += part;
            done += part;
        }
        return done;
    }

    unsigned char read_imp() override { return fill() ? m_bytes[m_next++] : static_cast<unsigned char>(0); }
    qxUInt64 length_imp() override { return m_end - m_next; }
    unsigned char hasData_imp() override { return fill(); }

private:
    bool fill()
    {
        if (m_next < m_end) return true;
        m_next = 0;
        m_end = static_cast<unsigned int>(std::fread(m_bytes, 1, sizeof(m_bytes), m_stream));
        m_total += m_end;
        if (std::ferror(m_stream)) setError(qxString("Could not read '") + getName() + "'");
        return m_end > 0;
    }

    std::FILE* const m_stream;
    unsigned long long m_total = 0;
    unsigned int m_next = 0;
    unsigned int m_end = 0;
    unsigned char m_bytes[65536];
};

qxInput streamInput(const std::string& name, std::FILE* stream)
{
    Stream* const adapter = new Stream(name, stream);
    return {adapter, 0, &adapter->getTotal()};
}

} // namespace

qxInput openInput(const std::string& name)
{
    if (name == "-") return streamInput(name, stdin);
    if (name.empty()) throw qxUsageError("a file name is empty");
    // What is no ordinary file (a pipe, a device) tells no size. A directory is refused with its own text below.
    std::error_code ignored;
    if (!qxSerializeAdapterReplace::canReplace(name.c_str()) &&
        !std::filesystem::is_directory(name, ignored)) {
        std::FILE* const stream = std::fopen(name.c_str(), "rb");
        if (stream) return streamInput(name, stream);
    }
    qxInput input = {new qxSerializeAdapterFile(name.c_str())};
    checkInput(input);
    input.size = input.adapter->length();
    return input;
}

void checkInput(const qxInput& input)
{
    if (input.adapter->hasError()) throw qxFileError(input.adapter->getError().getString());
}

bool readBlock(const qxInput& input, std::string& block)
{
    block.resize(65536);
    unsigned int count = 0;
    if (input.adapter->hasData()) {
        const qxUInt64 there = std::clamp<qxUInt64>(input.adapter->length(), 1, block.size());
        count = input.adapter->read(reinterpret_cast<unsigned char*>(block.data()),
                                    static_cast<unsigned int>(there));
    }
    checkInput(input);
    block.resize(count);
    return count > 0;
}

std::string readAll(const std::string& name)
{
    const qxInput input = openInput(name);
    std::string bytes;
    for (std::string block; readBlock(input, block);) bytes += block;
    return bytes;
}
