// Values of dynamic types, objects and custom data: the productions of the library's own, and how they are written.
// SPDX-License-Identifier: see LICENSE

#include "qxarray.h"
#include "qxdynamictype.h"
#include "qxmessage.h"
#include "qxobject.h"
#include "qxserializeadaptermemory.h"
#include "qxxmlhandlers.h"
#include "serialize/qxcuttext.h"
#include "xml/qxxmlreferences.h"
#include "xml/qxxmlvaluereader.h"
#include "xml/qxxmlvaluewriter.h"

#include <algorithm>

namespace
{

constexpr unsigned int LONGEST_NAME = 30000; // bytes of a name in a message

std::string_view view(const qxString& text)
{
    return {text.getString(), text.length()};
}

/// The handler of the name, or that of the element.
template <class Handler>
Handler* findHandler(Handler* (*find)(const qxString&), const qxString& name, const qxString& element)
{
    Handler* const own = find(name);
    return own ? own : find(element);
}

/// The name that the innermost open element gives the value in it: that of an attribute, or its own.
qxString nameOfValue(qxXmlReaderState& state)
{
    qxXmlAttributeText name = {QX_XML_NAME};
    std::string value;
    for (std::size_t i = state.firstAttribute(state.level()); i < state.endAttribute(state.level()); ++i) {
        value.clear();
        qxXmlDecodeReferences(state.attributes.valueOf(i), value);
        name.take(state.attributes.nameOf(i), value);
    }
    if (!name.isThere || name.isFaulty || name.text.size() > qxString::MAX_LENGTH)
        return state.nameOf(state.levels.back());
    return {name.text.data(), name.text.size()};
}

} // namespace

/// Reads on without calls to anybody. What was read can be given back as long as it is held.
class qxXmlSax::Attempt
{
public:
    explicit Attempt(qxXmlSax& sax)
        : m_sax(sax), m_state(sax.reader()), m_taker(m_state.taker), m_start(sax.getTokenPos()),
          m_level(m_state.level()), m_flags(sax.m_flags)
    {
        m_state.isTrying = true;
        m_state.taker = nullptr;
        sax.setFlag(FLAG_NOTIFY, false);
        sax.setHistory(std::max(sax.getMaxBufferSize(), qxXmlReaderState::HISTORY));
    }

    ~Attempt()
    {
        m_state.isTrying = false;
        m_state.tryEnd = qxXmlReaderState::NOT_KEPT;
        m_state.taker = m_taker;
        m_sax.m_flags = m_flags;
        if (!m_sax.isNotifyingItemType(QX_XML_ELEMENT_CONTENTS)) m_sax.setHistory(qxXmlReaderState::HISTORY);
    }

    Attempt(const Attempt&) = delete;
    Attempt& operator=(const Attempt&) = delete;

    /// False when it is no longer held, and nothing has changed.
    bool giveBack()
    {
        if (m_start < m_sax.m_view.bufferPos) return false;
        while (m_state.level() > m_level) m_state.pop();
        m_state.isAttributePending = false;
        m_sax.m_view.current = m_sax.tokenAt(m_start);
        if (m_sax.hasError()) m_sax.setErrorText(qxString());
        m_sax.m_errorCheck = 0;
        return true;
    }

private:
    qxXmlSax& m_sax;
    qxXmlReaderState& m_state;
    qxXmlContentTaker* const m_taker;
    const qxUInt64 m_start;
    const unsigned int m_level;
    const unsigned char m_flags;
};

