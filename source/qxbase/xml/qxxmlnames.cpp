// SPDX-License-Identifier: see LICENSE

#include "xml/qxxmlnames.h"

qxXmlNames::~qxXmlNames()
{
    for (Entry(&entries)[2] : m_entries) {
        for (const Entry& entry : entries) {
            if (entry.name) entry.name->release();
        }
    }
}

qxSharedName* qxXmlNames::enter(Entry* entries, std::string_view text, std::uint64_t head)
{
    qxSharedName* const name = new qxSharedName(text.data(), text.size());
    name->hold();
    if (entries[1].name) entries[1].name->release();
    entries[1] = entries[0];
    entries[0] = {head, text.size(), name};
    return name;
}
