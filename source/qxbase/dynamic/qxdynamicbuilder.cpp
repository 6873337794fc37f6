// SPDX-License-Identifier: see LICENSE

#include "dynamic/qxdynamicbuilder.h"

#include "dynamic/qxdynamicelements.h"

#include <algorithm>

using Parts = qxDynamicParts;

qxDynamicBuilder::~qxDynamicBuilder()
{
    for (const Node& node : m_nodes) node.tag->unref();
}

void qxDynamicBuilder::add(const qxDynamicTag* tag, const Head& head, std::string_view block)
{
    Node& node = append(tag, head);
    m_hasAddresses = m_hasAddresses || tag->kind == QX_DYNAMIC_PTR;
    node.data = m_bytes.size();
    node.size = block.size();
    m_bytes.insert(m_bytes.end(), block.begin(), block.end());
    countIn(node);
}

void qxDynamicBuilder::open(qxDynamicKind kind, const Head& head, double time)
{
    append(qxDynamicTag::get(kind), head).data = std::bit_cast<qxUInt64>(time);
    m_open.push_back(m_nodes.size() - 1);
}

void qxDynamicBuilder::close()
{
    Node& node = m_nodes[m_open.back()];
    node.size += node.tag->kind == QX_DYNAMIC_TTAG ? QX_DYNAMIC_TIME_SIZE : qxVarSize(node.count);
    m_open.pop_back();
    countIn(node);
}

qxDynamicBuilder::Node& qxDynamicBuilder::append(const qxDynamicTag* tag, const Head& head)
{
    const qxDynamicKind around = m_open.empty() ? QX_DYNAMIC_VOID : m_nodes[m_open.back()].tag->kind;
    m_nodes.push_back(
        {tag, m_bytes.size(), head.references, 0, 0, 0, static_cast<unsigned int>(head.name.size()), around});
    m_bytes.insert(m_bytes.end(), head.name.begin(), head.name.end());
    return m_nodes.back();
}

// Counts a value that has ended for the one around it.
void qxDynamicBuilder::countIn(const Node& node)
{
    if (m_open.empty()) return;
    Node& around = m_nodes[m_open.back()];
    ++around.count;
    around.size += qxDynamicFormSize(*node.tag, node.size);
    if (node.around == QX_DYNAMIC_CONT) around.size += node.nameLength + 1U;
    if (node.around != QX_DYNAMIC_TTAG) around.size += qxVarSize(node.references);
}

bool qxDynamicBuilder::build(qxDynamicType& value)
{
    const Node& whole = m_nodes.front();
    if (whole.size > qxDynamicType::MAX_LENGTH) return false;
    whole.tag->ref();
    unsigned char* place = putContent(Parts::prepare(value, whole.tag, whole.size), whole);
    for (std::size_t i = 1; i < m_nodes.size(); ++i)
        place = putContent(putHead(place, m_nodes[i]), m_nodes[i]);
    Parts::setForeign(value, m_hasAddresses);
    return true;
}

unsigned char* qxDynamicBuilder::putHead(unsigned char* place, const Node& node) const
{
    if (node.around == QX_DYNAMIC_CONT) {
        place = std::copy_n(bytesAt(node.name), node.nameLength, place);
        *place++ = 0;
    }
    if (node.around != QX_DYNAMIC_TTAG) place = qxPutVar(place, node.references);
    return qxPutDynamicHead(place, *node.tag, node.size);
}

// Writes the block, or what lies in it before its values.
unsigned char* qxDynamicBuilder::putContent(unsigned char* place, const Node& node) const
{
    const qxDynamicKind kind = node.tag->kind;
    if (!qxHoldsDynamicElements(kind)) return std::copy_n(bytesAt(node.data), node.size, place);
    if (kind != QX_DYNAMIC_TTAG) return qxPutVar(place, node.count);
    qxPutBigEndian(place, node.data);
    return place + QX_DYNAMIC_TIME_SIZE;
}
