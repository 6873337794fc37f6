// SPDX-License-Identifier: see LICENSE

#include "qxcommands.h"
#include "qxinput.h"
#include "qxoptions.h"
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

void setSwitches(qxSerializeLex& lexer, const qxOptions& options)
{
    lexer.useStrings(options.has("--strings"));
    lexer.useComment(options.has("--comments"));
    lexer.useSlashComment(options.has("--slash"));
    lexer.useHashComment(options.has("--hash"));
    lexer.useSet(options.has("--set"));
    lexer.useEscape(options.has("--escape"));
    lexer.useHexMode(options.has("--hex"));
    lexer.useTokensOnly(options.has("--tokens-only"));
    lexer.useUtf8(!options.has("--bytes"));
    if (const auto decimal = options.get("--decimal")) lexer.useDecimalToken(parseCharacter(*decimal));
}

} // namespace

qxStatus runLex(qxReport&, const std::vector<std::string>& words)
{
    const qxOptions options(words, {{"--strings", false},
                                    {"--comments", false},
                                    {"--slash", false},
                                    {"--hash", false},
                                    {"--set", false},
                                    {"--escape", false},
                                    {"--hex", false},
                                    {"--decimal", true},
                                    {"--tokens-only", false},
                                    {"--bytes", false}});
    if (options.getArguments().size() != 1) throw qxUsageError("lex needs one file");
    qxSerializeLex lexer;
    setSwitches(lexer, options);
    const qxInput input = openInput(options.getArguments()[0]);
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
