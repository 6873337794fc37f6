// SPDX-License-Identifier: see LICENSE

#include "qxinput.h"

#include "qxoutput.h"
#include "qxreport.h"
#include "qxusage.h"

#include "qxserializeadapterreplace.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>

namespace
{

/// Standard input, a pipe or a device, in blocks as they come, and counted.
class Stream : public qxSerializeAdapter
{
public:
    Stream(const std::string& name, const qxRefPointer<qxSerializeAdapter>& source) : m_source(source)
    {
        setName(name.c_str());
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
    // Who reads may wait long: what was found so far is shown first, and the interrupt key need not wait too.
    bool fill()
    {
        if (m_next < m_end) return true;
        std::fflush(stdout);
        const qxQuickEnd quickEnd("");
        m_next = m_end = 0;
        if (m_source->hasData()) {
            const qxUInt64 there = std::clamp<qxUInt64>(m_source->length(), 1, sizeof(m_bytes));
            m_end = m_source->read(m_bytes, static_cast<unsigned int>(there));
        }
        m_total += m_end;
        if (m_source->hasError()) setError(qxString("Could not read '") + getName() + "'");
        return m_end > 0;
    }

    const qxRefPointer<qxSerializeAdapter> m_source;
    unsigned long long m_total = 0;
    unsigned int m_next = 0;
    unsigned int m_end = 0;
    unsigned char m_bytes[65536];
};

qxInput openStream(const std::string& name, const std::string& url)
{
    const qxRefPointer<qxSerializeAdapter> source = qxSerializeAdapter::getURLAdapter(url.c_str());
    if (!source) throw qxFileError("Could not read '" + name + "'");
    Stream* const adapter = new Stream(name, source);
    return {adapter, 0, &adapter->getTotal()};
}

} // namespace

qxInput openInput(const std::string& name)
{
    if (name == "-") return openStream(name, "con:");
    if (name.empty()) throw qxUsageError("a file name is empty");
    // What is no ordinary file (a pipe, a device) tells no size. A directory is refused with its own text below.
    std::error_code ignored;
    if (!qxSerializeAdapterReplace::canReplace(name.c_str()) && std::filesystem::exists(name, ignored) &&
        !std::filesystem::is_directory(name, ignored))
        return openStream(name, "file:" + name + "?is=input"); // only the last "?" of a URL begins attributes
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
