// SPDX-License-Identifier: see LICENSE

#include "qxxmldom.h"

#include "qxserializeadapter.h"

#include "xml/qxxmlincluder.h"
#include "xml/qxxmlreferences.h"
#include "xml/qxxmlsax_scan.h"
#include "xml/qxxmltreebuilder.h"

#include <string>
#include <string_view>
#include <typeinfo>

QX_DEFINE_TYPE(qxXmlDom, qxXmlItem)

namespace
{

std::string_view view(const qxString& text)
{
    return {text.getString(), text.length()};
}

} // namespace

qxXmlDom::qxXmlDom()
    : qxXmlItem(nullptr, DOCUMENT), m_skipWhiteSpaceCharData(true), m_writeIncludedXml(false),
      m_readIncludedXml(true), m_mergeStandardReferences(true), m_keepMixedContent(false), m_includer(nullptr)
{
    keepDocumentType(true);
}

qxXmlDom::~qxXmlDom() noexcept(false) = default;

qxXmlDom* qxXmlDom::clone() const
{
    std::unique_ptr<qxXmlDom> copy(new qxXmlDom);
    copy->copySettings(*this);
    copy->setCopyMode(getCopyMode());
    copy->qxNameInterface::operator=(*this);
    copy->setVersion(getVersion());
    copy->setEncoding(getEncoding());
    copy->setStandalone(isStandalone());
    copy->setPlainOutput(isPlainOutput());
    copy->setDocumentType(getDocumentType());
    copy->cloneChildren(*this);
    return copy.release();
}

// What decides how a document is read and written.
void qxXmlDom::copySettings(const qxXmlDom& other)
{
    m_skipWhiteSpaceCharData = other.m_skipWhiteSpaceCharData;
    m_writeIncludedXml = other.m_writeIncludedXml;
    m_readIncludedXml = other.m_readIncludedXml;
    m_mergeStandardReferences = other.m_mergeStandardReferences;
    m_keepMixedContent = other.m_keepMixedContent;
    setMaxBufferSize(other.getMaxBufferSize());
    useDynOnly(other.useDynOnly());
    setFlag(FLAG_PREFER_BASE64, (other.m_flags & FLAG_PREFER_BASE64) != 0);
    for (qxXmlItemType type = QX_XML_ELEMENT; type <= QX_XML_CONTENTS_END; type *= 2) {
        if (other.isNotifyingItemType(type))
            enableNotifyItemType(type);
        else
            disableNotifyItemType(type);
    }
}

void qxXmlDom::read(qxSerializeAdapter* adapter)
{
    if (refuseWhenBusy()) return;
    // Nobody but this class looks at the tree while it grows, or adds to it: text can be joined at once.
    const bool isAlone = m_hasNoOwnItems || typeid(*this) == typeid(qxXmlDom);
    const bool joins = m_mergeStandardReferences && isAlone;
    constexpr qxXmlItemType TAKEN = QX_XML_ELEMENT | QX_XML_ATTRIBUTE | QX_XML_CHARDATA;
    qxXmlIncluder outermost(adapter);
    struct Building {
        Building(qxXmlDom& dom, bool joinsText, qxXmlIncluder& includer)
            : document(dom), isOutermost(!dom.m_includer)
        {
            document.m_builder =
                std::make_unique<qxXmlTreeBuilder>(document, joinsText, document.m_skipWhiteSpaceCharData);
            if (isOutermost) document.m_includer = &includer;
        }
        ~Building()
        {
            document.reader().taker = nullptr;
            document.m_builder.reset();
            if (isOutermost) document.m_includer = nullptr;
        }
        Building(const Building&) = delete;
        Building& operator=(const Building&) = delete;

        qxXmlDom& document;
        bool isOutermost;
    };

    removeChildren();
    {
        const Building building(*this, joins, outermost);
        if (isAlone && isNotifyingItemType(TAKEN)) reader().taker = m_builder.get();
        qxXmlSax::read(adapter);
    }
    if (m_mergeStandardReferences && !joins) mergeStandardReferencesAndText();
}

void qxXmlDom::write(qxXmlSax* writer)
{
    // Without this, indentation would become text of the document when it is read again.
    struct PlainOutput {
        PlainOutput(qxXmlSax& sax, bool plain) : output(sax), was(sax.isPlainOutput())
        {
            if (plain) output.setPlainOutput(true);
        }
        ~PlainOutput() { output.setPlainOutput(was); }
        PlainOutput(const PlainOutput&) = delete;
        PlainOutput& operator=(const PlainOutput&) = delete;

        qxXmlSax& output;
        bool was;
    };

    const PlainOutput plain(*writer, !m_skipWhiteSpaceCharData && !m_keepMixedContent);
    qxXmlItem::write(writer);
}

unsigned char qxXmlDom::onElementStart(const qxString& name, unsigned int level)
{
    builder().openElement(view(name), level);
    return 1;
}

unsigned char qxXmlDom::onElementEnd(const qxString&, unsigned int level)
{
    builder().closeElement(level);
    return 1;
}

unsigned char qxXmlDom::onAttribute(const qxString& name, const qxString& value, unsigned int level)
{
    builder().setAttribute(name, view(value), level);
    return 1;
}

unsigned char qxXmlDom::onCharData(const qxString& text, unsigned int level)
{
    builder().addText(m_skipWhiteSpaceCharData ? qxStripXmlSpace(view(text)) : view(text), level);
    return 1;
}

unsigned char qxXmlDom::onEntityReference(const qxString& name, unsigned int level, unsigned char inAttribute)
{
    if (name.isEmpty() || inAttribute) return 1;
    std::string text;
    if (m_mergeStandardReferences && qxXmlAppendReference(view(name), text))
        builder().addText(text, level);
    else
        builder().addItem(new qxXmlEntityReference(name), level);
    return 1;
}

unsigned char qxXmlDom::onProcessingInstruction(const qxString& target, const qxString& data,
                                                unsigned int level)
{
    if (m_readIncludedXml && view(target) == "include") {
        qxXmlIncluder single(getAdapter());
        if ((m_includer ? *m_includer : single).include(*this, data, level)) return 1;
    }
    builder().addItem(new qxXmlPI(target, data), level);
    return 1;
}

unsigned char qxXmlDom::onCDATA(const qxString& text, unsigned int level)
{
    builder().addItem(new qxXmlCDATA(text), level);
    return 1;
}

unsigned char qxXmlDom::onComment(const qxString& text, unsigned int level)
{
    builder().addItem(new qxXmlComment(text), level);
    return 1;
}

unsigned char qxXmlDom::onDynamicType(const qxDynamicType& value, const qxString& name, unsigned int level)
{
    builder().replaceElement(new qxXmlDynamicType(name, value), level);
    return 1;
}

unsigned char qxXmlDom::onObject(qxObject* object, const qxString& name, unsigned int level)
{
    builder().replaceElement(new qxXmlObject(name, object), level);
    return 1;
}

unsigned char qxXmlDom::onCustomData(qxReference* data, const qxString& name, unsigned int level)
{
    builder().replaceElement(new qxXmlCustomData(name, data), level);
    return 1;
}

unsigned char qxXmlDom::onWrite()
{
    write(static_cast<qxXmlSax*>(this));
    return 1;
}

// Also for callbacks that are called by something else than read.
qxXmlTreeBuilder& qxXmlDom::builder()
{
    if (!m_builder) m_builder = std::make_unique<qxXmlTreeBuilder>(*this, false, false);
    return *m_builder;
}
