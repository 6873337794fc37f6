// Dynamic values that are no texts and hold no others, as text in a document.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "dynamic/qxdynamicparts.h"

#include <string>
#include <string_view>

/// The number as a text that reads back to the same bits: the shortest digits, "inf", "nan", and with what else
/// there is "nan:" and the bits.
std::string qxXmlNumberText(double number);

/// Reads such a text, around which white space may stand.
bool qxXmlReadNumber(std::string_view text, double& number);

/// The text of a block of the kind; empty for kinds that have none of their own.
std::string qxXmlPlainText(qxDynamicKind kind, qxDynamicBytes block);

/// Reads the text into a block of the kind. Returns what the text should have been, null when it is that.
const char* qxXmlReadPlain(qxDynamicKind kind, std::string_view text, std::string& block);
