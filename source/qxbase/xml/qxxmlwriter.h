// The writer's state: form of the output, open elements, bytes on their way to the adapter.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxstring.h"

#include "xml/qxxmloutput.h"

#include <string>
#include <string_view>
#include <vector>

class qxXmlSax;

/// What an object that writes keeps between its write... operations, and these operations themselves on plain
/// views of text.
///
/// An operation that is refused stores its error on the object, raises qxParserException, and leaves the output
/// and the state as they were.
///
/// Threads: as the object.
class qxXmlWriterState
{
public:
    explicit qxXmlWriterState(qxXmlSax& sax) : m_sax(sax) {}

    /// What is meant by a text that holds something a reader acts on.
    enum Meaning : unsigned char {
        AS_MARKUP, ///< it: predefined references in attributes and the prefix "function:" stay as they are
        AS_TEXT    ///< the characters: the reader of a tree gets exactly this text back
    };

    /// That of `sax`, made when first asked for.
    static qxXmlWriterState& of(qxXmlSax& sax);

    /// The level of the open element; 0 outside the root.
    unsigned int getLevel() const { return static_cast<unsigned int>(m_nameStarts.size()); }

    /// The name of the element that is open at `level`, 1 to getLevel().
    qxString getName(unsigned int level) const;

    /// Forgets what was written before and writes the header that the encoding asks for.
    void beginDocument();
    void writeXmlHeader();
    void writeElementStart(std::string_view name);

    void writeAttribute(std::string_view name, std::string_view value, Meaning meaning);
    void writeCharData(std::string_view text, Meaning meaning);
    void writeCharDataElement(std::string_view name, std::string_view text);
    void writeCDATA(std::string_view text);
    void writeComment(std::string_view text);
    void writePI(std::string_view target, std::string_view data);
    void writeEntityReference(std::string_view name);
    void writeElementEnd();
    void writeGenericString(std::string_view text);
    void beginElementContents();

    /// True for a name that elements of this document can have.
    bool canHoldName(std::string_view name) const { return m_output.canHoldName(name); }

    /// Hands what has gathered to the adapter.
    void flush();

    /// Runs `body`, a number of operations, and hands on their output in blocks. What came before an operation
    /// that is refused is handed on too.
    template <class Body>
    void runBatch(Body&& body)
    {
        const Batch batch(*this);
        try {
            body();
        } catch (...) {
            if (m_batches == 1) flush();
            throw;
        }
        if (m_batches == 1) flush();
    }

private:
    enum State : unsigned char {
        AT_START = 0,
        BEHIND_HEADER = 2,
        BEHIND_CONTENT = 3,
        IN_START_TAG = 4,
        BEHIND_END_TAG = 5,
        BEHIND_ATTRIBUTE = 6
    };

    class Operation;

    struct Batch {
        explicit Batch(qxXmlWriterState& writer) : state(writer) { ++state.m_batches; }
        ~Batch() { --state.m_batches; }
        Batch(const Batch&) = delete;
        Batch& operator=(const Batch&) = delete;

        qxXmlWriterState& state;
    };

    bool isInStartTag() const { return m_state == IN_START_TAG || m_state == BEHIND_ATTRIBUTE; }
    bool isReading() const;
    std::string_view getOpenName() const;
    void readEncoding();
    void appendHeader();
    void closeStartTag();
    void indent(unsigned int level);
    void appendReference(std::string_view& text);
    [[noreturn]] void refuse(const char* text);

    qxXmlSax& m_sax;
    State m_state = AT_START;
    std::size_t m_textRun = 0;             // bytes of the character data written last, with nothing behind it
    unsigned int m_operations = 0;         // under way, one inside the other
    unsigned int m_batches = 0;            // the same
    std::string m_names;                   // of the open elements, one behind the other
    std::vector<std::size_t> m_nameStarts; // where each of them starts
    qxXmlOutput m_output;
};
