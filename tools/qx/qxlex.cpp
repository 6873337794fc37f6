// SPDX-License-Identifier: see LICENSE

#include "qxcommands.h"
#include "qxinput.h"
#include "qxoutput.h"

#include "qxlex.h"

namespace
{

constexpr qxLexDataType TEXTS =
    QX_LEX_IDENTIFIER | QX_LEX_STRING | QX_LEX_SINGLE_STRING | QX_LEX_COMMENT | QX_LEX_SET;

unsigned short parseCharacter(const std::string& text)
{
    unsigned char size = 0;
    const unsigned int code = text.empty() ? 0 : qxUTF8ToULong(text.c_str(), &size);
    if (size == 0 || size != text.size() || code > 0xFFFF)
        throw qxUsageError("'" + text + "' is no character of 16 bits");
    return static_cast<unsigned short>(code);
}

void setSwitches(qxSerializeLex& lexer, const qxCommandLine& line)
{
    lexer.useStrings(line.hasOption("--strings"));
    lexer.useComment(line.hasOption("--comments"));
    lexer.useSlashComment(line.hasOption("--slash"));
    lexer.useHashComment(line.hasOption("--hash"));
    lexer.useSet(line.hasOption("--set"));
    lexer.useEscape(line.hasOption("--escape"));
    lexer.useHexMode(line.hasOption("--hex"));
    lexer.useTokensOnly(line.hasOption("--tokens-only"));
    lexer.useUtf8(!line.hasOption("--bytes"));
    if (line.hasOption("--decimal")) lexer.useDecimalToken(parseCharacter(line.getOptionText("--decimal")));
}

qxStatus runLex(qxReport&, const qxCommandLine& line)
{
    qxSerializeLex lexer;
    setSwitches(lexer, line);
    const qxInput input = openInput(line.getArgumentText(0));
    while (!isInterrupted()) {
        lexer.read(input.adapter);
        const qxLexTokenData token = lexer.getTokenData();
        if (token.type == QX_LEX_NONE) break;
        const qxString value = (token.type & TEXTS) != 0 ? token.value.getString() : token.value.asString();
        writeOutput(std::to_string(lexer.getLine()) + ":" + std::to_string(lexer.getColumn()) + " " +
                    std::to_string(token.type) + " " +
                    ((token.type & TEXTS) != 0 ? quote(viewOf(value)) : std::string(viewOf(value))) + "\n");
    }
    checkInput(input);
    return qxStatus::DONE;
}

} // namespace

void declareLex(qxTool& tool)
{
    tool.add("lex", "prints the tokens that a text is made of", runLex)
        .addArgument("FILE", "the text")
        .addOption("--strings", "", "what stands in quotes is a token")
        .addOption("--comments", "", "comments /* */ are")
        .addOption("--slash", "", "comments // are")
        .addOption("--hash", "", "comments # are")
        .addOption("--set", "", "sets in brackets are")
        .addOption("--escape", "", "a backslash in a text or set hides the character behind it")
        .addOption("--hex", "", "numbers are hexadecimal")
        .addOption("--decimal", "C", "numbers have fractions, behind this character")
        .addOption("--tokens-only", "", "each character is a token")
        .addOption("--bytes", "", "each byte is a character; without it the text is UTF-8");
}
