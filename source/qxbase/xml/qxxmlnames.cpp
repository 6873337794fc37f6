// SPDX-License-Identifier: see LICENSE

#include "xml/qxxmlnames.h"

qxXmlNames::~qxXmlNames()
{
    for (qxSharedName* name : m_names) {
        if (name) name->release();
    }
}

qxSharedName* qxXmlNames::replace(qxSharedName*& place, const qxString& text)
{
    if (text.isEmpty()) return nullptr;
    // From the bytes: a copy of a unique string would tie the tree to the table of unique strings.
    qxSharedName* const name = new qxSharedName(text.getString(), text.length());
    name->hold();
    if (place) place->release();
    place = name;
    return name;
}
