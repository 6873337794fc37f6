// SPDX-License-Identifier: see LICENSE

#include "qxlex.h"

#include "qxdynamictypes.h"
#include "qxerror.h"
#include "qxserializeadaptermemory.h"
#include "text/qxlexstate.h"

#include <vector>

qxSerializeLex::qxSerializeLex(unsigned char strings, unsigned char comments)
    : m_state(std::make_unique<qxLexState>())
{
    useStrings(strings);
    useSlashComment(comments);
    useComment(comments);
}

qxSerializeLex::~qxSerializeLex() noexcept(false) = default;

void qxSerializeLex::useHashComment(unsigned char on)
{
    m_state->options.hashComment = on != 0;
}

void qxSerializeLex::useSlashComment(unsigned char on)
{
    m_state->options.slashComment = on != 0;
}

void qxSerializeLex::useComment(unsigned char on)
{
    m_state->options.blockComment = on != 0;
}

void qxSerializeLex::useStrings(unsigned char on)
{
    m_state->options.strings = on != 0;
    m_state->options.singleStrings = on != 0;
}

void qxSerializeLex::useSet(unsigned char on)
{
    m_state->options.set = on != 0;
}

void qxSerializeLex::useEscape(unsigned char on)
{
    m_state->options.escape = on != 0;
    m_state->forgetOpeners();
}

void qxSerializeLex::usePlainIdentifier(unsigned char on)
{
    m_state->options.plainIdentifier = on != 0;
}

void qxSerializeLex::useTokensOnly(unsigned char on)
{
    m_state->options.tokensOnly = on != 0;
}

void qxSerializeLex::useHexMode(unsigned char on)
{
    m_state->options.hexMode = on != 0;
}

void qxSerializeLex::useDecimalToken(unsigned short character)
{
    m_state->options.decimal = character;
}

void qxSerializeLex::setMaxScanTokens(unsigned int count)
{
    m_state->options.maxCharacters = count;
}

void qxSerializeLex::useSwitchesOf(const qxSerializeLex& other)
{
    m_state->options = other.m_state->options;
    m_state->isUnicode = other.m_state->isUnicode;
    m_state->isBigEndian = other.m_state->isBigEndian;
    m_state->isUtf8 = other.m_state->isUtf8;
    m_state->forgetOpeners();
}

void qxSerializeLex::useUnicode(unsigned char on, unsigned char bigEndian)
{
    m_state->isUnicode = on != 0;
    m_state->isBigEndian = bigEndian != 0;
    m_state->setEncoding();
}

void qxSerializeLex::useUtf8(unsigned char on)
{
    m_state->isUtf8 = on != 0;
    m_state->setEncoding();
}

qxLexEncoding qxSerializeLex::getEncoding() const
{
    switch (m_state->options.form) {
    case qxTokenForm::UTF8:
        return QX_LEX_UTF8;
    case qxTokenForm::UTF16_LITTLE:
        return QX_LEX_UTF16_LITTLE;
    case qxTokenForm::UTF16_BIG:
        return QX_LEX_UTF16_BIG;
    case qxTokenForm::BYTE:
        break;
    }
    return QX_LEX_BYTES;
}

void qxSerializeLex::read(qxSerializeAdapter* adapter)
{
    m_type = m_state->readToken(*adapter, false);
}

unsigned int qxSerializeLex::getLexToken(qxSerializeAdapter* adapter)
{
    m_type = m_state->readToken(*adapter, true);
    return static_cast<unsigned int>(m_state->found.number);
}

qxDynamicType qxSerializeLex::getData() const
{
    const qxLexFound& found = m_state->found;
    const qxUInt64 number = found.isNegative ? 0 - found.number : found.number;
    switch (found.type) {
    case QX_LEX_NONE:
        return {};
    case QX_LEX_CHAR:
    case QX_LEX_SIGN:
        return static_cast<double>(found.number);
    case QX_LEX_INTEGER:
        return static_cast<double>(static_cast<qxInt64>(number));
    case QX_LEX_INT64:
        return qxDynamicTypeInt64(static_cast<qxInt64>(number));
    case QX_LEX_REAL:
        return m_state->getReal();
    case QX_LEX_SPACE:
        return static_cast<double>(' ');
    default:
        return m_state->getText(found.textBegin, found.textEnd);
    }
}

