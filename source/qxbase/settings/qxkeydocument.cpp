// SPDX-License-Identifier: see LICENSE

#include "settings/qxkeydocument.h"

#include "qxkeydatabase.h"
#include "qxmessage.h"
#include "qxserializeadaptermemory.h"

#include "serialize/qxcuttext.h"
#include "settings/qxkeyitems.h"
#include "settings/qxkeynames.h"

#include <algorithm>
#include <map>

namespace
{

constexpr std::string_view SUFFIX = "/QuaxoSDK";
constexpr std::string_view ROOT = "registry";
constexpr unsigned int MAX_SHOWN = 16384; // bytes of a name in a message, which must fit a string
constexpr unsigned int BLOCK_BYTES = 65536;
constexpr std::size_t MOST_PATH_BYTES = 4096;
constexpr std::size_t MOST_ROW_BYTES = 256 * 1024 * 1024;

// Whether the text of an item goes on in the next one, as a text with "]]>" in it does.
bool goesOn(const qxXmlItem& item)
{
    return qxIsKind(&item, qxXmlTree::CDATA) && qxIsKind(item.getNextSibling(), qxXmlTree::CDATA);
}

qxString valueOf(const qxXmlItem& item)
{
    std::string value(qxXmlTree::getText(item));
    if (qxIsKind(&item, qxXmlTree::CHAR_DATA)) return qxKeyText(qxStripXmlSpace(value));
    for (const qxXmlItem* part = &item; goesOn(*part);) {
        part = part->getNextSibling();
        value += qxXmlTree::getText(*part);
    }
    return value.size() <= qxString::MAX_LENGTH ? qxKeyText(value) : qxString();
}

bool readAll(qxSerializeAdapter& adapter, std::string& bytes)
{
    while (adapter.hasData()) {
        const qxUInt64 available = std::max<qxUInt64>(adapter.length(), 1);
        const auto wanted = static_cast<unsigned int>(std::min<qxUInt64>(available, BLOCK_BYTES));
        const std::size_t size = bytes.size();
        bytes.resize(size + wanted);
        const unsigned int count = adapter.read(reinterpret_cast<unsigned char*>(&bytes[size]), wanted);
        bytes.resize(size + count);
        if (count < wanted || bytes.size() > qxKeyDocument::MOST_BYTES) return false;
    }
    return !adapter.hasError();
}

} // namespace

qxKeyTree::qxKeyTree()
{
    setSkipWhiteSpaceCharData(false);
    promiseNoOwnItems();
}

// Settings call nothing.
qxString qxKeyTree::onFunction(const qxString& argument, unsigned int)
{
    return argument.length() <= qxString::MAX_LENGTH - 9 ? "function:" + argument : argument;
}

qxKeyDocument::qxKeyDocument() : m_index(m_tree)
{
    m_tree.addChild(new qxXmlElement(qxKeyText(ROOT)));
}

bool qxKeyDocument::read(qxSerializeAdapter& adapter)
{
    std::string bytes;
    if (!readAll(adapter, bytes)) {
        qxMessage::message(QX_LEVEL_WARNING, "Settings '%s' can not be read, or are more than %d bytes",
                           qxCutText(adapter.getName(), MAX_SHOWN), MOST_BYTES);
        return false;
    }
    qxSerializeAdapterMemory memory(bytes.data(), static_cast<unsigned int>(bytes.size()));
    memory.setName(adapter.getName());
    memory.setURLBase(adapter.getURLBase());
    m_tree.useProgress(0);
    m_tree.read(&memory);
    changed();
    return !m_tree.hasError();
}

std::size_t qxKeyDocument::TextHash::operator()(std::string_view text) const
{
    return qxHashKeyText(text);
}

