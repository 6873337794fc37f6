// Reads any bytes as tokens, with switches that the first bytes choose: where they lie, byte by byte, and after each token
// was given back, which must make no difference. The tokens must be all of the bytes.
// SPDX-License-Identifier: see LICENSE

#include "qxlex.h"
#include "qxmessage.h"
#include "qxserializeadaptermemory.h"
#include "qxstringtokenizer.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace
{

using Bytes = std::vector<unsigned char>;

void require(bool condition)
{
    if (!condition) std::abort();
}

/// A stream of single bytes.
class SingleBytes final : public qxSerializeAdapter
{
public:
    explicit SingleBytes(const Bytes& bytes) : m_bytes(bytes) {}

    Bytes written;

protected:
    using qxSerializeAdapter::read_imp;
    using qxSerializeAdapter::write_imp;
    void write_imp(unsigned char byte) override { written.push_back(byte); }
    unsigned char read_imp() override
    {
        require(m_next < m_bytes.size()); // a lexer asks first
        return m_bytes[m_next++];
    }
    unsigned char hasData_imp() override { return m_next < m_bytes.size(); }

private:
    const Bytes& m_bytes;
    std::size_t m_next = 0;
};

void setSwitches(qxSerializeLex& lexer, const std::uint8_t* choices)
{
    lexer.useHashComment(choices[0] & 1);
    lexer.useSlashComment(choices[0] & 2);
    lexer.useComment(choices[0] & 4);
    lexer.useStrings(choices[0] & 8);
    lexer.useSet(choices[0] & 16);
    lexer.useEscape(choices[0] & 32);
    lexer.usePlainIdentifier(choices[0] & 64);
    lexer.useHexMode(choices[0] & 128);
    lexer.useUtf8(choices[1] & 1);
    lexer.useUnicode(choices[1] & 2, choices[1] & 4);
    lexer.useTokensOnly((choices[1] & 24) == 24);
    lexer.setMaxScanTokens(choices[1] >> 6);
    lexer.useDecimalToken(choices[2]);
}

struct Token {
    qxLexTokenData data;
    Bytes bytes;
    unsigned int size;
    unsigned int line;
    unsigned int column;

    bool operator==(const Token& other) const
    {
        return data.type == other.data.type && data.value == other.data.value && bytes == other.bytes &&
               size == other.size && line == other.line && column == other.column;
    }
};

std::vector<Token> readAll(qxSerializeAdapter& adapter, const std::uint8_t* choices, bool isTwice)
{
    qxSerializeLex lexer;
    setSwitches(lexer, choices);
    std::vector<Token> tokens;
    const Bytes none;
    for (;;) {
        lexer.read(&adapter);
        if (lexer.getDataType() == QX_LEX_NONE) return tokens;
        if (isTwice) {
            lexer.pushBack(&adapter);
            lexer.read(&adapter);
        }
        SingleBytes written(none);
        lexer.write(&written);
        require(written.written.size() == lexer.getDataSize(nullptr));
        tokens.push_back({lexer.getTokenData(), written.written, lexer.getTokenSize(), lexer.getLine(),
                          lexer.getColumn()});
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    qxMessage::setMessageLevel(QX_LEVEL_ALWAYS);
    if (size < 3) return 0;
    Bytes content(data + 3, data + size);

    qxSerializeAdapterMemory memory(content.data(), static_cast<unsigned int>(content.size()));
    const std::vector<Token> tokens = readAll(memory, data, false);
    Bytes all;
    for (const Token& token : tokens) all.insert(all.end(), token.bytes.begin(), token.bytes.end());
    require(all == content);

    SingleBytes single(content);
    require(readAll(single, data, false) == tokens);
    memory.reset(content.data(), static_cast<unsigned int>(content.size()));
    require(readAll(memory, data, true) == tokens);

    qxStringTokenizer tokenizer(reinterpret_cast<const char*>(content.data()), content.size());
    tokenizer.useStrings(1);
    const unsigned int left = tokenizer.getRemainingTokens().entries();
    unsigned int count = 0;
    while (tokenizer.getDataType() != QX_LEX_NONE) ++count;
    require(count == left);
    return 0;
}
