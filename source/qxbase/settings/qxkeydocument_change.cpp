// SPDX-License-Identifier: see LICENSE

#include "settings/qxkeydocument.h"

#include "qxerror.h"

#include "settings/qxkeyitems.h"
#include "settings/qxkeynames.h"

namespace
{

constexpr unsigned int MOST_DOUBLES = 100; // elements of one way whose values hide each other
constexpr std::size_t MOST_INDENTATION = 256;

bool isIncluded(const qxXmlItem* item)
{
    for (; item; item = item->getParent())
        if (qxXmlTree::getInclude(*item) != 0) return true;
    return false;
}

qxXmlItem* siblingBefore(const qxXmlItem& item)
{
    qxXmlItem* before = nullptr;
    for (qxXmlItem* child = item.getParent()->getFirstChild(); child != &item;
         child = child->getNextSibling())
        before = child;
    return before;
}

// Appends an element on a line of its own where the lines of the document are laid out so.
void appendElement(qxXmlItem& parent, qxXmlElement* element)
{
    qxXmlItem* const last = parent.getLastChild();
    const bool isLaidOut = qxIsBlank(last);
    std::string end = "\n"; // what stands before the end of the parent
    if (isLaidOut) {
        end = qxXmlTree::getText(*last);
    } else if (parent.getParent() && parent.getParent()->getParent()) {
        const qxXmlItem* const before = siblingBefore(parent);
        if (qxIsBlank(before)) end = qxXmlTree::getText(*before);
    }
    if ((last && !isLaidOut) || end.size() > MOST_INDENTATION || end.find('\n') == std::string::npos) {
        parent.addChild(element);
        return;
    }
    const qxXmlItem* const first = parent.getFirstChild();
    std::string start = end + "  ";
    if (first != last && qxIsBlank(first)) start = qxXmlTree::getText(*first);
    if (isLaidOut)
        static_cast<qxXmlCharData*>(last)->setCharData(qxKeyText(start));
    else
        parent.addChild(new qxXmlCharData(qxKeyText(start)));
    parent.addChild(element);
    parent.addChild(new qxXmlCharData(qxKeyText(end)));
}

void removeTexts(qxXmlElement& element)
{
    for (qxXmlItem* child = element.getFirstChild(); child;) {
        qxXmlItem* const next = child->getNextSibling();
        const bool isText = (qxIsKind(child, qxXmlTree::CHAR_DATA) && !qxIsBlank(child)) ||
                            qxIsKind(child, qxXmlTree::CDATA) || qxIsKind(child, qxXmlTree::REFERENCE);
        if (isText) element.removeChild(child);
        child = next;
    }
}

// Character data where the text survives that, else CDATA, which ends at the first "]]>".
void setText(qxXmlElement& element, const qxString& value)
{
    std::string_view rest = qxKeyView(value);
    if (!rest.empty() && qxStripXmlSpace(rest).size() == rest.size()) {
        qxXmlItem* const only = element.getFirstChild();
        if (qxIsKind(only, qxXmlTree::CHAR_DATA) && element.childEntries() == 1) {
            static_cast<qxXmlCharData*>(only)->setCharData(value);
            return;
        }
        removeTexts(element);
        element.addChild(new qxXmlCharData(value));
        return;
    }
    removeTexts(element);
    for (;;) {
        const std::size_t end = rest.find("]]>");
        const std::size_t size = end == std::string_view::npos ? rest.size() : end + 2;
        element.addChild(new qxXmlCDATA(qxKeyText(rest.substr(0, size))));
        rest.remove_prefix(size);
        if (rest.empty()) return;
    }
}

// Takes the value away, and the element too when nothing else is in it.
void removeValue(qxXmlElement& element)
{
    removeTexts(element);
    for (const qxXmlItem* child = element.getFirstChild(); child; child = child->getNextSibling())
        if (!qxIsBlank(child)) return;
    qxXmlItem* const parent = element.getParent();
    if (!parent->getParent()) return; // a document needs its root element
    qxXmlItem* const before = siblingBefore(element);
    if (qxIsBlank(before)) parent->removeChild(before);
    parent->removeChild(&element);
}

// Collects the bytes of a document.
class ByteSink final : public qxSerializeAdapter
{
public:
    explicit ByteSink(std::string& bytes) : m_bytes(bytes) {}

protected:
    using qxSerializeAdapter::read_imp;
    unsigned char read_imp() override { return 0; } // never read
    void write_imp(unsigned char byte) override { m_bytes += static_cast<char>(byte); }
    void write_imp(unsigned char* bytes, unsigned int count) override
    {
        m_bytes.append(reinterpret_cast<const char*>(bytes), count);
    }

private:
    std::string& m_bytes;
};

} // namespace

