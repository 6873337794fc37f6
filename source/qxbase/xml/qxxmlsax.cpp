// SPDX-License-Identifier: see LICENSE

#include "qxxmlsax.h"

#include "qxmessage.h"
#include "qxserializeadapter.h"
#include "xml/qxxmlreader.h"
#include "xml/qxxmlsax_scan.h"
#include "xml/qxxmlwriter.h"

#include <string_view>

QX_DEFINE_ROOT_TYPE(qxXmlSax)

/// Prepares an object for reading, and leaves it in order whatever ends the reading.
class qxXmlSax::Reading
{
public:
    Reading(qxXmlSax& sax, qxSerializeAdapter* adapter) : m_sax(sax), m_wasUtf8(sax.isUsingUtf8())
    {
        sax.reset();
        sax.setAdapter(adapter);
        sax.setBusy(true);
        sax.m_errorCheck = 0;
        sax.m_documentType.clear();
        sax.setHistory(qxXmlReaderState::HISTORY);
        sax.m_flags &= static_cast<unsigned char>(~(FLAG_VALUE_BASE64 | FLAG_VALUE_HEX | FLAG_IN_ATTRIBUTE));
        sax.m_flags |= FLAG_NOTIFY;
        sax.reader().clear();
        sax.reader().isReading = true;
    }

    ~Reading() noexcept(false)
    {
        m_sax.reader().clear();
        m_sax.reader().isReading = false;
        m_sax.setHistory(m_sax.getMaxBufferSize());
        m_sax.setFlag(FLAG_NOTIFY, true);
        m_sax.setBusy(false);
        m_sax.setAdapter(nullptr);
        m_sax.useUtf8(m_wasUtf8); // a declaration may have switched it off
    }

    Reading(const Reading&) = delete;
    Reading& operator=(const Reading&) = delete;

private:
    qxXmlSax& m_sax;
    const bool m_wasUtf8;
};

qxXmlSax::qxXmlSax()
    : m_version("1.0"), m_encoding("UTF-8"), m_notifyMask(1013),
      m_flags(FLAG_STANDALONE | FLAG_PREFER_BASE64 | FLAG_NOTIFY), m_errorCheck(0)
{
    useUtf8(1);
    useErrorPlace(1);
    setFaultWarning(false); // the reader refuses such bytes, and says where
}

qxXmlSax::~qxXmlSax() noexcept(false) = default;

void qxXmlSax::read(qxSerializeAdapter* adapter)
{
    if (refuseWhenBusy()) return;
    bool isMalformed = false;
    {
        const Reading reading(*this, adapter);
        if (adapter && !hasProgressMessage())
            setProgressMessage(qxString::str("Reading XML data from %s", adapter->getName().left(60000)));
        try {
            XML_read_01();
        } catch (const qxParserException& exception) {
            isMalformed = exception.getErrorCode() != qxParserException::REFUSED;
            if (isMalformed && !hasError()) setErrorText(exception.getErrorString());
            if (m_reader->taker && m_reader->level() != 0) m_reader->giveAttributes();
        }
        reportProgressComplete();
    }
    if (isMalformed && !m_reader->isQuiet)
        qxMessage::messageText(qxMessage::getDefaultSender(), QX_LEVEL_WARNING, getError().getString());
}

unsigned int qxXmlSax::getCurrentElementLevel() const
{
    if (m_reader && m_reader->isReading) return m_reader->level();
    return m_writer ? m_writer->getLevel() : 0;
}

qxString qxXmlSax::getCurrentElementName() const
{
    return getElementName(getCurrentElementLevel());
}

qxString qxXmlSax::getElementName(unsigned int level) const
{
    if (level == 0 || level > getCurrentElementLevel()) return qxString();
    if (m_reader && m_reader->isReading) return m_reader->nameOf(m_reader->levels[level - 1]);
    return m_writer->getName(level);
}

qxString qxXmlSax::getCurrentAttribute(const qxString& name) const
{
    return getAttribute(getCurrentElementLevel(), name);
}

