// SPDX-License-Identifier: see LICENSE

#include "xml/qxxmlincluder.h"

#include "qxmessage.h"
#include "qxregkeyexpandparser.h"
#include "qxserializeadapter.h"
#include "qxxmldom.h"

#include "serialize/qxcuttext.h"
#include "serialize/qxurlschemes.h"
#include "xml/qxxmlchars.h"
#include "xml/qxxmlincludes.h"
#include "xml/qxxmltreebuilder.h"

#include <string>
#include <string_view>

namespace
{

constexpr unsigned int MAX_SHOWN = 16384; // bytes of a text in a message, which must fit a string

template <class... Arguments>
void warn(const char* format, const Arguments&... arguments)
{
    qxMessage::message(QX_LEVEL_WARNING, format, arguments...);
}

/// An included document: its functions are those of the one around it, which also tells of the progress.
class Included final : public qxXmlDom
{
public:
    Included(qxXmlDom& around, unsigned int level) : m_around(around), m_level(level)
    {
        promiseNoOwnItems();
        useProgress(0);
    }

    qxString onFunction(const qxString& argument, unsigned int level) override
    {
        return m_around.onFunction(argument, m_level + level);
    }

private:
    qxXmlDom& m_around;
    const unsigned int m_level; // of the instruction
};

} // namespace

qxXmlIncluder::qxXmlIncluder(qxSerializeAdapter* adapter)
{
    if (!adapter || !adapter->hasName()) return;
    const qxString name = adapter->getName();
    const qxString file = name.contains("/") ? name.rightOf("/") : name;
    m_chain.push_back(qxSerializeAdapter::resolveURL(file, adapter->getURLBase()));
}

bool qxXmlIncluder::include(qxXmlDom& document, const qxString& data, unsigned int level)
{
    // Kept, since the reader's own string changes while the other document is read.
    const std::string written(data.getString(), data.length());
    const std::string_view stripped = qxStripXmlSpace(written);
    const qxString url = qxRegKeyExpandParser().parse(qxString(stripped.data(), stripped.size()));
    qxSerializeAdapter* const reading = document.getAdapter();
    const qxString base = reading ? reading->getURLBase() : qxString();
    const qxString resolved = qxSerializeAdapter::resolveURL(url, base);
    if (!isAllowed(resolved)) return false;

    ++m_documents;
    const qxRefPointer<qxSerializeAdapter> adapter = qxSerializeAdapter::getURLAdapter(resolved);
    if (!adapter) return false;
    Included included(document, level);
    included.copySettings(document);
    included.m_includer = this;
    m_chain.push_back(resolved);
    ++m_depth;
    included.read(adapter.get());
    --m_depth;
    m_chain.pop_back();
    if (included.hasError()) {
        warn("Can not include '%s', which is malformed", qxCutText(resolved, MAX_SHOWN));
        return false;
    }
    return moveItems(included, document, qxString(written.data(), written.size()), level);
}

bool qxXmlIncluder::isAllowed(const qxString& url)
{
    const qxString shown = qxCutText(url, MAX_SHOWN);
    if (qxIsURLForCallersOnly(url)) {
        warn("Can not include '%s': a document must not look into the memory, at the console or into the "
             "network of its reader",
             shown);
        return false;
    }
    for (const qxString& above : m_chain) {
        if (above == url) {
            warn("Can not include '%s', which includes itself", shown);
            return false;
        }
    }
    if (m_depth >= MAX_DEPTH) {
        warn("Can not include '%s': more than %d documents include each other", shown, MAX_DEPTH);
        return false;
    }
    if (m_documents >= MAX_DOCUMENTS) {
        if (!m_isLimitReported)
            warn("Can not include '%s' and what follows: more than %d documents are included", shown,
                 MAX_DOCUMENTS);
        m_isLimitReported = true;
        return false;
    }
    return true;
}

bool qxXmlIncluder::moveItems(qxXmlDom& from, qxXmlDom& to, const qxString& data, unsigned int level) const
{
    if (!from.getFirstChild()) return false;
    const unsigned int number = qxXmlIncludes::enter(data);
    while (qxXmlItem* const item = from.getFirstChild()) {
        const qxRefPointer<qxXmlItem> held(item);
        from.removeChild(item);
        to.builder().addItem(item, level);
        qxXmlIncludes::hold(number);
        qxXmlTree::setInclude(*item, number);
    }
    qxXmlIncludes::release(number);
    return true;
}
