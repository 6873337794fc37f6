// Small questions about the items of settings documents.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxstring.h"

#include "xml/qxxmlchars.h"
#include "xml/qxxmltree.h"

#include <string_view>

inline std::string_view qxKeyView(const qxString& text)
{
    return {text.getString(), text.length()};
}

inline qxString qxKeyText(std::string_view text)
{
    return qxString(text.data(), text.size());
}

inline bool qxIsKind(const qxXmlItem* item, qxXmlTree::Kind kind)
{
    return item && qxXmlTree::getKind(*item) == kind;
}

/// Whether it is character data of nothing but white space.
inline bool qxIsBlank(const qxXmlItem* item)
{
    return qxIsKind(item, qxXmlTree::CHAR_DATA) && qxStripXmlSpace(qxXmlTree::getText(*item)).empty();
}
