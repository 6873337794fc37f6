// What the tool tells on standard error.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxstatus.h"

#include "qxmessage.h"
#include "qxserializeadapter.h"
#include "qxxml.h"

#include <string>
#include <vector>

/// Shows the library's messages and the tool's own errors.
///
/// Lifetime: one object, made first in main.
class qxReport : public qxMessageReceiverInterface
{
public:
    qxReport();

    void onMessage(const qxString& sender, qxMessageLevel level, const char* text) override;

    /// A line "qx: error: TEXT".
    void printError(const std::string& text);

    /// A line "qx: TEXT", for an answer that is no error.
    void printNote(const std::string& text);

    /// A line "FILE:LINE:COL: error: TEXT", and on a terminal the line of the file with a caret below it.
    void printErrorAt(const std::string& file, unsigned int line, unsigned int column,
                      const std::string& text);

    /// The same without "error: ".
    void printNoteAt(const std::string& file, unsigned int line, unsigned int column,
                     const std::string& text);

    /// A line "FILE:LINE:COL: error: TEXT" for the error of `parser`, and on a terminal the line of the document
    /// with a caret below it.
    void printParseError(const std::string& file, const qxXmlSax& parser);

    /// From here to release messages wait.
    void hold() { m_isHolding = true; }

    /// Shows the messages that waited, but not the warning with the text `alreadyShown`.
    void release(const qxString& alreadyShown);

private:
    struct Waiting {
        qxMessageLevel level;
        std::string text;
    };

    void print(qxMessageLevel level, const std::string& text);
    void printPlace(const std::string& file, unsigned int line, unsigned int column, const std::string& text);
    std::string colored(const char* code, const std::string& text) const;

    bool m_hasTerminal;
    bool m_hasColor;
    bool m_isHolding = false;
    std::vector<Waiting> m_waiting;
};

/// Reads the document `file` with `reader` and shows what went wrong: DONE, MALFORMED, LIMIT, NO_FILE or
/// INTERRUPTED. `bytes`, when not null, receives the size of the document.
qxStatus readDocument(qxReport& report, const std::string& file, qxXmlSax& reader,
                      unsigned long long* bytes = nullptr);

/// Whether the user wants the tool to stop. Set by the interrupt key.
bool isInterrupted();
void watchInterrupts();

/// While one lives the interrupt key ends the tool at once, wherever it waits, and removes the file `leftOver`. Where a
/// system does not let go of an open file, the key sets what isInterrupted tells.
class qxQuickEnd
{
public:
    explicit qxQuickEnd(const std::string& leftOver);
    ~qxQuickEnd();
    qxQuickEnd(const qxQuickEnd&) = delete;
    qxQuickEnd& operator=(const qxQuickEnd&) = delete;
};