qxString qxXmlSax::getAttribute(unsigned int level, const qxString& name) const
{
    if (!hasAttribute(level, name)) return qxString();
    const std::size_t index = m_reader->findAttribute(level, name);
    const std::string_view value = m_reader->attributes.valueOf(index);
    return qxString(value.data(), value.size());
}

bool qxXmlSax::hasCurrentAttribute(const qxString& name) const
{
    return hasAttribute(getCurrentElementLevel(), name);
}

bool qxXmlSax::hasAttribute(unsigned int level, const qxString& name) const
{
    if (!m_reader || level == 0 || level > m_reader->level()) return false;
    return m_reader->findAttribute(level, name) != m_reader->endAttribute(level);
}

qxXmlAttributeSet qxXmlSax::getCurrentAttributeSet() const
{
    return getAttributeSet(getCurrentElementLevel());
}

qxXmlAttributeSet qxXmlSax::getAttributeSet(unsigned int level) const
{
    qxXmlAttributeSet set;
    if (!m_reader || level == 0 || level > m_reader->level()) return set;
    for (std::size_t i = m_reader->firstAttribute(level); i < m_reader->endAttribute(level); ++i) {
        const std::string_view name = m_reader->attributes.nameOf(i);
        const std::string_view value = m_reader->attributes.valueOf(i);
        set.enter(qxString(name.data(), name.size()),
                  new qxRefData<qxString>(qxString(value.data(), value.size())));
    }
    return set;
}

bool qxXmlSax::useBase64() const
{
    if (m_flags & FLAG_VALUE_HEX) return false;
    return (m_flags & (FLAG_VALUE_BASE64 | FLAG_PREFER_BASE64)) != 0;
}

unsigned char qxXmlSax::onVersion(const qxString&)
{
    return 1;
}

unsigned char qxXmlSax::onEncoding(const qxString&)
{
    return 1;
}

unsigned char qxXmlSax::onStandalone(unsigned char)
{
    return 1;
}

unsigned char qxXmlSax::onElementStart(const qxString&, unsigned int)
{
    return 1;
}

unsigned char qxXmlSax::onElementAttributeEnd(const qxString&, unsigned int)
{
    return 1;
}

unsigned char qxXmlSax::onElementContents(const qxString&, const qxString&, unsigned int)
{
    return 1;
}

unsigned char qxXmlSax::onElementContentsStart(const qxString&, unsigned int)
{
    return 1;
}

unsigned char qxXmlSax::onElementContentsEnd(const qxString&, unsigned int)
{
    return 1;
}

unsigned char qxXmlSax::onElementEnd(const qxString&, unsigned int)
{
    return 1;
}

unsigned char qxXmlSax::onAttribute(const qxString&, const qxString&, unsigned int)
{
    return 1;
}

unsigned char qxXmlSax::onCharData(const qxString&, unsigned int)
{
    return 1;
}

unsigned char qxXmlSax::onEntityReference(const qxString&, unsigned int, unsigned char)
{
    return 1;
}

unsigned char qxXmlSax::onProcessingInstruction(const qxString&, const qxString&, unsigned int)
{
    return 1;
}

unsigned char qxXmlSax::onCDATA(const qxString&, unsigned int)
{
    return 1;
}

unsigned char qxXmlSax::onComment(const qxString&, unsigned int)
{
    return 1;
}

unsigned char qxXmlSax::onDynamicType(const qxDynamicType&, const qxString&, unsigned int)
{
    return 1;
}

unsigned char qxXmlSax::onObject(qxObject*, const qxString&, unsigned int)
{
    return 1;
}

unsigned char qxXmlSax::onCustomData(qxReference*, const qxString&, unsigned int)
{
    return 1;
}

qxString qxXmlSax::onFunction(const qxString& argument, unsigned int)
{
    return argument;
}

unsigned char qxXmlSax::onWrite()
{
    return 1;
}
