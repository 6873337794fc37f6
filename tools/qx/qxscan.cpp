// SPDX-License-Identifier: see LICENSE

#include "qxcommands.h"
#include "qxinput.h"
#include "qxoutput.h"
#include "qxprogressbar.h"

#include "qxstringparser.h"
#include "qxutf8.h"

#include <algorithm>

namespace
{

typedef std::vector<std::string> Names;

/// The lines of an input, of any length.
class Lines
{
public:
    explicit Lines(const std::string& name) : m_name(name), m_input(openInput(name)) {}

    /// The next line without its line feed and a CR before that; false at the end.
    bool next(std::string& line)
    {
        line.clear();
        while (m_place < m_block.size() || readOn()) {
            const std::size_t end = m_block.find('\n', m_place);
            line.append(m_block, m_place, end - m_place);
            m_place = std::min(end, m_block.size() - 1) + 1;
            if (end == std::string::npos) continue;
            if (line.ends_with('\r')) line.pop_back();
            ++m_number;
            return true;
        }
        if (line.empty()) return false;
        ++m_number;
        return true;
    }

    /// Of the line that came last, from 1.
    unsigned long long getNumber() const { return m_number; }

private:
    bool readOn()
    {
        m_read += m_block.size();
        m_place = 0;
        if (!m_input.countsItself && m_input.size > 0) {
            const auto percent = static_cast<unsigned int>(static_cast<double>(m_read) * 100.0 /
                                                           static_cast<double>(m_input.size));
            qxProgress::report(m_name.c_str(), percent);
        }
        return readBlock(m_input, m_block);
    }

    const std::string m_name;
    const qxInput m_input;
    std::string m_block;
    std::size_t m_place = 0;
    unsigned long long m_read = 0; // bytes before the block
    unsigned long long m_number = 0;
};

/// Puts each replacement in the place of its character.
struct Escape {
    char character;
    const char* text;
};

std::string escapeField(std::string_view text)
{
    constexpr Escape ESCAPES[] = {{'\t', "\\t"}, {'\n', "\\n"}, {'\\', "\\\\"}};
    std::string result;
    for (const char c : text) {
        const Escape* const escape = std::find_if(std::begin(ESCAPES), std::end(ESCAPES),
                                                  [c](const Escape& e) { return e.character == c; });
        if (escape == std::end(ESCAPES))
            result += c;
        else
            result += escape->text;
    }
    return result;
}

std::string quoteJson(std::string_view text)
{
    static const char digits[] = "0123456789abcdef";
    std::string result = "\"";
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\')
            result += {'\\', c};
        else if (byte < 32)
            result += {'\\', 'u', '0', '0', digits[byte >> 4], digits[byte & 15]};
        else
            result += c;
    }
    return result + "\"";
}

/// How the fields of a line are written.
class Format
{
public:
    explicit Format(const qxCommandLine& line) : m_isJson(line.hasOption("--json"))
    {
        if (!line.hasOption("--header")) return;
        const std::string header = line.getOptionText("--header");
        for (std::size_t begin = 0; begin <= header.size();) {
            const std::size_t end = std::min(header.find(',', begin), header.size());
            m_names.push_back(header.substr(begin, end - begin));
            begin = end + 1;
        }
        for (auto name = m_names.begin(); name != m_names.end(); ++name) {
            if (std::find(m_names.begin(), name, *name) != name)
                throw qxUsageError("the header has '" + *name + "' twice");
        }
    }

    std::string header() const
    {
        if (m_isJson || m_names.empty()) return {};
        std::string line;
        for (const std::string& name : m_names) line += escapeField(name) + "\t";
        line.back() = '\n';
        return line;
    }

