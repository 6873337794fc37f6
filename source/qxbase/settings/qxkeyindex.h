// Finds the elements of a settings document by the names on the way to them.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxxmldom.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

/// What a document has behind a way: names that elements stand for, each the child of the one before, that may begin at any
/// depth. Of several elements the first of the document counts.
struct qxKeyPlace {
    qxXmlElement* own = nullptr; ///< the first element that is not of an included document
    qxXmlItem* text = nullptr;   ///< the first character data that is more than white space
    qxXmlItem* cdata = nullptr;  ///< the first CDATA section
};

/// An index over a document. The first few answers are walks over it. Then it is made: that costs a walk too, and one over
/// the elements for each length of a way that is asked for; an answer takes the same time then in documents of any size.
///
/// Lifetime: holds pointers to items; when the document changes it is cleared first.
/// Threads:  as the document.
class qxKeyIndex
{
public:
    /// One element.
    struct Node {
        qxXmlElement* element;
        qxXmlItem* text;
        qxXmlItem* cdata;
        unsigned int depth; // the root element has 1
        bool isOwn;
        unsigned long long hash; // of all names from the root element to this one
    };

    explicit qxKeyIndex(qxXmlDom& document) : m_document(document) {}

    void clear();

    /// The place at the end of `way`; all null when there is none.
    qxKeyPlace find(const std::vector<std::string>& way);

    /// All elements in the order of the document.
    const std::vector<Node>& getNodes();

private:
    struct Entry {
        unsigned long long hash;
        const qxXmlElement* element; // the first one
        qxKeyPlace place;
    };

    // Kept small: documents are often read to answer one question.
    struct Table {
        std::vector<unsigned int>
            slots; // the number of an entry, from 1 on, 0 for none; a power of two of them
        std::vector<Entry> entries;
    };

    static constexpr unsigned int MOST_TABLES = 8;
    static constexpr unsigned int MOST_SEARCHES = 4; // programs may have no more questions than that

    qxKeyPlace search(const std::vector<std::string>& way) const;
    void walk();
    Table& tableFor(unsigned int length);
    static Entry& enter(Table& table, unsigned long long hash, const qxXmlElement& element,
                        unsigned int length);

    qxXmlDom& m_document;
    unsigned int m_searches = 0;
    bool m_isWalked = false;
    std::vector<Node> m_nodes;
    std::map<unsigned int, Table> m_tables; // by the length of the ways
};
