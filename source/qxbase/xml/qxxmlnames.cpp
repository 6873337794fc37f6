// SPDX-License-Identifier: see LICENSE

#include "xml/qxxmlnames.h"

qxXmlNames::~qxXmlNames()
{
    const unsigned int count = m_many ? MANY : FEW;
    for (unsigned int i = 0; i < count; ++i)
        for (const Entry& entry : m_places[i])
            if (entry.name) entry.name->release();
}

qxSharedName* qxXmlNames::enter(std::string_view text, std::uint64_t head)
{
    if (!m_many && m_entered++ == FEW) makeMany();
    qxSharedName* const name = new qxSharedName(text.data(), text.size());
    name->hold();
    Place& place = m_places[getPlace(text, head)];
    if (place[1].name) place[1].name->release();
    place[1] = place[0];
    place[0] = {head, text.size(), name};
    return name;
}

void qxXmlNames::makeMany()
{
    m_many = std::make_unique<Place[]>(MANY);
    m_places = m_many.get();
    m_shift = 64 - MANY_BITS;
    for (const Place& few : m_few) { // at most two of them come to one place: the first bits are the same
        for (const Entry& entry : few) {
            if (!entry.name) continue;
            Place& place = m_places[getPlace({entry.name->getString(), entry.length}, entry.head)];
            place[place[0].name ? 1 : 0] = entry;
        }
    }
}
