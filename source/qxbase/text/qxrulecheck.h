// Looking rules through for what will not work.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxruleset.h"
#include "text/qxruleprogram.h"

/// See qxRuleSet::check. A function that is null may do anything, also nothing.
qxArray<qxRuleFinding> qxCheckRules(const qxRuleCode& code, const qxParserFunctions& functions);