qxParseResult qxXmlSax::XML_read_91()
{
    qxXmlReaderState& state = reader();
    if (!state.mayTry()) return QX_PARSE_NO_MATCH;
    const qxString name = nameOfValue(state);
    const qxString element = state.nameOf(state.levels.back());
    auto* const handler = findHandler(&getDynamicTypeInterface, name, element);
    qxDynamicType value;
    const auto take = [&](qxSerializeAdapter& content) {
        return handler->readDynamicType(*this, content, value);
    };
    if ((!handler || !offerContent(take)) && !readValue(value)) return QX_PARSE_NO_MATCH;
    if (m_flags & FLAG_NOTIFY) goOn(onDynamicType(value, name, state.level()));
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_92()
{
    qxXmlReaderState& state = reader();
    const qxString name = nameOfValue(state);
    auto* const handler = findHandler(&getObjectInterface, name, state.nameOf(state.levels.back()));
    if (!handler || !state.mayTry()) return QX_PARSE_NO_MATCH;
    qxRefPointer<qxObject> object;
    const auto take = [&](qxSerializeAdapter& content) {
        object = handler->readObject(*this, content);
        return object.get() != nullptr;
    };
    if (!offerContent(take)) return QX_PARSE_NO_MATCH;
    if (m_flags & FLAG_NOTIFY) goOn(onObject(object, name, state.level()));
    return QX_PARSE_OK;
}

qxParseResult qxXmlSax::XML_read_93()
{
    if (!hasCustomDataInterface()) return QX_PARSE_NO_MATCH; // nearly always; the name needs no string then
    qxXmlReaderState& state = reader();
    auto* const handler = getCustomDataInterface(state.nameOf(state.levels.back()));
    if (!handler || !state.mayTry()) return QX_PARSE_NO_MATCH;
    const qxString name = state.nameOf(state.levels.back());
    qxRefPointer<qxReference> data;
    const auto take = [&](qxSerializeAdapter& content) {
        data = handler->readCustomData(*this, content);
        return data.get() != nullptr;
    };
    if (!offerContent(take)) return QX_PARSE_NO_MATCH;
    if (m_flags & FLAG_NOTIFY) goOn(onCustomData(data, name, state.level()));
    return QX_PARSE_OK;
}

/// Reads the value of the element that was just opened, up to its end tag; false when there is none.
bool qxXmlSax::readValue(qxDynamicType& value)
{
    qxXmlReaderState& state = reader();
    Attempt attempt(*this);
    qxXmlValueReader values(*this);
    const char* fault = nullptr; // null too where the syntax is wrong
    try {
        qxXmlValueHead head;
        fault = head.read(state, (m_flags & FLAG_PREFER_BASE64) != 0);
        if (!fault && values.read(head, value)) return true;
        if (!fault) fault = values.getFault();
        if (state.wantsFault && !state.fault.expected) state.fault = {fault, getLine(), getColumn()};
    } catch (const qxParserException&) {
        if (!attempt.giveBack()) throw;
    }
    if (fault && !attempt.giveBack()) failValue(fault);
    if (values.hasLookedDeep()) state.refuse();
    return false;
}

/// Fails in a value that is too long to be read as something else.
void qxXmlSax::failValue(const char* expected)
{
    m_errorCheck = 0;
    setError("A value of a dynamic type is malformed: expected %s", expected);
    throw qxParserException(getError(), qxParserException::SYNTAX);
}

/// Gives `take` what stands between the tags of the element that was just opened, as UTF-8. When it does not want that,
/// and when there is too much of it, the answer is false and the content is there still.
template <class Take>
bool qxXmlSax::offerContent(Take&& take)
{
    qxXmlReaderState& state = reader();
    Hold hold(*this);
    qxArray<unsigned char> bytes;
    if (state.hasContent && !takeContent(bytes)) return false;
    unsigned char nothing = 0;
    qxSerializeAdapterMemory content(bytes.entries() == 0 ? &nothing : bytes.getData(), bytes.entries());
    if (take(content)) return true;
    hold.rewind();
    if (state.hasContent) state.refuse();
    return false;
}

/// Reads up to the end tag of the element that was just opened and gives what stood there; false, with nothing taken,
/// when that is malformed or too long. The caller holds it.
bool qxXmlSax::takeContent(qxArray<unsigned char>& bytes)
{
    const qxUInt64 start = getTokenPos();
    Attempt attempt(*this);
    reader().tryEnd = start + getMaxBufferSize();
    try {
        XML_read_43();
        const qxUInt64 count = getTokenPos() - start;
        if (XML_read_Test_ETag() == QX_PARSE_OK && count <= getMaxBufferSize())
            return getTokenData(start, static_cast<unsigned int>(count), bytes);
    } catch (const qxParserException&) {
        // what is wrong will be met again
    }
    attempt.giveBack();
    return false;
}

void qxXmlSax::putDynamicType(const qxDynamicType& value, const qxString& name)
{
    qxXmlWriterState& writer = qxXmlWriterState::of(*this);
    writer.runBatch([&] {
        const bool isElement = useDynOnly() && writer.canHoldName(view(name));
        const qxString element = isElement ? name : qxString("qxDyn");
        qxXmlValueWriter values(writer, useBase64());
        writer.writeElementStart(view(element));
        if (name != element) values.putName(view(name));
        const unsigned int level = writer.getLevel();
        auto* const handler = findHandler(&getDynamicTypeInterface, name, element);
        if (!handler || !handler->writeDynamicType(*this, value)) values.put(value);
        while (writer.getLevel() >= level) writer.writeElementEnd();
    });
}

void qxXmlSax::putObject(qxObject* object, const qxString& name)
{
    qxXmlWriterState& writer = qxXmlWriterState::of(*this);
    writer.runBatch([&] {
        const qxString element = "qxObj";
        writer.writeElementStart(view(element));
        if (name != element) qxXmlValueWriter(writer, useBase64()).putName(view(name));
        const unsigned int level = writer.getLevel();
        auto* const handler = findHandler(&getObjectInterface, name, element);
        if (handler && object)
            handler->writeObject(*this, *object);
        else if (object)
            qxMessage::message(QX_LEVEL_WARNING, "No interface is registered for the object '%s'",
                               qxCutText(name, LONGEST_NAME));
        while (writer.getLevel() >= level) writer.writeElementEnd();
    });
}

void qxXmlSax::writeCustomData(const qxString& name, qxReference* data, unsigned char isOpen)
{
    qxXmlWriterState& writer = qxXmlWriterState::of(*this);
    writer.runBatch([&] {
        if (!isOpen) writer.writeElementStart(view(name));
        const unsigned int level = writer.getLevel();
        auto* const handler = getCustomDataInterface(name);
        if (handler && data)
            handler->writeCustomData(*this, *data);
        else if (data)
            qxMessage::message(QX_LEVEL_WARNING, "No interface is registered for the custom data '%s'",
                               qxCutText(name, LONGEST_NAME));
        while (writer.getLevel() > level) writer.writeElementEnd();
        if (!isOpen) writer.writeElementEnd();
    });
}
