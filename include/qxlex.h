// Tokens of a text language, read from a byte stream one at a time.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxarray.h"
#include "qxdynamictype.h"
#include "qxserializedata.h"
#include "qxstring.h"

#include <cstddef>
#include <memory>
#include <type_traits>

struct qxLexState;

/// The type of a token, a bit, or a mask of several types.
typedef unsigned int qxLexDataType;
constexpr qxLexDataType QX_LEX_NONE = 0;          ///< nothing was read: the end of the data
constexpr qxLexDataType QX_LEX_CHAR = 1;          ///< one character that begins no other token: its code
constexpr qxLexDataType QX_LEX_IDENTIFIER = 2;    ///< its text
constexpr qxLexDataType QX_LEX_STRING = 4;        ///< the text between double quotes
constexpr qxLexDataType QX_LEX_SINGLE_STRING = 8; ///< the text between single quotes
constexpr qxLexDataType QX_LEX_INTEGER = 16;      ///< an integer of at most 32 bits and a sign: "num"
constexpr qxLexDataType QX_LEX_REAL = 32;         ///< a number with a fraction or an exponent: "num"
constexpr qxLexDataType QX_LEX_INT64 = 64;        ///< a larger integer: "llnum"
constexpr qxLexDataType QX_LEX_COMMENT = 128;     ///< the text of a comment without what encloses it
constexpr qxLexDataType QX_LEX_SPACE = 256;       ///< a run of white space: the number 32
constexpr qxLexDataType QX_LEX_SIGN = 512;        ///< a "+" or "-" that begins no number: its code
constexpr qxLexDataType QX_LEX_SET = 1024;        ///< the text between brackets

/// One token.
struct QX_API qxLexTokenData {
    qxLexDataType type = QX_LEX_NONE;
    qxDynamicType value;
};

/// All tokens of a UTF-8 text. `flags` names the types that are recognised besides those that always are: QX_LEX_STRING,
/// QX_LEX_SINGLE_STRING, QX_LEX_COMMENT (all three forms) and QX_LEX_SET; runs of white space are left out without
/// QX_LEX_SPACE.
QX_API qxArray<qxLexTokenData> getLexTokenDataArray(const qxString& text, unsigned int flags);

/// How the bytes of an adapter become characters.
enum qxLexEncoding : unsigned int {
    QX_LEX_BYTES = 0, ///< each is one
    QX_LEX_UTF8 = 1,
    QX_LEX_UTF16_LITTLE = 2,
    QX_LEX_UTF16_BIG = 3
};

/// Reads tokens from an adapter, with the same calls as binary data and mixed with them as one likes: it takes the bytes
/// of one token, and what it had to look at behind it stays in the adapter.
///
/// At first bytes are characters, and the only tokens are identifiers (a letter or "_", then letters, digits and "_"),
/// numbers, runs of white space (space, tab, CR and LF), signs and single characters; all others are switched on.
/// Letters and digits are those of ASCII. Characters are whole code points. Bytes that are none send the warning
/// "Utf lex encoding on faulty data set" and count as the character 0, once for each faulty sequence.
///
/// A number is digits, with a sign before them if there is one, so "a-5" is an identifier and a number. The decimal
/// character and the letter "e" belong to it only where a digit follows. "0x" begins a hexadecimal integer, other zeros at
/// the start mean nothing. Integers beyond 64 bits become the nearest, hexadecimal ones of 16 digits keep their bits.
/// A zero has no sign.
///
/// A quote or bracket that is never closed is a single character, and what follows it is read as if it were not there. A
/// comment that is not closed goes on to the end of the data. No token has more than 16,777,216 bytes: what is left of it
/// is the next one, and closers are looked for no farther.
///
/// Lifetime: holds no adapter; a token stays until the next is read.
/// Threads:  one thread at a time, as the adapter.
/// Errors:   bad input is only what the encoding refuses. A text of more than 65,535 bytes is cut there in the values,
///           with a warning; write gives all of it.
class QX_API qxSerializeLex : public qxSerializeData
{
public:
    /// With `strings` set as useStrings, with `comments` set as useSlashComment and useComment.
    explicit qxSerializeLex(unsigned char strings = 0, unsigned char comments = 0);
    ~qxSerializeLex() noexcept(false) override;
    qxSerializeLex(const qxSerializeLex&) = delete;
    qxSerializeLex& operator=(const qxSerializeLex&) = delete;

