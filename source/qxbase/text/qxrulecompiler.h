// Rule sets from text.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "text/qxrulecode.h"

/// What keeps a text from being a rule set.
struct qxRuleSetFault {
    unsigned int rule = 0;  ///< the number of the rule, from 1
    unsigned int place = 0; ///< where it begins
};

/// Reads the rules of `code.text` and compiles their bodies. False when a name, "::=" or ";" is missing. Faults
/// inside a body become part of the code.
bool qxCompileRules(qxRuleCode& code, qxRuleSetFault& fault);