qxLexTokenData qxSerializeLex::getTokenData() const
{
    return {getDataType(), getData()};
}

unsigned int qxSerializeLex::getTokenSize() const
{
    return m_state->countCharacters();
}

qxString qxSerializeLex::getScannedBuffer() const
{
    if (m_state->found.size == 0) qxExceptionThrows::qxThrowFatal("qxQueue:pop out of data");
    return m_state->getText(0, m_state->found.size);
}

unsigned int qxSerializeLex::getLine() const
{
    return m_state->line;
}

unsigned int qxSerializeLex::getColumn() const
{
    return m_state->column;
}

void qxSerializeLex::setLine(unsigned int line)
{
    m_state->line = line;
}

void qxSerializeLex::setColumn(unsigned int column)
{
    m_state->column = column;
}

void qxSerializeLex::write(qxSerializeAdapter* adapter)
{
    adapter->write(m_state->bytes.data(), m_state->found.size);
}

unsigned int qxSerializeLex::getDataSize(qxSerializeAdapter*)
{
    return m_state->found.size;
}

void qxSerializeLex::pushBack(qxSerializeAdapter* adapter)
{
    m_state->giveBack(*adapter);
    m_type = m_state->found.type;
}

void qxSerializeLex::pushBack(qxSerializeAdapter* adapter, unsigned int character)
{
    m_state->giveBack(*adapter, character);
    m_type = m_state->found.type;
}

void qxSerializeLex::qPush(unsigned int character)
{
    m_state->queue.push_back(character);
}

void qxSerializeLex::qPushBack(unsigned int character)
{
    m_state->queue.insert(m_state->queue.begin(), character);
}

/// For what reads the tokens of a text, which can tell strings of either kind apart.
struct qxLexTokenReader {
    static void useStrings(qxSerializeLex& lexer, bool strings, bool singleStrings)
    {
        lexer.m_state->options.strings = strings;
        lexer.m_state->options.singleStrings = singleStrings;
    }
};

qxArray<qxLexTokenData> getLexTokenDataArray(const qxString& text, unsigned int flags)
{
    qxSerializeLex lexer;
    lexer.useUtf8(1);
    qxLexTokenReader::useStrings(lexer, (flags & QX_LEX_STRING) != 0, (flags & QX_LEX_SINGLE_STRING) != 0);
    const unsigned char hasComments = (flags & QX_LEX_COMMENT) != 0;
    lexer.useHashComment(hasComments);
    lexer.useSlashComment(hasComments);
    lexer.useComment(hasComments);
    lexer.useSet((flags & QX_LEX_SET) != 0);

    qxSerializeAdapterMemory memory(const_cast<char*>(text.getString()), text.length()); // only read
    std::vector<qxLexTokenData> tokens;
    for (lexer.read(&memory); lexer.getDataType() != QX_LEX_NONE; lexer.read(&memory)) {
        if (lexer.getDataType() != QX_LEX_SPACE || (flags & QX_LEX_SPACE) != 0)
            tokens.push_back(lexer.getTokenData());
    }
    return {tokens.data(), tokens.size()};
}

bool checkLexToken(const qxArray<qxLexTokenData>& tokens, std::size_t index, qxLexDataType mask,
                   const qxDynamicType& value)
{
    return index < tokens.entries() && (tokens[index].type & mask) != 0 && tokens[index].value == value;
}

bool checkLexToken(const qxArray<qxLexTokenData>& tokens, std::size_t index, qxLexDataType mask,
                   qxDynamicType* value)
{
    if (index >= tokens.entries() || (tokens[index].type & mask) == 0) return false;
    if (value) *value = tokens[index].value;
    return true;
}