    // What is a token. All switches are off at first

    void useHashComment(unsigned char on);  ///< from "#" to the end of the line
    void useSlashComment(unsigned char on); ///< from "//" to the end of the line, which does not belong to it
    void useComment(unsigned char on);      ///< from "/*" to "*/"
    void useStrings(unsigned char on);      ///< from a double or a single quote to the next
    void useSet(unsigned char on);          ///< from "[" to the next "]"

    /// In strings and sets a backslash hides the character behind it, whatever that is. Both stay in the value.
    void useEscape(unsigned char on);

    /// Identifiers begin with characters above 127, too, and may hold these, "-" and ".".
    void usePlainIdentifier(unsigned char on);

    /// Every character is a token of its own, white space too.
    void useTokensOnly(unsigned char on);

    /// Numbers are hexadecimal integers, with or without "0x", and come before identifiers: "face" is one.
    void useHexMode(unsigned char on);

    /// Separates the fraction; at first the full stop.
    void useDecimalToken(unsigned short character);

    /// Ends a token after so many characters; what is left of it is the next token. 0, the start, sets no end.
    void setMaxScanTokens(unsigned int count);

    /// Takes over all switches of `other`, those of the encoding as well.
    void useSwitchesOf(const qxSerializeLex& other);

    // How bytes become characters

    /// UTF-16 of the given byte order; wins over useUtf8.
    void useUnicode(unsigned char on, unsigned char bigEndian = 0);
    void useUtf8(unsigned char on);
    qxLexEncoding getEncoding() const;

    // Reading

    /// Reads one token; at the end of the data one of the type QX_LEX_NONE.
    void read(qxSerializeAdapter* adapter) override;

    /// Reads one character as a token of the type QX_LEX_CHAR, whatever the switches say, and returns its code; at the end
    /// of the data 0.
    unsigned int getLexToken(qxSerializeAdapter* adapter);

    qxLexDataType getDataType() const { return m_type; }

    /// The value; "void" when nothing was read.
    qxDynamicType getData() const;
    qxLexTokenData getTokenData() const;

    /// Characters of the token as it was read.
    unsigned int getTokenSize() const;

    /// The token as it was read. Raises the qxFatalError "qxQueue:pop out of data" when there is none: before the first is
    /// read, at the end of the data, and after it was given back.
    qxString getScannedBuffer() const;

    /// The place of the token's first character, from 1, among the tokens that were read; lines end with a line feed.
    unsigned int getLine() const;
    unsigned int getColumn() const;
    void setLine(unsigned int line);
    void setColumn(unsigned int column);

    /// Writes the bytes of the token as they were read.
    void write(qxSerializeAdapter* adapter) override;

    /// Bytes that write produces.
    unsigned int getDataSize(qxSerializeAdapter* adapter) override;

    // Giving back

    /// Gives the whole token back, so that the next read finds it again.
    void pushBack(qxSerializeAdapter* adapter) override;

    /// Gives one character back; the one that was read last as the bytes that it was.
    void pushBack(qxSerializeAdapter* adapter, unsigned int character);

    /// Puts a character into a queue that is read before the adapter: at its end, or with qPushBack at its front. What the
    /// encoding has no bytes for becomes U+FFFD, and "?" where bytes are characters.
    void qPush(unsigned int character);
    void qPushBack(unsigned int character);

private:
    friend struct qxLexTokenReader;

    std::unique_ptr<qxLexState> m_state;
    qxLexDataType m_type = QX_LEX_NONE; // of the token that was read last
};

/// True when there is a token of this index, its type is in `mask` and its value equals `value`.
QX_API bool checkLexToken(const qxArray<qxLexTokenData>& tokens, std::size_t index, qxLexDataType mask,
                          const qxDynamicType& value);

/// True when there is a token of this index and its type is in `mask`; `value`, unless it is null, then receives its value.
QX_API bool checkLexToken(const qxArray<qxLexTokenData>& tokens, std::size_t index, qxLexDataType mask,
                          qxDynamicType* value);

/// So that 0 is a number here, and no pointer.
template <class Number>
requires std::is_arithmetic_v<Number>
bool checkLexToken(const qxArray<qxLexTokenData>& tokens, std::size_t index, qxLexDataType mask, Number value)
{
    return checkLexToken(tokens, index, mask, qxDynamicType(value));
}
