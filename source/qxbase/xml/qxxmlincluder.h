// Follows the include instructions of a document.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxstring.h"

#include <vector>

class qxSerializeAdapter;
class qxXmlDom;

/// What the reading of one document and of all that it includes has in common.
///
/// Documents are hostile input here: they may include themselves, each other, and many.
///
/// Threads: as the document.
class qxXmlIncluder
{
public:
    static constexpr unsigned int MAX_DEPTH = 32; ///< documents inside each other, the first not counted
    static constexpr unsigned int MAX_DOCUMENTS = 1000; ///< that are tried, in all

    /// Starts with the document that is read from `adapter`; null when there is none.
    explicit qxXmlIncluder(qxSerializeAdapter* adapter);
    qxXmlIncluder(const qxXmlIncluder&) = delete;
    qxXmlIncluder& operator=(const qxXmlIncluder&) = delete;

    /// Adds the items of the document that `data`, the data of an instruction, names to `document` at `level`.
    /// False when there is none or it cannot be read: that was a warning then.
    bool include(qxXmlDom& document, const qxString& data, unsigned int level);

private:
    bool isAllowed(const qxString& url);
    bool moveItems(qxXmlDom& from, qxXmlDom& to, const qxString& data, unsigned int level) const;

    std::vector<qxString> m_chain; // URLs of the documents that are being read, the first one outermost
    unsigned int m_depth = 0;
    unsigned int m_documents = 0;
    bool m_isLimitReported = false;
};
