// SPDX-License-Identifier: see LICENSE

#include "qxbench.h"

#include "qxdynamictypeargumentparser.h"
#include "qxserializeadaptermemory.h"
#include "qxstringparser.h"

#include <charconv>
#include <cstdio>
#include <memory>
#include <regex>
#include <string>
#if defined(QX_PEER_SPIRIT)
#include <boost/spirit/include/qi.hpp>
#endif

namespace
{

constexpr char ARGUMENT_RULES[] = R"(
array ::= '[' fArrayBegin arg_list ']' fArrayEnd ;
boolean ::= $ [yesYESnoNOtruTRUfalFAL]+ fBool ;
string ::= $ (('"' [^"]* '"')|("'" [^']* "'")) fString ;
number ::= $ float fNum ;
guid ::= $ '{' (X)8 '-' (X)4 '-' (X)4 '-' (X)4 '-' (X)12 '}' fGUID ;
argument ::= number | string | boolean | array | guid ;
arg_list ::= SP* argument SP* (',' arg_list)? ;
main ::= arg_list ;
)";

constexpr char FTP_RULES[] = R"(
ftp ::= user|passwd|quit|auth|syst|EOL;
syst ::= 'SYST' fSyst EOL;
auth ::= 'AUTH' SP+ $ auth_opt fAuth EOL;
auth_opt ::= 'TLS' | 'SSL';
user ::= 'USER' $ EOL fUser;
quit ::= 'QUIT' EOL fQuit;
passwd ::= 'PASS' $ EOL fPass;
main ::= fStart ftp fStop CRLF;
)";

std::string argumentList()
{
    std::string text = "0";
    while (text.size() < 60000) text += ", 12.5, -300, \"some text\", 'more', yes, [1, 2, [3.25, no]], 7e3";
    return text;
}

std::string ftpLines()
{
    std::string text;
    while (text.size() < 60000)
        text += "USER anonymous\r\nPASS guest@example.org\r\nSYST\r\nAUTH TLS\r\nNOOP\r\nUSER joe\r\nPASS "
                "secret\r\nQUIT\r\n";
    return text;
}

/// Counts what it meets and adds the numbers.
class ArgumentCounter : public qxBasicParser
{
public:
    ArgumentCounter()
    {
        registerFunction("SP", &qxBasicParser::parseSP);
        registerFunction("X", &qxBasicParser::parseHex);
        registerFunction("float", &qxBasicParser::parseNumber);
        registerFunction("fNum", &ArgumentCounter::fNum);
        registerFunction("fArrayBegin", &ArgumentCounter::fArrayBegin);
        registerFunction("fArrayEnd", &ArgumentCounter::fArrayBegin);
        for (const char* name : {"fString", "fBool", "fGUID"})
            registerFunction(name, &ArgumentCounter::fOther);
        loadRules(ARGUMENT_RULES);
        useUtf8(1);
    }

    std::uint64_t count(const std::string& text)
    {
        m_total = 0;
        std::size_t taken = 0;
        return parseBytes(text.data(), text.size(), "main", taken) == QX_PARSE_OK && taken == text.size()
                   ? m_total
                   : 0;
    }

private:
    qxParseResult fNum()
    {
        double number = 0.0;
        if (!takeMarkedNumber(number)) return QX_PARSE_ERROR;
        m_total += static_cast<std::uint64_t>(number * 4);
        return QX_PARSE_OK;
    }
    qxParseResult fOther()
    {
        qxParserMark mark;
        takeMark(mark);
        ++m_total;
        return QX_PARSE_OK;
    }
    qxParseResult fArrayBegin() { return QX_PARSE_OK; }

    std::uint64_t m_total = 0;
};

/// Reads command lines one by one.
class FTPReader : public qxBasicParser
{
public:
    FTPReader()
    {
        registerFunction("SP", &qxBasicParser::parseSP);
        registerFunction("EOL", &qxBasicParser::parseAllExceptCREOL);
        registerFunction("CRLF", &qxBasicParser::parseCRLF);
        for (const char* name : {"fStart", "fStop", "fSyst", "fQuit"})
            registerFunction(name, &FTPReader::fCommand);
        for (const char* name : {"fUser", "fPass", "fAuth"}) registerFunction(name, &FTPReader::fText);
        loadRules(FTP_RULES);
    }

    std::uint64_t read(std::string& text)
    {
        m_total = 0;
        qxSerializeAdapterMemory memory(text.data(), static_cast<unsigned int>(text.size()));
        setAdapter(&memory);
        while (hasData() && parseRule("main") == QX_PARSE_OK) {}
        setAdapter(nullptr);
        return m_total;
    }

private:
    qxParseResult fCommand()
    {
        ++m_total;
        return QX_PARSE_OK;
    }
    qxParseResult fText()
    {
        qxParserMark mark;
        takeMark(mark);
        m_total += getTokenPos() - mark.position;
        return QX_PARSE_OK;
    }

    std::uint64_t m_total = 0;
};

#if defined(QX_PEER_SPIRIT)
namespace qi = boost::spirit::qi;
typedef std::string::const_iterator Place;

struct SpiritArguments : qi::grammar<Place> {
    SpiritArguments() : SpiritArguments::base_type(list)
    {
        const auto add = [this](double number, auto&, bool&) {
            total += static_cast<std::uint64_t>(number * 4);
        };
        const auto count = [this](auto&&...) { ++total; };
        number = qi::double_[add];
        string = qi::raw[('"' >> *(qi::char_ - '"') >> '"') | ('\'' >> *(qi::char_ - '\'') >> '\'')][count];
        boolean = qi::raw[qi::lit("yes") | "no" | "true" | "false"][count];
        array = '[' >> list >> ']';
        argument = number | string | boolean | array;
        list = *qi::lit(' ') >> argument >> *qi::lit(' ') >> -(',' >> list);
    }
    std::uint64_t total = 0;
    qi::rule<Place> number, string, boolean, array, argument, list;
};

struct SpiritFTP : qi::grammar<Place> {
    SpiritFTP() : SpiritFTP::base_type(lines)
    {
        const auto add = [this](const auto& range, auto&, bool&) { total += range.size(); };
        const auto count = [this](auto&&...) { ++total; };
        rest = qi::raw[*(qi::char_ - '\r' - '\n')][add];
        skipped = *(qi::char_ - '\r' - '\n');
        user = "USER" >> rest;
        passwd = "PASS" >> rest;
        quit = qi::raw[qi::lit("QUIT")][count] >> skipped;
        auth = "AUTH" >> +qi::lit(' ') >> qi::raw[qi::lit("TLS") | "SSL"][add] >> skipped;
        syst = qi::raw[qi::lit("SYST")][count] >> skipped;
        ftp = user | passwd | quit | auth | syst | skipped;
        line = &qi::char_ >> qi::raw[qi::eps][count] >> ftp >> qi::raw[qi::eps][count] >> "\r\n";
        lines = +line;
    }
    std::uint64_t total = 0;
    qi::rule<Place> rest, skipped, user, passwd, quit, auth, syst, ftp, line, lines;
};
#endif

/// The same by a regular expression that matches one argument, or bracket, after the other.
std::uint64_t countByRegex(const std::string& text)
{
    static const std::regex argument(
        R"( *(?:([-+]?[0-9]+(?:\.[0-9]*)?(?:[eE][-+]?[0-9]+)?)|("[^"]*"|'[^']*'|yes|no|true|false)|([\[\]])) *,?)");
    std::uint64_t total = 0;
    for (std::sregex_iterator i(text.begin(), text.end(), argument), end; i != end; ++i) {
        double number = 0.0;
        if ((*i)[1].matched) {
            std::from_chars(&*(*i)[1].first, &*(*i)[1].first + (*i)[1].length(), number);
            total += static_cast<std::uint64_t>(number * 4);
        } else if ((*i)[2].matched) {
            ++total;
        }
    }
    return total;
}

void argumentLists(qxBenchCase& work)
{
    const auto text = std::make_shared<const std::string>(argumentList());
    work.amount = static_cast<double>(text->size());
    work.add("qxbase", [text, parser = std::make_shared<ArgumentCounter>()] { return parser->count(*text); });
#if defined(QX_PEER_SPIRIT)
    work.add("boost::spirit", [text, grammar = std::make_shared<SpiritArguments>()] {
        grammar->total = 0;
        Place place = text->begin();
        return qi::parse(place, text->end(), *grammar) && place == text->end() ? grammar->total : 0;
    });
#endif
    work.add("std::regex", [text] { return countByRegex(*text); });
}
const qxBenchEntry ARGUMENTS("rules/argument-list", QX_BENCH_MEGABYTES, argumentLists);

void argumentValues(qxBenchCase& work)
{
    const auto text = std::make_shared<const std::string>(argumentList());
    work.amount = static_cast<double>(text->size());
    work.add("qxbase", [text] {
        return std::uint64_t{
            qxDynamicTypeArgumentParser().parseArguments(text->data(), text->size()).entries()};
    });
}
const qxBenchEntry VALUES("rules/argument-values", QX_BENCH_MEGABYTES, argumentValues);

/// The same command lines, each matched as a whole.
std::uint64_t readByRegex(const std::string& text)
{
    static const std::regex line("(?:(USER|PASS)([^\\r\\n]*)|AUTH +(TLS|SSL)|(SYST|QUIT)|)[^\\r\\n]*\\r\\n");
    std::uint64_t total = 0;
    for (std::sregex_iterator i(text.begin(), text.end(), line), end; i != end; ++i) {
        total += 2 + static_cast<std::uint64_t>((*i)[2].length() + (*i)[3].length());
        if ((*i)[4].matched) ++total;
    }
    return total;
}

void ftpCommands(qxBenchCase& work)
{
    const auto text = std::make_shared<std::string>(ftpLines());
    work.amount = static_cast<double>(text->size());
    work.add("qxbase", [text, reader = std::make_shared<FTPReader>()] { return reader->read(*text); });
#if defined(QX_PEER_SPIRIT)
    work.add("boost::spirit", [text, grammar = std::make_shared<SpiritFTP>()] {
        grammar->total = 0;
        Place place = text->begin();
        return qi::parse(place, Place(text->end()), *grammar) ? grammar->total : 0;
    });
#endif
    work.add("std::regex", [text] { return readByRegex(*text); });
}
const qxBenchEntry FTP("rules/ftp-commands", QX_BENCH_MEGABYTES, ftpCommands);

constexpr unsigned int SCANS = 100;

void patterns(qxBenchCase& work)
{
    const qxString text("velocity = -12.75 ; 300");
    work.amount = SCANS;
    work.add("qxbase", [text, pattern = qxString("%i = %n ; %l")] {
        std::uint64_t total = 0;
        for (unsigned int i = 0; i < SCANS; ++i) {
            bool ok = false;
            const qxArray<qxString> fields = parse(pattern, text, ok);
            total += fields[0].length() + static_cast<std::uint64_t>(fields[2].num());
        }
        return total;
    });
    work.add("sscanf", [text] {
        std::uint64_t total = 0;
        for (unsigned int i = 0; i < SCANS; ++i) {
            char name[32];
            double number = 0.0;
            long last = 0;
            const int count =
                std::sscanf(text.getString(), "%31[A-Za-z0-9_] = %lf ; %ld", name, &number, &last);
            qxBenchKeep(number);
            total += count == 3 ? std::string_view(name).size() + static_cast<std::uint64_t>(last) : 0;
        }
        return total;
    });
}
const qxBenchEntry PATTERNS("rules/pattern", QX_BENCH_NANOSECONDS, patterns);

} // namespace
