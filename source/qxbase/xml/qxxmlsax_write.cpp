// SPDX-License-Identifier: see LICENSE

#include "qxxmlsax.h"

#include "qxserializeadapter.h"

#include "xml/qxxmlwriter.h"

#include <limits>
#include <vector>

namespace
{

std::string_view view(const qxString& text)
{
    return {text.getString(), text.length()};
}

// Takes a document as bytes in memory, or only counts them.
class Sink : public qxSerializeAdapter
{
public:
    explicit Sink(bool keeps) : m_keeps(keeps), m_count(0) {}

    const std::vector<unsigned char>& getBytes() const { return m_bytes; }
    qxUInt64 getCount() const { return m_count; }

protected:
    void write_imp(unsigned char* bytes, unsigned int count) override
    {
        m_count += count;
        if (m_keeps) m_bytes.insert(m_bytes.end(), bytes, bytes + count);
    }
    void write_imp(unsigned char byte) override { write_imp(&byte, 1); }
    unsigned char read_imp() override { return 0; }
    unsigned int read_imp(unsigned char*, unsigned int) override { return 0; }

private:
    bool m_keeps;
    qxUInt64 m_count;
    std::vector<unsigned char> m_bytes;
};

unsigned int clampToInt(qxUInt64 count)
{
    constexpr unsigned int MAX = std::numeric_limits<unsigned int>::max();
    return count > MAX ? MAX : static_cast<unsigned int>(count);
}

} // namespace

void qxXmlSax::write(qxSerializeAdapter* adapter)
{
    if (refuseWhenBusy()) return;
    struct Attachment {
        Attachment(qxXmlSax& owner, qxSerializeAdapter* to) : sax(owner)
        {
            sax.reset();
            sax.setAdapter(to);
            sax.setBusy(true);
        }
        ~Attachment() noexcept(false) // may let the last of an adapter go
        {
            sax.setBusy(false);
            sax.setAdapter(nullptr);
        }
        Attachment(const Attachment&) = delete;
        Attachment& operator=(const Attachment&) = delete;

        qxXmlSax& sax;
    };

    qxXmlWriterState& writer = qxXmlWriterState::of(*this);
    const Attachment attachment(*this, adapter);
    setFlag(FLAG_VALUE_BASE64, false);
    setFlag(FLAG_VALUE_HEX, false);
    writer.beginDocument();
    onWrite();
    writer.flush();
}

void qxXmlSax::pushBack(qxSerializeAdapter* adapter)
{
    Sink sink(true);
    write(&sink);
    const std::vector<unsigned char>& bytes = sink.getBytes();
    if (!bytes.empty()) adapter->pushBack(bytes.data(), clampToInt(bytes.size()));
}

unsigned int qxXmlSax::getDataSize(qxSerializeAdapter*)
{
    Sink sink(false);
    write(&sink);
    return clampToInt(sink.getCount());
}

void qxXmlSax::writeXmlHeader()
{
    qxXmlWriterState::of(*this).writeXmlHeader();
}

void qxXmlSax::writeElementStart(const qxString& name)
{
    qxXmlWriterState::of(*this).writeElementStart(view(name));
}

void qxXmlSax::writeAttribute(const qxString& name, const qxString& value)
{
    qxXmlWriterState::of(*this).writeAttribute(view(name), view(value), qxXmlWriterState::AS_MARKUP);
}

void qxXmlSax::writeCharData(const qxString& text)
{
    qxXmlWriterState::of(*this).writeCharData(view(text), qxXmlWriterState::AS_MARKUP);
}

void qxXmlSax::writeCharDataElement(const qxString& name, const qxString& text)
{
    qxXmlWriterState::of(*this).writeCharDataElement(view(name), view(text));
}

void qxXmlSax::writeCDATA(const qxString& text)
{
    qxXmlWriterState::of(*this).writeCDATA(view(text));
}

void qxXmlSax::writeComment(const qxString& text)
{
    qxXmlWriterState::of(*this).writeComment(view(text));
}

void qxXmlSax::writePI(const qxString& target, const qxString& data)
{
    qxXmlWriterState::of(*this).writePI(view(target), view(data));
}

void qxXmlSax::writeEntityReference(const qxString& name)
{
    qxXmlWriterState::of(*this).writeEntityReference(view(name));
}

void qxXmlSax::writeElementEnd()
{
    qxXmlWriterState::of(*this).writeElementEnd();
}

void qxXmlSax::writeGenericString(const qxString& text)
{
    qxXmlWriterState::of(*this).writeGenericString(view(text));
}

void qxXmlSax::beginElementContents()
{
    qxXmlWriterState::of(*this).beginElementContents();
}
