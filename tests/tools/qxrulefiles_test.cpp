// SPDX-License-Identifier: see LICENSE

#include "tools/qxtooltest.h"

#include <algorithm>
#include <fstream>
#include <sstream>

namespace
{

/// The rule files of the examples, on texts that they take and on texts that they refuse.
class RuleFiles : public Tool
{
protected:
    /// What the rule file makes of `input`: the calls in brackets with their texts, the result, and what is left behind a bar or, for no
    /// match, where that was seen.
    std::string parse(const std::string& rules, const std::string& input, const std::string& start = "main")
    {
        std::ifstream source(QX_EXAMPLES "/rules/" + rules + ".rules", std::ios::binary);
        file("r", {std::istreambuf_iterator<char>(source), {}});
        EXPECT_EQ(answer("parse --check r"), "") << rules;
        run("parse r --start " + start, input);
        std::string told;
        std::istringstream lines(out);
        for (std::string line; std::getline(lines, line);) {
            if (line.starts_with("call: ")) told += "[" + withoutQuotes(line.substr(6)) + "] ";
            if (line.starts_with("result: ")) told += line.substr(8);
            if (line.starts_with("left: ") && err.empty()) told += " |" + withoutQuotes(line).substr(6);
        }
        return told + (err.empty() ? "" : " " + err.substr(0, err.find(" no match")));
    }

    /// The line without the quotes around the text at its end, and without the backslashes that hide quotes in it.
    static std::string withoutQuotes(std::string line)
    {
        line.pop_back();
        line.erase(line.find('"'), 1);
        for (std::size_t i = 0; i + 1 < line.size(); ++i) {
            if (line[i] == '\\' && (line[i + 1] == '"' || line[i + 1] == '\\')) line.erase(i, 1);
        }
        return line;
    }

