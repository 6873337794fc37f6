// SPDX-License-Identifier: see LICENSE

#include "qxcommands.h"
#include "qxinput.h"
#include "qxoutput.h"
#include "qxprogressbar.h"

#include "qxmessage.h"
#include "qxstringparser.h"

#include <utility>

namespace
{

constexpr unsigned int MOST_HELD = 64 * 1024 * 1024; // tokens that can be gone back over

// The rules of string parsers. They have no quotes or brackets that could close what the user's rules leave open.
const struct {
    const char* name;
    const char* text;
} LIBRARY_RULES[] = {
    {"fHex", "\nfHex ::= fHexS+ ;"},
    {"fStr", "\nfStr ::= parseQuoteToken | parseSingleQuoteToken ;"},
    {"fToken", "\nfToken ::= parseChar ;"},
    {"fEnd", "\nfEnd ::= parseChar* ;"},
};

/// Functions that only say that they were called have such names.
bool isTracer(std::string_view name)
{
    return name.size() > 1 && name[0] == 'f' && name[1] >= 'A' && name[1] <= 'Z';
}

class RuleParser final : public qxStringParser
{
public:
    RuleParser()
    {
        registerFunction("SP", &qxBasicParser::parseSP);
        registerFunction("EOL", &qxBasicParser::parseAllExceptCREOL);
        registerFunction("CRLF", &qxBasicParser::parseCRLF);
        registerFunction("X", &qxBasicParser::parseHex);
        registerFunction("float", &qxBasicParser::parseNumber);
        setMaxBufferSize(MOST_HELD);
    }

    /// Null, with the fault, when `text` is no rule set.
    bool load(std::string text, qxRuleFinding& fault)
    {
        const qxRefPointer<qxRuleSet> own = qxRuleSet::load(text.data(), text.size(), fault);
        if (!own) return false;
        for (const auto& rule : LIBRARY_RULES) {
            if (!own->hasRule(rule.name)) text += rule.text;
        }
        setRules(qxRuleSet::load(text.data(), text.size()));
        return true;
    }

