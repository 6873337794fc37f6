// Reads the dynamic values of documents.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "dynamic/qxdynamicbuilder.h"
#include "xml/qxxmlsax_scan.h"
#include "xml/qxxmlvalueform.h"

#include <string>
#include <string_view>
#include <vector>

/// A text that one or two attributes of an element give.
struct qxXmlAttributeText {
    std::string_view attribute; ///< that has the text as it stands; the others are named after it
    std::string text = {};
    bool isThere = false;
    bool isFaulty = false;

    /// False when the attribute `name` is none of them.
    bool take(std::string_view name, std::string_view value);
};

/// The attributes of an element that say what value is in it, with their references replaced.
struct qxXmlValueHead {
    qxXmlAttributeText name = {QX_XML_NAME};
    qxXmlAttributeText type = {QX_XML_TYPE};
    qxUInt64 references = 0;
    double time = 0.0;
    bool hasReferences = false;
    bool hasTime = false;
    bool isBinary = false;
    bool isBase64 = false; ///< with `isBinary`

    /// Takes the attributes of the innermost open element. Null, or what is wrong with them.
    const char* read(const qxXmlReaderState& state, bool prefersBase64);
};

/// Reads one value out of the element that a reader has just opened, up to its end tag, which stays. What elements are
/// in it are read, too, so that the reader is where it was but for the place in the document.
///
/// Depth costs memory only. Syntax that is wrong raises what the productions raise; a reader that goes back to where it
/// was must close the elements that are open by then.
///
/// Threads: as the reader.
class qxXmlValueReader
{
public:
    explicit qxXmlValueReader(qxXmlSax& sax);

    /// `head` is that of the element. False when what is in it is no such value.
    bool read(const qxXmlValueHead& head, qxDynamicType& value);

    /// What should stand at the reader's place; null when that was syntax.
    const char* getFault() const { return m_fault; }

    /// True when elements in the value were looked at.
    bool hasLookedDeep() const { return m_hasLookedDeep; }

private:
    bool fail(const char* text)
    {
        m_fault = text;
        return false;
    }
    bool failAt(qxUInt64 start);
    bool isTimed(const qxXmlValueHead& head);
    bool isFitting(const qxXmlValueHead& head);
    bool prefersBase64() const;

    bool begin(const qxXmlValueHead& head, bool hasContent);
    bool end();
    bool goOn();
    bool beginItem();
    bool leaveItem();
    bool readPlain(const qxDynamicTag* own, const qxXmlValueHead& head, bool hasContent);
    bool convert(qxDynamicKind kind, const qxXmlValueHead& head);
    bool readText(std::size_t limit);
    bool readRun(std::size_t limit);
    bool readSection(std::size_t limit);
    bool readReference();
    bool isSectionEnd();
    void takeBracket();
    bool copyTo(const qxXmlStop& stop, std::size_t limit);

    qxXmlSax& m_sax;
    qxDynamicBuilder m_builder;
    std::vector<qxDynamicKind> m_open; // of the values that hold others, the innermost last
    qxXmlBytes m_text;                 // of the value that is being read
    std::string m_block;
    const char* m_fault = nullptr;
    bool m_hasLookedDeep = false;
};
