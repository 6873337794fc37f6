// SPDX-License-Identifier: see LICENSE

#include "qxstringtokenizer.h"

#include "qxmemory.h"
#include "qxserializeadaptermemory.h"
#include "text/qxlexcharacter.h"

#include <string>
#include <vector>

namespace
{

std::string encode(const wchar_t* text, std::size_t length)
{
    std::string bytes;
    for (std::size_t i = 0; i < length; ++i) {
        auto code = static_cast<unsigned int>(text[i]);
        if (sizeof(wchar_t) == 2 && (code & 0xFC00) == 0xD800 && i + 1 < length &&
            (static_cast<unsigned int>(text[i + 1]) & 0xFC00) == 0xDC00)
            code = 0x10000 + ((code - 0xD800) << 10) + (static_cast<unsigned int>(text[++i]) - 0xDC00);
        unsigned char encoded[4];
        const unsigned int size = qxEncodeCharacter(qxTokenForm::UTF8, code, encoded);
        bytes.append(encoded, encoded + size);
    }
    return bytes;
}

} // namespace

/// The text and how much of it was read.
struct qxStringTokenizer::Text {
    explicit Text(std::string text) : bytes(std::move(text)), memory(bytes.data(), sizeOf(bytes)) {}

    static unsigned int sizeOf(const std::string& text)
    {
        if (text.size() > 0xFFFFFFFF) qxThrowBadAlloc(__FILE__, __LINE__);
        return static_cast<unsigned int>(text.size());
    }

    /// What is left, as one piece.
    const std::string& getRest()
    {
        std::string rest(static_cast<std::size_t>(memory.length()), 0);
        memory.read(reinterpret_cast<unsigned char*>(rest.data()), sizeOf(rest));
        bytes.swap(rest);
        memory.reset(bytes.data(), sizeOf(bytes));
        return bytes;
    }

    std::string bytes;
    qxSerializeAdapterMemory memory;
};

qxStringTokenizer::qxStringTokenizer(const qxString& text)
    : qxStringTokenizer(text.getString(), text.length())
{}

qxStringTokenizer::qxStringTokenizer(const char* text, std::size_t length)
    : m_text(std::make_unique<Text>(std::string(text, length)))
{
    useUtf8(1);
}

qxStringTokenizer::qxStringTokenizer(const wchar_t* text, std::size_t length)
    : m_text(std::make_unique<Text>(encode(text, length)))
{
    useUtf8(1);
}

qxStringTokenizer::~qxStringTokenizer() noexcept(false) = default;

bool qxStringTokenizer::hasData() const
{
    return m_text->memory.hasData() != 0;
}

qxLexDataType qxStringTokenizer::getDataType()
{
    read(&m_text->memory);
    return qxSerializeLex::getDataType();
}

qxLexTokenData qxStringTokenizer::getTokenData()
{
    read(&m_text->memory);
    return qxSerializeLex::getTokenData();
}

void qxStringTokenizer::pushBack()
{
    qxSerializeLex::pushBack(&m_text->memory);
}

void qxStringTokenizer::pushBack(const qxString& text)
{
    m_text->memory.pushBack(reinterpret_cast<const unsigned char*>(text.getString()), text.length());
}

qxArray<qxLexTokenData> qxStringTokenizer::getRemainingTokens() const
{
    qxSerializeLex lexer;
    lexer.useSwitchesOf(*this);
    Text rest(m_text->getRest());
    std::vector<qxLexTokenData> tokens;
    for (lexer.read(&rest.memory); lexer.getDataType() != QX_LEX_NONE; lexer.read(&rest.memory))
        tokens.push_back(lexer.getTokenData());
    return {tokens.data(), tokens.size()};
}

qxString qxStringTokenizer::getRemainingBuffer() const
{
    const std::string& rest = m_text->getRest();
    return {rest.data(), rest.size()};
}