    std::string line(const qxArray<qxString>& fields) const
    {
        std::string line;
        for (unsigned int i = 0; i < fields.entries(); ++i) {
            const std::string_view text = viewOf(fields[i]);
            if (i > 0) line += m_isJson ? ',' : '\t';
            if (m_isJson && !m_names.empty()) line += quoteJson(nameOf(i)) + ":";
            line += m_isJson ? quoteJson(text) : escapeField(text);
        }
        if (!m_isJson) return line + "\n";
        return m_names.empty() ? "[" + line + "]\n" : "{" + line + "}\n";
    }

private:
    /// A field that the header does not know is named by its number, from 1.
    std::string nameOf(unsigned int field) const
    {
        return field < m_names.size() ? m_names[field] : std::to_string(field + 1);
    }

    const bool m_isJson;
    Names m_names;
};

char16_t parseDecimal(const std::string& text)
{
    unsigned char size = 0;
    const unsigned int code = qxUTF8ToULong(text.c_str(), &size);
    if (text.empty() || size != text.size() || code > 0xFFFF)
        throw qxUsageError("'" + text + "' is no decimal character");
    return static_cast<char16_t>(code);
}

class Scanner
{
public:
    Scanner(const std::string& pattern, char16_t decimal) : m_pattern(pattern.c_str()), m_decimal(decimal) {}

    /// False when the line does not match, and when the pattern is faulty.
    bool scan(std::string_view line)
    {
        qxString error;
        const qxParseResult result =
            qxStringParser::parseArguments(m_pattern, line.data(), line.size(), m_fields, m_decimal, &error);
        m_isFaulty = result == QX_PARSE_ERROR && !isAboutLength(viewOf(error));
        return result == QX_PARSE_OK;
    }

    /// Whether the last line showed that the pattern is; the library has said why.
    bool isFaulty() const { return m_isFaulty; }
    const qxArray<qxString>& getFields() const { return m_fields; }

private:
    /// Fields over 65,535 bytes and lines that are too long to go back in are the fault of the line.
    static bool isAboutLength(std::string_view error)
    {
        return error.find("Too many characters in qxString") != std::string_view::npos ||
               error.find("Too Large Pushback in basic parser") != std::string_view::npos;
    }

    const qxString m_pattern;
    const char16_t m_decimal;
    qxArray<qxString> m_fields;
    bool m_isFaulty = false;
};

qxStatus runScan(qxReport& report, const qxCommandLine& options)
{
    const std::string pattern = options.getArgumentText(0);
    if (pattern.size() > qxString::MAX_LENGTH) throw qxUsageError("a pattern is too long");
    const Format format(options);
    Scanner scanner(pattern, parseDecimal(options.getOptionText("--decimal")));
    scanner.scan(""); // shows most faults before anything is read
    if (scanner.isFaulty()) return qxStatus::USAGE;

    const qxProgressBar bar;
    Lines lines(options.getArgumentCount() > 1 ? options.getArgumentText(1) : "-");
    writeOutput(format.header());
    unsigned long long missed = 0;
    for (std::string line; !isInterrupted() && lines.next(line);) {
        if (scanner.scan(line)) {
            writeOutput(format.line(scanner.getFields()));
            continue;
        }
        if (scanner.isFaulty()) return qxStatus::USAGE;
        ++missed;
        if (options.hasOption("-v"))
            report.printNote("line " + std::to_string(lines.getNumber()) + " does not match: " + quote(line));
    }
    report.printNote("lines that do not match: " + std::to_string(missed));
    return missed < lines.getNumber() ? qxStatus::DONE : qxStatus::NO;
}

} // namespace

void declareScan(qxTool& tool)
{
    tool.add("scan", "takes each line apart by a pattern", runScan)
        .addArgument("PATTERN", "what a line is to be, such as \"%i = %n\"")
        .addArgument("FILE", "the lines; without it standard input", QX_ARGUMENT_OPTIONAL)
        .addOption("--decimal", "C", "the character before fractions", ".")
        .addOption("--header", "A,B…", "names of the fields")
        .addOption("--json", "", "prints arrays, and objects where fields have names")
        .addOption("-v", "", "shows the lines that do not match");
}