    qxParseResult parseFunction(const qxString& name) override
    {
        if (!isTracer(viewOf(name))) return qxStringParser::parseFunction(name);
        qxArray<unsigned char> text;
        if (isInterrupted() || !takeMarked(text)) return QX_PARSE_ERROR;
        const std::string_view bytes(reinterpret_cast<const char*>(text.getData()), text.entries());
        writeOutput("call: " + std::string(viewOf(name)) + " " + quote(bytes) + "\n");
        return QX_PARSE_OK;
    }

private:
    /// The text from the mark that is next, or else from the start of the input. Texts of strings are shorter.
    bool takeMarked(qxArray<unsigned char>& text)
    {
        qxParserMark mark;
        const qxUInt64 end = getTokenPos();
        qxUInt64 count = end;
        if (takeMark(mark))
            count = static_cast<unsigned int>(end) - mark.position; // modulo 2^32, as marks are
        if (count <= MOST_HELD) return getTokenData(end - count, static_cast<unsigned int>(count), text);
        setErrorText("Too Large Pushback in basic parser");
        return false;
    }
};

/// What the command line says.
struct Task {
    std::string rulesName; ///< as errors call it
    std::string rules;
    std::string input = "-";
    std::string start;
};

Task makeTask(const qxCommandLine& line)
{
    Task task;
    std::vector<std::string> files = argumentsFrom(line, 0);
    const bool isGiven = line.hasOption("-e");
    if (!isGiven && files.empty()) throw qxUsageError("parse: RULES is missing");
    task.rulesName = isGiven ? "-e" : files[0];
    if (!isGiven) files.erase(files.begin());
    if (line.hasOption("--check") && !files.empty()) throw qxUsageError("parse --check takes rules only");
    if (files.size() > 1) throw qxUsageError("parse takes one input at most");
    if (!files.empty()) task.input = files[0];
    if (!isGiven && !line.hasOption("--check") && task.rulesName == "-" && task.input == "-")
        throw qxUsageError("rules and input cannot both be standard input");
    task.start = line.getOptionText("--start");
    if (task.start.size() > qxString::MAX_LENGTH) throw qxUsageError("a name is too long");
    task.rules = isGiven ? line.getOptionText("-e") : readAll(task.rulesName);
    if (task.rules.starts_with("\xEF\xBB\xBF")) task.rules.erase(0, 3); // a byte-order mark
    return task;
}

std::string findingLine(const qxRuleFinding& finding)
{
    return std::to_string(finding.line) + ":" + std::to_string(finding.column) + " " +
           std::string(viewOf(finding.rule)) + ": " + std::string(viewOf(finding.text)) + "\n";
}

bool isAboutTracer(const qxRuleFinding& finding)
{
    constexpr std::string_view UNDEFINED = "not defined: ";
    const std::string_view text = viewOf(finding.text);
    return !finding.isFault && text.starts_with(UNDEFINED) && isTracer(text.substr(UNDEFINED.size()));
}

qxStatus printFindings(const RuleParser& parser)
{
    qxStatus status = qxStatus::DONE;
    for (const qxRuleFinding& finding : parser.checkRules()) {
        if (isAboutTracer(finding)) continue;
        writeOutput(findingLine(finding));
        if (finding.isFault)
            status = qxStatus::MALFORMED;
        else if (status == qxStatus::DONE)
            status = qxStatus::NO;
    }
    return status;
}

/// Says on standard error why the input did not match.
void printMismatch(qxReport& report, const Task& task, RuleParser& parser)
{
    const std::string expected(viewOf(parser.getExpected()));
    const std::string text = expected.empty() ? "no match" : "no match, expected " + expected;
    unsigned int line = 0;
    unsigned int column = 0;
    if (parser.getPlaceOf(parser.getFarthestPosition(), line, column))
        report.printNoteAt(task.input, line, column, text);
    else
        report.printNote(task.input + ": " + text);
}

/// Says on standard error what went wrong, in the rules or else in the input.
void printError(qxReport& report, const Task& task, const RuleParser& parser)
{
    const std::string text(viewOf(parser.getError()));
    unsigned int line = 0;
    unsigned int column = 0;
    if (parser.getErrorRulePlace(line, column))
        report.printErrorAt(task.rulesName, line, column, text);
    else
        report.printError(task.rulesName + ": " + text);
}

/// What was pushed, and what of the input is left, which the adapter has again.
void printResults(const RuleParser& parser, const qxInput& input)
{
    for (const qxString& text : parser.getStrings()) writeOutput("push: " + quote(viewOf(text)) + "\n");
    writeOutput("left: \"");
    for (std::string block; !isInterrupted() && readBlock(input, block);) {
        const std::string quoted = quote(block);
        writeOutput(std::string_view(quoted).substr(1, quoted.size() - 2));
    }
    writeOutput("\"\n");
}

qxStatus parseInput(qxReport& report, const Task& task, RuleParser& parser)
{
    const qxInput input = openInput(task.input);
    parser.setAdapter(input.adapter);
    qxParseResult result = QX_PARSE_ERROR;
    {
        const qxProgressBar bar;
        parser.setProgressMessage(task.input.c_str());
        result = parser.parseRule(task.start.c_str());
    }
    if (isInterrupted()) return qxStatus::INTERRUPTED;
    checkInput(input);
    writeOutput(std::string("result: ") + qxBasicParser::parseResultString(result) + "\n");
    if (result == QX_PARSE_ERROR) {
        printError(report, task, parser);
        return parser.hasReachedLimit() ? qxStatus::LIMIT : qxStatus::MALFORMED;
    }
    if (result == QX_PARSE_NO_MATCH) printMismatch(report, task, parser);
    parser.setAdapter(nullptr);
    printResults(parser, input);
    return result == QX_PARSE_OK ? qxStatus::DONE : qxStatus::NO;
}

qxStatus runParse(qxReport& report, const qxCommandLine& line)
{
    const Task task = makeTask(line);
    RuleParser parser;
    parser.setMaxSteps(parseNumber<qxUInt64>(line.getOptionText("--steps"), "number of steps"));
    qxRuleFinding fault;
    const bool isLoaded = parser.load(task.rules, fault);
    if (line.hasOption("--check")) {
        if (isLoaded) return printFindings(parser);
        writeOutput(findingLine(fault));
        return qxStatus::MALFORMED;
    }
    if (!isLoaded) {
        report.printErrorAt(task.rulesName, fault.line, fault.column, fault.text.getString());
        return qxStatus::MALFORMED;
    }
    if (line.hasOption("--fifo")) parser.useFirstInFirstOut(1);
    if (line.hasOption("--trace")) {
        qxMessage::setMessageLevel(QX_LEVEL_DEBUG);
        parser.useTrace(1);
    }
    return parseInput(report, task, parser);
}

} // namespace

void declareParse(qxTool& tool)
{
    tool.add("parse", "matches a text by rules", runParse)
        .addArgument("RULES", "the file of the rules, unless -e gives them", QX_ARGUMENT_OPTIONAL)
        .addArgument("INPUT", "the text; without it standard input", QX_ARGUMENT_OPTIONAL)
        .addOption("-e", "TEXT", "the rules themselves")
        .addOption("--start", "NAME", "the rule that is to match", "main")
        .addOption("--fifo", "", "functions take the oldest mark first")
        .addOption("--trace", "", "shows each rule and function on standard error")
        .addOption("--check", "", "only reads the rules and prints what is doubtful in them")
        .addOption("--steps", "N", "how many steps a parse may take", "100000000");
}
