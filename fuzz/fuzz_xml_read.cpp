// Reads any bytes as XML: in one block and in pieces, which must make no difference.
// SPDX-License-Identifier: see LICENSE

#include "qxmessage.h"
#include "qxserializeadaptermemory.h"
#include "qxxmlsax.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace
{

void require(bool condition)
{
    if (!condition) std::abort();
}

/// Takes messages and drops them.
class Silence final : public qxMessageReceiverInterface
{
public:
    void onMessage(const qxString&, qxMessageLevel, const char*) override {}
};

/// A stream that hands out a few bytes at a time.
class Pieces final : public qxSerializeAdapter
{
public:
    Pieces(const std::vector<unsigned char>& bytes, unsigned int size) : m_bytes(bytes), m_size(size) {}

protected:
    using qxSerializeAdapter::write_imp;
    void write_imp(unsigned char) override {}
    unsigned char read_imp() override { return m_bytes[m_next++]; }
    unsigned int read_imp(unsigned char* buffer, unsigned int count) override
    {
        const auto taken = static_cast<unsigned int>(std::min<std::size_t>(count, m_bytes.size() - m_next));
        std::memcpy(buffer, m_bytes.data() + m_next, taken);
        m_next += taken;
        return taken;
    }
    qxUInt64 length_imp() override { return std::min<std::size_t>(m_size, m_bytes.size() - m_next); }

private:
    const std::vector<unsigned char>& m_bytes;
    std::size_t m_next = 0;
    const std::size_t m_size;
};

/// Writes every call down and checks that starts and ends match.
class Log final : public qxXmlSax
{
public:
    Log()
    {
        enableNotifyItemType(4095);
        keepDocumentType(true);
    }

    std::string text;
    unsigned int level = 0;

    unsigned char onVersion(const qxString& version) override { return add('v', 0, version); }
    unsigned char onEncoding(const qxString& encoding) override { return add('e', 0, encoding); }
    unsigned char onStandalone(unsigned char standalone) override { return add('s', standalone); }
    unsigned char onElementStart(const qxString& name, unsigned int at) override
    {
        require(at == ++level && getCurrentElementName() == name);
        return add('<', at, name);
    }
    unsigned char onElementAttributeEnd(const qxString& name, unsigned int at) override
    {
        return add('|', at, name);
    }
    unsigned char onElementContents(const qxString& name, const qxString& contents, unsigned int at) override
    {
        return add('c', at, name, contents);
    }
    unsigned char onElementContentsStart(const qxString& name, unsigned int at) override
    {
        return add('(', at, name);
    }
    unsigned char onElementContentsEnd(const qxString& name, unsigned int at) override
    {
        return add(')', at, name);
    }
    unsigned char onElementEnd(const qxString& name, unsigned int at) override
    {
        require(at == level-- && getElementName(at) == name);
        return add('>', at, name);
    }
    unsigned char onAttribute(const qxString& name, const qxString& value, unsigned int at) override
    {
        require(getCurrentAttribute(name) == value);
        return add('=', at, name, value);
    }
    unsigned char onCharData(const qxString& characters, unsigned int at) override
    {
        return add('t', at, characters);
    }
    unsigned char onEntityReference(const qxString& name, unsigned int at, unsigned char inAttribute) override
    {
        return add(inAttribute ? 'a' : '&', at, name);
    }
    unsigned char onProcessingInstruction(const qxString& target, const qxString& data,
                                          unsigned int at) override
    {
        return add('?', at, target, data);
    }
    unsigned char onCDATA(const qxString& characters, unsigned int at) override
    {
        return add('[', at, characters);
    }
    unsigned char onComment(const qxString& comment, unsigned int at) override
    {
        return add('-', at, comment);
    }

    /// Reads, and adds how it ended.
    void readAll(qxSerializeAdapter& adapter)
    {
        read(&adapter);
        require(hasError() || level == 0);
        add('!', getErrorLine() * 1000 + getErrorColumn(), getError(), getDocumentType());
        require(adapter.getRef() == 0);
    }

private:
    unsigned char add(char kind, unsigned int number, const qxString& first = qxString(),
                      const qxString& second = qxString())
    {
        text += kind + std::to_string(number);
        text.append(first.getString(), first.length());
        text += '\0';
        text.append(second.getString(), second.length());
        text += '\n';
        return 1;
    }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count)
{
    static Silence* const silence = [] {
        auto* const made = new Silence;
        qxMessage::addMessageReceiver(made);
        return made;
    }();
    require(silence != nullptr);

    std::vector<unsigned char> document(bytes, bytes + count);
    qxSerializeAdapterMemory memory(document.data(), static_cast<unsigned int>(count));
    Log whole;
    whole.readAll(memory);

    const unsigned int size = count == 0 ? 1 : 1 + bytes[count / 2] % 8;
    Pieces pieces(document, size);
    Log cut;
    cut.readAll(pieces);
    require(whole.text == cut.text);
    require(memory.length() == 0 || whole.hasError());
    return 0;
}
