// Tokens of a text in memory.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxlex.h"

/// The lexer of qxlex.h over a text of its own, which is UTF-8. What is a token is switched on as there.
///
/// Lifetime: keeps a copy of the text.
/// Threads:  one thread at a time.
/// Errors:   as qxSerializeLex.
class QX_API qxStringTokenizer : private qxSerializeLex
{
public:
    explicit qxStringTokenizer(const qxString& text);

    /// `length` bytes, or wide units.
    qxStringTokenizer(const char* text, std::size_t length);
    qxStringTokenizer(const wchar_t* text, std::size_t length);
    ~qxStringTokenizer() noexcept(false) override;

    using qxSerializeLex::setMaxScanTokens;
    using qxSerializeLex::useComment;
    using qxSerializeLex::useDecimalToken;
    using qxSerializeLex::useEscape;
    using qxSerializeLex::useHashComment;
    using qxSerializeLex::useHexMode;
    using qxSerializeLex::usePlainIdentifier;
    using qxSerializeLex::useSet;
    using qxSerializeLex::useSlashComment;
    using qxSerializeLex::useStrings;
    using qxSerializeLex::useTokensOnly;

    /// True when a character is left.
    bool hasData() const;

    /// Reads the next token and returns its type, or its type and value. Each call takes one token.
    qxLexDataType getDataType();
    qxLexTokenData getTokenData();

    // The token that was read last

    using qxSerializeLex::getColumn;
    using qxSerializeLex::getData;
    using qxSerializeLex::getLine;
    using qxSerializeLex::getScannedBuffer;
    using qxSerializeLex::getTokenSize;

    /// Gives it back.
    void pushBack();

    /// Puts `text` in front of what is left.
    void pushBack(const qxString& text);

    // What is left, without taking it

    qxArray<qxLexTokenData> getRemainingTokens() const;

    /// A text of more than 65,535 bytes raises qxFatalError.
    qxString getRemainingBuffer() const;

private:
    using qxSerializeLex::pushBack;

    struct Text;

    std::unique_ptr<Text> m_text;
};