    /// Each row is "INPUT => answer", with \r and \n in the input.
    template <class... Rows>
    void expectParses(const std::string& rules, const std::string& start, const Rows&... rows)
    {
        expectRows(
            [&](const std::string& input) {
                std::string text;
                for (std::size_t i = 0; i < input.size(); ++i) {
                    const bool isEscape = input.compare(i, 2, "\\r") == 0 || input.compare(i, 2, "\\n") == 0;
                    text += !isEscape ? input[i] : input[++i] == 'r' ? '\r' : '\n';
                }
                return parse(rules, text, start);
            },
            rows...);
    }
};

TEST_F(RuleFiles, argumentLists)
{
    expectParses(
        "arguments", "main", //
        "1, 'two',yes => [fNumber 1] [fString 'two'] [fBool yes] OK |",
        "[-1.5e3 , [ 2 ]] => [fArrayBegin [] [fNumber -1.5e3] [fArrayBegin [] [fNumber 2] [fArrayEnd ]] "
        "[fArrayEnd ]] OK |",
        "{00112233-4455-6677-8899-AABBCCDDEEFF} => [fGUID {00112233-4455-6677-8899-AABBCCDDEEFF}] OK |",
        "{0011223-4455-6677-8899-AABBCCDDEEFF} => No Match -:1:9:", "1 2 => [fNumber 1] No Match -:1:3:",
        "'open => No Match -:1:6:", " => No Match -:1:1:",
        "[1 => [fArrayBegin [] [fNumber 1] No Match -:1:3:");
}

TEST_F(RuleFiles, ftpCommands)
{
    expectParses("ftp", "main", //
                 "USER anna\\r\\nQUIT => [fStart ] [fUser  anna] [fStop USER anna] OK |QUIT",
                 "PASS\\r\\n => [fStart ] [fPass ] [fStop PASS] OK |",
                 "AUTH  TLS\\r\\n => [fStart ] [fAuth TLS] [fStop AUTH  TLS] OK |",
                 "AUTH RSA\\r\\n => [fStart ] [fStop AUTH RSA] OK |",
                 "SYST\\r\\n => [fStart ] [fSyst SYST] [fStop SYST] OK |",
                 "QUIT now\\r\\n => [fStart ] [fQuit QUIT now] [fStop QUIT now] OK |",
                 "NOOP => [fStart ] [fStop NOOP] No Match -:1:5:",
                 "USER anna\\n => [fStart ] [fUser  anna] [fStop USER anna] No Match -:1:10:");
    expectParses(
        "ftp", "session",
        "USER a b\\r\\nCWD x\\r\\nQUIT\\r\\n => [fCommand USER a b] [fCommand CWD x] [fCommand QUIT] OK |",
        "QUIT\\r\\nquit\\r\\n => [fCommand QUIT] No Match -:2:1:");
}

TEST_F(RuleFiles, registryKeys)
{
    expectParses("registry", "compressed", //
                 "a$(b) => [fString a] [fRegKey b] OK |", "$(a$(b))$ => [fRegKey a$(b] [fString )$] OK |",
                 "x$(y => [fString x] [fRegKey y] OK |$(y", " => OK |");
    expectParses("registry", "main",
                 "x$(y => [fString x] [fRegKey y] No Match -:1:5:", "$() => [fRegKey ] OK |");
}

TEST_F(RuleFiles, iniFiles)
{
    expectParses("ini", "main", //
                 "; c\\n[ a b ] # d\\r\\n\\n k 1 = v  w \\n => [fSection a b] [fKey k 1] [fValue v  w] OK |",
                 "a=\\nb=\" x\\\" ;\" => [fKey a] [fValue ] [fKey b] [fValue \" x\\\" ;\"] OK |", " => OK |",
                 "a => [fKey a] No Match -:1:2:", "[a\\n => [fSection a] No Match -:1:3:",
                 "a=\"x\\n => [fKey a] [fValue ] No Match -:1:3:",
                 "a=1\\n=2\\n => [fKey a] [fValue 1] No Match -:2:1:");
}

TEST_F(RuleFiles, commaSeparatedValues)
{
    expectParses(
        "csv", "main", //
        "a,b\\r\\n,\\r\\n => [fField a] [fField b] [fRecord a,b] [fField ] [fField ] [fRecord ,] OK |",
        "\"x,\"\"\\n\",y => [fQuoted x,\"\"\\n] [fField y] [fRecord \"x,\"\"\\n\",y] OK |", " => OK |",
        "\"a\"b => [fQuoted a] [fRecord \"a\"] No Match -:1:4:", "\"a => [fQuoted a] No Match -:1:3:",
        "a\"b => [fField a] [fRecord a] No Match -:1:2:");
}

TEST_F(RuleFiles, httpRequestHeads)
{
    expectParses("http", "main", //
                 "GET /a?b HTTP/1.1\\r\\nHost: a b \\r\\nX:\\r\\n\\r\\nbody => [fMethod GET] [fTarget /a?b] "
                 "[fVersion HTTP/1.1] [fName Host] [fValue a b] [fName X] [fValue ] OK |body",
                 "GET /a HTTP/11\\r\\n\\r\\n => [fMethod GET] [fTarget /a] No Match -:1:14:",
                 "GET  /a HTTP/1.1\\r\\n\\r\\n => [fMethod GET] No Match -:1:5:",
                 "G / HTTP/1.1\\r\\nA : b\\r\\n\\r\\n => [fMethod G] [fTarget /] [fVersion HTTP/1.1] [fName "
                 "A] No Match "
                 "-:2:2:",
                 "G / HTTP/1.1\\r\\n => [fMethod G] [fTarget /] [fVersion HTTP/1.1] No Match -:2:1:");
}

TEST_F(RuleFiles, shapes)
{
    expectParses("obj", "main", //
                 "# c\\nv 0 -.5 1e-2 # d\\nvt .5 1\\nvn 0 0 1\\n => [fVertex 0 -.5 1e-2] [fTexture .5 1] "
                 "[fNormal 0 0 1] "
                 "OK |",
                 "o a b\\ng\\ns off\\nusemtl m\\nf 1 2/3 4//5 \\\\n -6/7/8\\n => [fObject a b] [fSmooth off] "
                 "[fMaterial m] "
                 "[fFace 1 2/3 4//5 \\\\n -6/7/8] OK |",
                 "l 1 2\\np 3\\n => [fLine 1 2] [fPoint 3] OK |",
                 "v 0 0\\n => No Match -:1:6:", "f 1 2\\n => No Match -:1:6:",
                 "f 1 2 0\\n => No Match -:1:7:", "x 1\\n => No Match -:1:1:", "vt\\n => No Match -:1:3:");
}

TEST_F(RuleFiles, accessLogs)
{
    expectParses(
        "accesslog", "main", //
        "::1 - a b [t:1] \"GET /\\\"\" 200 - => [fHost ::1] [fTime t:1] [fRequest GET /\\\"] [fStatus 200] "
        "[fSize -] OK |",
        "h - - [t] \"r\" 404 7 \"from\" \"by\"\\n => [fHost h] [fTime t] [fRequest r] [fStatus 404] [fSize "
        "7] "
        "[fReferer from] [fAgent by] OK |",
        "h - - [t] \"r\" 40 7\\n => [fHost h] [fTime t] [fRequest r] No Match -:1:17:",
        "h - - t \"r\" 404 7\\n => [fHost h] No Match -:1:18:");
}

} // namespace
