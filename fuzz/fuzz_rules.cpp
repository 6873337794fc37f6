// Runs any bytes as rules on any bytes as input: with all alternatives left out that can be left out, and with none; in one
// block and in pieces. Neither must make a difference.
// SPDX-License-Identifier: see LICENSE

#include "qxmessage.h"
#include "qxserializeadaptermemory.h"
#include "qxstringparser.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

namespace
{

void require(bool condition)
{
    if (!condition) std::abort();
}

/// Takes messages and drops them.
class Silence final : public qxMessageReceiverInterface
{
public:
    void onMessage(const qxString&, qxMessageLevel, const char*) override {}
};

/// A stream that hands out a few bytes at a time.
class Pieces final : public qxSerializeAdapter
{
public:
    Pieces(std::string_view bytes, std::size_t size) : m_bytes(bytes), m_size(size) {}

protected:
    using qxSerializeAdapter::write_imp;
    void write_imp(unsigned char) override {}
    unsigned char read_imp() override { return static_cast<unsigned char>(m_bytes[m_next++]); }
    unsigned int read_imp(unsigned char* buffer, unsigned int count) override
    {
        const auto taken = static_cast<unsigned int>(std::min<std::size_t>(count, m_bytes.size() - m_next));
        std::memcpy(buffer, m_bytes.data() + m_next, taken);
        m_next += taken;
        return taken;
    }
    qxUInt64 length_imp() override { return std::min<std::size_t>(m_size, m_bytes.size() - m_next); }

private:
    const std::string_view m_bytes;
    std::size_t m_next = 0;
    const std::size_t m_size;
};

/// Every name of "f" and something else is a function that takes a mark and writes down what it was called with; fNo does
/// not match then.
class Parser final : public qxStringParser
{
public:
    qxParseResult parseFunction(const qxString& name) override
    {
        if (!name.isFirst('f') || name.length() < 2) return qxStringParser::parseFunction(name);
        qxString text;
        if (!takeMarkedText(text)) return QX_PARSE_ERROR;
        m_told +=
            std::string(name.getString()) + "\x01" + std::string(text.getString(), text.length()) + "\x02";
        pushString(name);
        return name == "fNo" ? QX_PARSE_NO_MATCH : QX_PARSE_OK;
    }

    /// What happened, and how it ended.
    std::string run(qxSerializeAdapter& input)
    {
        m_told.clear();
        clearStrings();
        setAdapter(&input);
        const qxParseResult result = parseRule("main");
        require((result == QX_PARSE_ERROR) == hasError());
        require(result != QX_PARSE_NO_MATCH || getTokenPos() == 0);
        require(getFarthestPosition() >= getTokenPos() || result != QX_PARSE_NO_MATCH);
        std::string told =
            m_told + parseResultString(result) + std::to_string(getTokenPos()) + getError().getString();
        if (result != QX_PARSE_ERROR) {
            for (const qxString& text : getStrings())
                told += "\x03" + std::string(text.getString(), text.length());
        }
        getExpected();
        setAdapter(nullptr);
        return told;
    }

private:
    std::string m_told;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count)
{
    static Silence* const silence = [] {
        auto* const made = new Silence;
        qxMessage::addMessageReceiver(made);
        return made;
    }();
    require(silence != nullptr);
    if (count == 0) return 0;

    const std::string_view all(reinterpret_cast<const char*>(bytes) + 1, count - 1);
    const std::string_view rules = all.substr(0, all.find("\n~\n"));
    std::string input(all.substr(std::min(all.size(), rules.size() + 3)));
    Parser parser;
    parser.useFirstInFirstOut(bytes[0] & 1);
    parser.setMaxSteps(2000);
    parser.setMaxDepth(200);
    if (!parser.setParserString(rules.data(), rules.size())) return 0;
    parser.checkRules();

    // A step limit that depends on the input's length would let a fuzzer wait for long.
    if (input.size() > 64) input.resize(64);
    qxSerializeAdapterMemory memory(input.data(), static_cast<unsigned int>(input.size()));
    const std::string told = parser.run(memory);
    bool isLimited = parser.hasReachedLimit();
    parser.useTrace(1); // then everything is run
    Pieces pieces(input, 1 + bytes[0] % 8);
    const std::string toldAgain = parser.run(pieces);
    isLimited = isLimited || parser.hasReachedLimit();
    require(isLimited || told == toldAgain);
    return 0;
}
