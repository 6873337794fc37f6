// Dynamic values as XML documents of their own.
// SPDX-License-Identifier: see LICENSE

#include "qxdynamictypes.h"

#include "qxmessage.h"
#include "qxserializeadaptermemory.h"
#include "xml/qxxmlvalueform.h"
#include "xml/qxxmlvaluereader.h"
#include "xml/qxxmlvaluewriter.h"

namespace
{

/// Writes one value.
class ValueWriter final : public qxXmlSax
{
public:
    ValueWriter(const qxDynamicType& value, const qxString& name) : m_value(value), m_name(name)
    {
        setEncoding("none");
        setPlainOutput(true);
    }

    unsigned char onWrite() override
    {
        writeDynamicType(m_value, m_name);
        return 1;
    }

private:
    const qxDynamicType& m_value;
    const qxString m_name;
};

class TextSink final : public qxSerializeAdapter
{
public:
    std::string text;

protected:
    using qxSerializeAdapter::read_imp;
    void write_imp(unsigned char* bytes, unsigned int count) override
    {
        text.append(reinterpret_cast<const char*>(bytes), count);
    }
    void write_imp(unsigned char byte) override { text += static_cast<char>(byte); }
    unsigned char read_imp() override { return 0; }
};

} // namespace

/// Reads one value.
class qxXmlValueDocument final : public qxXmlSax
{
public:
    qxXmlValueDocument()
    {
        useDynOnly(true);
        useProgress(0);
        reader().isQuiet = true;
        reader().wantsFault = true;
    }

    unsigned char onDynamicType(const qxDynamicType& value, const qxString&, unsigned int level) override
    {
        if (level != 1) return 1; // in an element that is no value
        m_value = value;
        m_isThere = true;
        return 1;
    }

    bool take(qxDynamicType& value) const
    {
        if (!m_isThere || hasError()) return false;
        value = m_value;
        return true;
    }

    qxString describeFault()
    {
        const qxXmlReaderState::Fault& fault = reader().fault;
        const char* const expected = qxXmlCheckText(getErrorCheck());
        if (expected) return describe(expected, getErrorLine(), getErrorColumn());
        if (fault.expected) return describe(fault.expected, fault.line, fault.column);
        return qxString::str("qxDynamicType::fromXML: %s", getError().left(MOST));
    }

private:
    static constexpr unsigned int MOST = 60000; // bytes of an error that an error text quotes

    static qxString describe(const char* expected, unsigned int line, unsigned int column)
    {
        const qxString text = qxMessage::translate(qxMessage::getDefaultSender(), expected);
        return qxString::str("qxDynamicType::fromXML: expected %s at (Line:%d,Col:%d)", text, line, column);
    }

    qxDynamicType m_value;
    bool m_isThere = false;
};

std::string qxXmlValueText(const qxDynamicType& value, const qxString& name)
{
    ValueWriter writer(value, name);
    TextSink sink;
    writer.write(&sink);
    return std::move(sink.text);
}

qxString qxDynamicType::asXML() const
{
    const std::string text = qxXmlValueText(*this, "qxDyn");
    return {text.data(), text.size()};
}

void qxDynamicType::asXML(qxSerializeAdapter* adapter) const
{
    ValueWriter(*this, "qxDyn").write(adapter);
}

qxDynamicType qxDynamicType::fromXML(const qxString& text, bool* ok, bool isSilent)
{
    std::string bytes(text.getString(), text.length());
    qxSerializeAdapterMemory adapter(bytes.data(), static_cast<unsigned int>(bytes.size()));
    return fromXML(&adapter, ok, isSilent);
}

qxDynamicType qxDynamicType::fromXML(qxSerializeAdapter* adapter, bool* ok, bool isSilent)
{
    qxXmlValueDocument document;
    document.qxXmlSax::read(adapter);
    qxDynamicType value;
    const bool isValue = document.take(value);
    if (ok) *ok = isValue;
    if (isValue) return value;
    const qxString fault = document.describeFault();
    if (!isSilent) qxMessage::messageText(qxMessage::getDefaultSender(), QX_LEVEL_WARNING, fault.getString());
    return qxDynamicTypeError(fault);
}