// Each item of the document itself has a line of its own.
unsigned char qxKeyTree::onWrite()
{
    setPlainOutput(true);
    const qxString declaration = getDocumentType();
    setDocumentType(qxString()); // the root element would write it on its own line
    bool isDeclared = declaration.isEmpty();
    for (qxXmlItem* item = getFirstChild(); item; item = item->getNextSibling()) {
        if (!isDeclared && qxXmlTree::isElement(*item)) {
            writeGenericString("\n");
            writeGenericString(declaration);
            isDeclared = true;
        }
        writeGenericString("\n");
        item->write(this);
    }
    setDocumentType(declaration);
    writeGenericString("\n");
    return 1;
}

bool qxKeyDocument::set(const qxString& path, const qxString& name, const qxString& value, bool& isChanged,
                        std::string& error)
{
    qxString present;
    if (get(path, name, present) && present == value) return true;
    isChanged = true;
    for (unsigned int tries = 0; tries < MOST_DOUBLES; ++tries) {
        qxXmlItem* const item = locate(path, name);
        if (item && isIncluded(item)) {
            error = "an included document says what it is";
            return false;
        }
        qxXmlElement* element = item ? static_cast<qxXmlElement*>(item->getParent()) : nullptr;
        if (!element) element = make(qxKeyWay(qxNormalKeyPath(qxKeyView(path)), qxKeyView(name)));
        if (!element) {
            error = "that is no name";
            return false;
        }
        // What was set hides behind another element of the same way: that one goes.
        if (tries != 0)
            removeValue(*element);
        else
            setText(*element, value);
        changed();
        if (get(path, name, present) && present == value) return true;
    }
    error = "it is there too often";
    return false;
}

// Null when a name cannot be that of an element.
qxXmlElement* qxKeyDocument::make(const std::vector<std::string>& way)
{
    std::vector<std::string> names;
    for (const std::string& step : way)
        if (!qxEncodeKeyName(step, names.emplace_back()) || names.back().size() > qxString::MAX_LENGTH)
            return nullptr;
    std::vector<std::string> known = way;
    qxXmlItem* parent = nullptr;
    while (!known.empty() && !parent) {
        parent = m_index.find(known).own;
        if (!parent) known.pop_back();
    }
    for (qxXmlItem* item = m_tree.getFirstChild(); !parent; item = item->getNextSibling())
        if (qxXmlTree::isElement(*item)) parent = item;
    for (std::size_t i = known.size(); i < way.size(); ++i) {
        auto* const element = new qxXmlElement(qxKeyText(names[i]));
        appendElement(*parent, element);
        parent = element;
    }
    return static_cast<qxXmlElement*>(parent);
}

bool qxKeyDocument::remove(const qxString& path, const qxString& name, bool& isChanged, std::string& error)
{
    bool isRemoved = false;
    for (unsigned int tries = 0; tries < MOST_DOUBLES; ++tries) {
        qxXmlItem* const item = locate(path, name);
        if (!item) return isRemoved;
        if (isIncluded(item)) {
            error = "an included document says what it is";
            return false;
        }
        removeValue(static_cast<qxXmlElement&>(*item->getParent()));
        isChanged = isRemoved = true;
        changed();
    }
    error = "it is there too often";
    return false;
}

bool qxKeyDocument::write(std::string& bytes, bool withIncludes, std::string& error)
{
    ByteSink sink(bytes);
    m_tree.setWriteIncludedXml(withIncludes);
    try {
        m_tree.qxXmlSax::write(&sink);
    } catch (const qxParserException& fault) {
        error = fault.getErrorString().getString();
        return false;
    }
    return true;
}