bool qxKeyDocument::get(const qxString& path, const qxString& name, qxString& value)
{
    m_question.assign(path.getString(), path.length());
    m_question += '\0';
    m_question.append(name.getString(), name.length());
    const auto known = m_answers.find(m_question);
    if (known != m_answers.end()) {
        value = qxKeyText(known->second.value);
        return known->second.isThere;
    }

    const qxXmlItem* const item = locate(path, name);
    value = item ? valueOf(*item) : qxString();
    if (item && goesOn(*item)) return true; // in several pieces
    if (m_answers.size() == MOST_ANSWERS) m_answers.clear();
    std::string_view text = item ? qxXmlTree::getText(*item) : std::string_view();
    if (qxIsKind(item, qxXmlTree::CHAR_DATA)) text = qxStripXmlSpace(text);
    m_answers[m_question] = {item != nullptr, text};
    return item != nullptr;
}

qxXmlItem* qxKeyDocument::locate(const qxString& path, const qxString& name)
{
    std::string normal = qxNormalKeyPath(qxKeyView(path));
    const bool hasSuffix = normal.ends_with(SUFFIX);
    for (int i = 0; i < (hasSuffix ? 2 : 1); ++i) {
        if (i == 1) normal.resize(normal.size() - SUFFIX.size());
        if (name.isEmpty()) return nullptr;
        for (const bool isWritten : {false, true}) {
            const qxKeyPlace place = m_index.find(isWritten ? qxWrittenKeyWay(normal, qxKeyView(name))
                                                            : qxKeyWay(normal, qxKeyView(name)));
            if (place.text || place.cdata) return place.text ? place.text : place.cdata;
        }
        if (qxXmlItem* const item = locatePlain(normal, name)) return item;
    }
    return nullptr;
}

// A path may hold more than names: indices, and steps to parents.
qxXmlItem* qxKeyDocument::locatePlain(const std::string& path, const qxString& name)
{
    const std::string way = qxKeyDatabase::DSLASH + path + qxKeyDatabase::SLASH +
                            std::string(qxKeyView(name)) + qxKeyDatabase::SLASH;
    const bool isPlain = way.find('[') == std::string::npos && way.find("/./") == std::string::npos &&
                         way.find("/../") == std::string::npos;
    if (isPlain || name.isEmpty() || way.size() > qxString::MAX_LENGTH - 16) return nullptr;
    for (const char* const kind : {"<char_data>", "<cdata>"}) {
        const qxRefList<qxXmlItem> found = m_tree.findItems(qxKeyText(way + kind));
        for (qxXmlItem* const item : found)
            if (!qxIsBlank(item)) return item;
    }
    return nullptr;
}

void qxKeyDocument::changed()
{
    m_answers.clear();
    m_index.clear();
}

std::vector<qxKeyRow> qxKeyDocument::getRows()
{
    std::map<std::pair<std::string, std::string>, const qxXmlItem*> found;
    std::vector<std::string> open; // the paths of the elements above
    std::size_t bytes = 0;
    for (const qxKeyIndex::Node& node : m_index.getNodes()) {
        const std::string name = qxDecodeKeyName(qxXmlTree::getName(*node.element));
        open.resize(node.depth);
        std::string above = node.depth == 1 ? std::string() : open[node.depth - 2];
        if (above.size() + name.size() >= MOST_PATH_BYTES) {
            open[node.depth - 1] = std::string(MOST_PATH_BYTES, '/'); // neither this nor what is in it
            continue;
        }
        const bool isLeftOut = node.depth == 1 && name == ROOT;
        open[node.depth - 1] = isLeftOut ? std::string() : above.empty() ? name : above + "/" + name;
        const qxXmlItem* const item = node.text ? node.text : node.cdata;
        if (!item || node.depth == 1) continue;
        if (above.empty()) above = ROOT; // a path has at least one part
        bytes += above.size() + name.size() + qxXmlTree::getText(*item).size();
        if (bytes > MOST_ROW_BYTES) break;
        const qxXmlItem*& known = found[{above, name}];
        if (!known || (qxIsKind(known, qxXmlTree::CDATA) && node.text)) known = item;
    }
    std::vector<qxKeyRow> rows;
    for (const auto& [key, item] : found)
        rows.push_back({key.first, key.second, std::string(qxKeyView(valueOf(*item)))});
    return rows;
}
