// The built-in token parsers: their names, and what they match.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxbasicparser.h"
#include "text/qxcharset.h"

#include <string_view>

/// A parser function of any owner.
typedef qxParseResult (qxBasicParser::*qxParserFunction)();

struct qxTokenParser {
    std::string_view name;
    qxParserFunction function;
    std::string_view first; ///< the text of the set of characters that what it matches begins with
    bool isOne;             ///< it matches exactly one of these
};

/// The one of this name or function; null when there is none.
const qxTokenParser* qxFindTokenParser(std::string_view name);
const qxTokenParser* qxFindTokenParser(qxParserFunction function);
