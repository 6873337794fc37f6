// Writes the dynamic values of documents.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "dynamic/qxdynamicelements.h"
#include "xml/qxxmlwriter.h"

#include <string>
#include <string_view>
#include <vector>

/// Writes values into elements. Depth costs memory only.
///
/// Threads: as the writer.
class qxXmlValueWriter
{
public:
    qxXmlValueWriter(qxXmlWriterState& writer, bool usesBase64) : m_writer(writer), m_usesBase64(usesBase64)
    {}

    /// Gives the element that was just started the name `text`.
    void putName(std::string_view text);

    /// Writes the rest of the start tag of that element and what is in it, but not its end.
    void put(const qxDynamicType& value);

private:
    struct Level {
        qxUInt64 left; // elements to come
        qxDynamicKind kind;
    };

    void putItem(Level& level);
    bool begin(const qxDynamicElement& value);
    void open(qxDynamicKind kind, qxDynamicBytes block);
    void putText(std::string_view text);
    void putBinary(std::string_view bytes);
    void putText(std::string_view attribute, std::string_view text);
    void putAttribute(std::string_view name, std::string_view value);

    qxXmlWriterState& m_writer;
    const bool m_usesBase64;
    qxDynamicCursor m_cursor{{}};
    std::vector<Level> m_levels;
};

/// The value as a document without a header, on one line.
std::string qxXmlValueText(const qxDynamicType& value, const qxString& name);
