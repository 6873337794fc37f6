// SPDX-License-Identifier: see LICENSE

#include "qxreport.h"

#include "qxconsole.h"
#include "qxinput.h"
#include "qxoutput.h"
#include "qxprogressbar.h"

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace
{

const char BOLD_RED[] = "\033[1;31m";
const char BOLD_YELLOW[] = "\033[1;33m";
const char BOLD_GREEN[] = "\033[1;32m";

// Of a long line only this many characters before and behind the place are shown.
constexpr std::size_t CONTEXT = 60;

volatile std::sig_atomic_t interrupted = 0;
volatile std::sig_atomic_t isEndingQuickly = 0;
char leftOverFile[4096]; // not touched while that is set

void onInterrupt(int)
{
    interrupted = 1;
    if (isEndingQuickly) qxConsoleEnd(leftOverFile, static_cast<int>(qxStatus::INTERRUPTED));
    std::signal(SIGINT, SIG_DFL); // a second one ends the tool wherever it is
}

bool isContinuation(char c)
{
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

// The line `number` of the file, without its end; empty when it cannot be had.
std::string lineOf(const std::string& file, unsigned int number)
{
    if (file == "-") return {};
    std::FILE* const stream = std::fopen(file.c_str(), "rb");
    if (!stream) return {};
    std::string line;
    unsigned int current = 1;
    for (int c = std::getc(stream); c != EOF && current <= number; c = std::getc(stream)) {
        if (c == '\n') {
            ++current;
        } else if (current == number && line.size() < 65536) {
            line += static_cast<char>(c);
        }
    }
    std::fclose(stream);
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return line;
}

// Bytes before the character `column`, counted from 1.
std::size_t offsetOf(std::string_view line, unsigned int column)
{
    std::size_t offset = 0;
    for (unsigned int i = 1; i < column && offset < line.size(); ++i) {
        ++offset;
        while (offset < line.size() && isContinuation(line[offset])) ++offset;
    }
    return offset;
}

std::string withoutControls(std::string_view text)
{
    std::string result(text);
    std::replace_if(
        result.begin(), result.end(),
        [](char c) { return (static_cast<unsigned char>(c) < 32 && c != '\t') || c == 127; }, '?');
    return result;
}

std::string textOf(const qxXmlSax& parser)
{
    std::string text = parser.getErrorText().getString();
    const char* const expected = qxXmlCheckText(parser.getErrorCheck());
    if (expected) text += std::string(" (expected ") + expected + ")";
    return text;
}

bool isLimit(const qxXmlSax& parser)
{
    return parser.getErrorText().isFirst("Too large '") || qxXmlIsLimitCheck(parser.getErrorCheck());
}

} // namespace

bool isInterrupted()
{
    return interrupted != 0;
}

void watchInterrupts()
{
    std::signal(SIGINT, onInterrupt);
}

qxQuickEnd::qxQuickEnd(const std::string& leftOver)
{
    if (leftOver.size() >= sizeof(leftOverFile)) return;
    leftOver.copy(leftOverFile, leftOver.size());
    leftOverFile[leftOver.size()] = 0;
    std::atomic_signal_fence(std::memory_order_seq_cst);
    isEndingQuickly = 1;
    if (interrupted) onInterrupt(SIGINT); // it came just before
}

qxQuickEnd::~qxQuickEnd()
{
    isEndingQuickly = 0;
}

qxReport::qxReport() : m_hasTerminal(qxConsoleIsTerminal(qxConsoleStream::ERRORS))
{
    const char* const noColor = std::getenv("NO_COLOR");
    m_hasColor = m_hasTerminal && !(noColor && *noColor);
    qxMessage::addMessageReceiver(this);
}

void qxReport::onMessage(const qxString&, qxMessageLevel level, const char* text)
{
    if (m_isHolding) {
        m_waiting.push_back({level, text});
    } else {
        print(level, text);
    }
}

void qxReport::print(qxMessageLevel level, const std::string& text)
{
    const qxMessageLevel plain = level & 0xF000;
    const bool isError = plain == QX_LEVEL_FATAL || plain == QX_LEVEL_ASSERT;
    const std::string label = isError                     ? colored(BOLD_RED, "error: ")
                              : plain == QX_LEVEL_WARNING ? colored(BOLD_YELLOW, "warning: ")
                                                          : std::string();
    const std::string line = "qx: " + label + text + "\n";
    std::fwrite(line.data(), 1, line.size(), stderr);
    std::fflush(stderr); // some C libraries keep what goes into a file
}

void qxReport::printError(const std::string& text)
{
    print(QX_LEVEL_FATAL, text);
}

void qxReport::printNote(const std::string& text)
{
    print(QX_LEVEL_NOTICE, text);
}

void qxReport::printErrorAt(const std::string& file, unsigned int line, unsigned int column,
                            const std::string& text)
{
    printPlace(file, line, column, colored(BOLD_RED, "error: ") + text);
}

void qxReport::printNoteAt(const std::string& file, unsigned int line, unsigned int column,
                           const std::string& text)
{
    printPlace(file, line, column, text);
}

void qxReport::printParseError(const std::string& file, const qxXmlSax& parser)
{
    printErrorAt(file, parser.getErrorLine(), parser.getErrorColumn(), textOf(parser));
}

void qxReport::printPlace(const std::string& file, unsigned int line, unsigned int column,
                          const std::string& text)
{
    std::string lines = file + ":" + std::to_string(line) + ":" + std::to_string(column) + ": " + text + "\n";
    const std::string source = m_hasTerminal ? lineOf(file, line) : std::string();
    if (!source.empty()) {
        const std::size_t place = offsetOf(source, column);
        std::size_t begin = place > CONTEXT ? place - CONTEXT : 0;
        while (begin < place && isContinuation(source[begin])) ++begin;
        std::size_t end = std::min(source.size(), place + CONTEXT);
        while (end < source.size() && isContinuation(source[end])) ++end;
        std::string blanks;
        for (std::size_t i = begin; i < place; ++i) {
            if (!isContinuation(source[i])) blanks += source[i] == '\t' ? '\t' : ' ';
        }
        lines += withoutControls(source.substr(begin, end - begin)) + "\n" + blanks +
                 colored(BOLD_GREEN, "^") + "\n";
    }
    std::fwrite(lines.data(), 1, lines.size(), stderr);
}

void qxReport::release(const qxString& alreadyShown)
{
    m_isHolding = false;
    for (const Waiting& waiting : m_waiting) {
        const bool isShown = (waiting.level & 0xF000) == QX_LEVEL_WARNING && !alreadyShown.isEmpty() &&
                             viewOf(alreadyShown) == waiting.text;
        if (!isShown) print(waiting.level, waiting.text);
    }
    m_waiting.clear();
}

std::string qxReport::colored(const char* code, const std::string& text) const
{
    return m_hasColor ? code + text + "\033[0m" : text;
}

qxStatus readDocument(qxReport& report, const std::string& file, qxXmlSax& reader, unsigned long long* bytes)
{
    const qxInput input = openInput(file);
    report.hold();
    try {
        const qxProgressBar bar;
        reader.read(input.adapter);
    } catch (...) {
        report.release(qxString());
        throw;
    }
    report.release(reader.getError());
    if (isInterrupted()) return qxStatus::INTERRUPTED;
    checkInput(input);
    if (bytes) *bytes = input.getSize();
    if (!reader.hasError()) return qxStatus::DONE;
    report.printParseError(file, reader);
    return isLimit(reader) ? qxStatus::LIMIT : qxStatus::MALFORMED;
}
