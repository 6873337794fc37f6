// Takes any bytes apart by any bytes as a pattern: the translation is a rule set that does the same, and asking again gives
// the same answer.
// SPDX-License-Identifier: see LICENSE

#include "qxmessage.h"
#include "qxstringparser.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
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

std::string tell(qxParseResult result, const qxArray<qxString>& strings)
{
    std::string told = qxBasicParser::parseResultString(result);
    for (const qxString& text : strings) told += "\x01" + std::string(text.getString(), text.length());
    return told;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count)
{
    static Silence* const silence = [] {
        auto* const made = new Silence;
        qxMessage::addMessageReceiver(made);
        return made;
    }();
    require(silence != nullptr);
    if (count == 0 || count > 1000) return 0;

    const std::string_view all(reinterpret_cast<const char*>(bytes) + 1, count - 1);
    const std::string_view patternText = all.substr(0, all.find('\n'));
    const std::string_view text = all.substr(std::min(all.size(), patternText.size() + 1)).substr(0, 64);
    const qxString pattern(patternText.data(), patternText.size());
    const char16_t decimals[] = {u'.', u',', u'\'', u'\\', u'%', u'\u20AC', u';', 0};
    const char16_t decimal = decimals[bytes[0] % std::size(decimals)];

    // Raw rule text can ask for more work than a fuzzer waits for.
    const qxString rules = qxStringParser::translatePattern(pattern, decimal);
    qxStringParser parser;
    parser.setMaxSteps(2000);
    if (!parser.setParserString(rules)) return 0;
    qxParseResult expected = parser.parseText(text.data(), text.size());
    if (parser.hasReachedLimit()) return 0;
    if (expected == QX_PARSE_OK && parser.getTakenBytes() < text.size()) expected = QX_PARSE_NO_MATCH;

    for (int again = 0; again < 2; ++again) {
        qxArray<qxString> strings;
        const qxParseResult result =
            qxStringParser::parseArguments(pattern, text.data(), text.size(), strings, decimal);
        require(result == expected);
        require(result == QX_PARSE_ERROR || tell(result, strings) == tell(expected, parser.getStrings()));
    }
    static int runs = 0;
    if (++runs % 64 == 0) qxStringParser::cleanUpParsers();
    return 0;
}
