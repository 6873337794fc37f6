// Makes a tree of items out of the reader's calls.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "xml/qxxmlattributes.h"
#include "xml/qxxmlchars.h"
#include "xml/qxxmlnames.h"
#include "xml/qxxmlreader.h"
#include "xml/qxxmltree.h"

#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

/// What a document keeps while its tree is built. Levels are those of the reader: 0 is the document, 1 the root
/// element.
///
/// Threads: as the document.
class qxXmlTreeBuilder final : public qxXmlContentTaker
{
public:
    /// `joins` puts text that follows text into one item at once, as merging would do at the end; `strips` drops the
    /// white space around text that is taken.
    qxXmlTreeBuilder(qxXmlItem& document, bool joins, bool strips);

    /// Appends an element to the item that is open at the level above and opens it at `level`.
    void openElement(std::string_view name, unsigned int level) override;
    void closeElement(unsigned int level) override;

    /// Sets an attribute of the element that is open at `level`; references in the value are replaced.
    void setAttribute(const qxString& name, std::string_view value, unsigned int level);

    /// Gives the element that is open at `level` all its attributes, unless it has some already.
    void takeAttributes(const qxXmlAttributeList& attributes, std::size_t first, std::size_t end,
                        unsigned int level) override;

    void takeText(std::string_view text, unsigned int level) override
    {
        addText(m_strips ? qxStripXmlSpace(text) : text, level);
    }

    /// Appends `text` to the item that is open at `level`, or at the nearest level below that has one; nothing when
    /// it is empty.
    void addText(std::string_view text, unsigned int level);

    /// The same for an item without a parent.
    void addItem(qxXmlItem* item, unsigned int level) { qxXmlTree::append(getParent(level), item); }

    /// Puts `item` in the place of the element that was just opened at `level` and gives it its attributes, if it is
    /// an element.
    void replaceElement(qxXmlItem* item, unsigned int level);

    /// The item that is open at `level`, or at the nearest level below that has one.
    qxXmlItem& getParent(unsigned int level)
    {
        while (m_open.back().level > level)
            m_open.pop_back(); // they have ended, whether that was reported or not
        return *m_open.back().item;
    }

private:
    struct Open {
        unsigned int level;
        qxXmlItem* item;
        qxXmlItem* before; // the child of its parent before it, null for the first
    };

    bool isKnown(const qxXmlAttributeBlock& attributes, std::string_view name);

    const bool m_joins;
    const bool m_strips;
    std::vector<Open> m_open; // by rising level, the document first
    qxXmlNames m_names;
    qxXmlAttributeScratch m_scratch;
    std::string m_value; // being decoded

    // Of an element with many attributes: what comes once more is found without comparing each with each.
    std::unordered_set<std::size_t> m_manyHashes; // of the names
    const qxXmlElement* m_manyOwner;
};
