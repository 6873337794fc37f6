// SPDX-License-Identifier: see LICENSE

#include "qxregkeyexpandparser.h"

#include "core/qxuserkey.h"
#include "text/qxresultchain.h"
#include "text/qxrulerun.h"

#include <string>
#include <vector>

namespace
{

constexpr char RULES[] = "regkey ::= '$(' $ [^)]* fRegKey ')' ;\n"
                         "string ::= $ ( [^] - '$(' )+ fString ;\n"
                         "compressed ::= (string|regkey)* ;\n";

} // namespace

struct qxRegKeyExpandParser::Pieces {
    qxResultChain<qxString> chain;

    static std::shared_ptr<const qxRuleProgram> makeProgram()
    {
        return qxMakeRuleProgram(
            qxRuleSet::load(RULES, sizeof RULES - 1),
            {{"fRegKey", static_cast<qxParserFunction>(&qxRegKeyExpandParser::fRegKey)},
             {"fString", static_cast<qxParserFunction>(&qxRegKeyExpandParser::fString)}});
    }
};

qxRegKeyExpandParser::qxRegKeyExpandParser() : m_pieces(std::make_unique<Pieces>())
{
    static const std::shared_ptr<const qxRuleProgram>& program = *new std::shared_ptr<const qxRuleProgram>(
        Pieces::makeProgram()); // never destroyed: threads may go on
    useUtf8(1);
    rules().setProgram(program);
}

qxRegKeyExpandParser::~qxRegKeyExpandParser() noexcept(false) = default;

qxString qxRegKeyExpandParser::parse(const qxString& text)
{
    m_pieces->chain.clear();
    std::size_t taken = 0;
    if (parseBytes(text.getString(), text.length(), "compressed", taken) == QX_PARSE_ERROR) return qxString();

    std::vector<const qxString*> pieces;
    const qxResultChain<qxString>& chain = m_pieces->chain;
    for (unsigned int i = chain.getLast(); i != chain.NONE; i = chain.getPrevious(i))
        pieces.push_back(&chain[i]);
    std::string expanded;
    while (!pieces.empty()) {
        expanded.append(pieces.back()->getString(), pieces.back()->length());
        pieces.pop_back();
    }
    expanded.append(text.getString() + taken, text.length() - taken);
    if (expanded.size() <= qxString::MAX_LENGTH) return qxString(expanded.data(), expanded.size());
    setErrorText("Too many characters in qxString");
    return qxString();
}

qxString qxRegKeyExpandParser::getKey(const qxString& key)
{
    return qxGetUserKey(key.getString());
}

qxUInt64 qxRegKeyExpandParser::saveState()
{
    return m_pieces->chain.save();
}

void qxRegKeyExpandParser::restoreState(qxUInt64 state, bool isFinal)
{
    m_pieces->chain.restore(state, isFinal);
}

qxParseResult qxRegKeyExpandParser::fRegKey()
{
    qxString key;
    if (!takeMarkedText(key)) return QX_PARSE_ERROR;
    m_pieces->chain.push(getKey(key));
    return QX_PARSE_OK;
}

qxParseResult qxRegKeyExpandParser::fString()
{
    qxString text;
    if (!takeMarkedText(text)) return QX_PARSE_ERROR;
    m_pieces->chain.push(text);
    return QX_PARSE_OK;
}
