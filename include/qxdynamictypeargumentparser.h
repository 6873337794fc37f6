// Lists of values as text.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxarray.h"
#include "qxbasicparser.h"
#include "qxdynamictype.h"

#include <cstddef>
#include <memory>

/// Reads values with commas between them: numbers, texts in quotes of either kind, the words yes, no, true and false in
/// any case, GUIDs in braces, and lists in brackets.
///
/// | text | value |
/// |---|---|
/// | `1.5`, `-3e8` | "num" |
/// | `4294967296` | "llnum": whole numbers beyond 32 bits |
/// | `"it's"`, `'say "no"'` | "str", without the quotes |
/// | `yes`, `True` | "num", 1 for yes and true, 0 for no and false |
/// | `{01234567-89ab-cdef-0123-456789abcdef}` | "guid" |
/// | `[1, [2, 3], []]` | "array" |
///
/// Spaces may stand around commas. An empty text is an empty list.
class QX_API qxDynamicTypeArgumentParser : public qxBasicParser
{
public:
    /// The values have `separator`, which is not empty, between them. With `hasEscapes` a backslash and its double, and
    /// \xHH for a byte, are read in quotes as qxDynamicType::asString writes them; else backslashes are like all others.
    explicit qxDynamicTypeArgumentParser(const qxString& separator = ",", bool hasEscapes = false);
    ~qxDynamicTypeArgumentParser() noexcept(false) override;

    /// The values of `length` bytes of UTF-8. Where they end before the text does the error "Not All arguments were
    /// parsed" is set, and "Array not properly closed" where a bracket is missing; then these are the values before
    /// the fault.
    qxArray<qxDynamicType> parseArguments(const char* text, std::size_t length);
    qxArray<qxDynamicType> parseArguments(const qxString& text)
    {
        return parseArguments(text.getString(), text.length());
    }

protected:
    qxUInt64 saveState() override;
    void restoreState(qxUInt64 state, bool isFinal) override;

private:
    struct Values;

    qxParseResult fNum();
    qxParseResult fString();
    qxParseResult fBool();
    qxParseResult fGUID();
    qxParseResult fArrayBegin();
    qxParseResult fArrayEnd();
    qxArray<qxDynamicType> takeValues(unsigned int before);

    const std::unique_ptr<Values> m_values;
    const bool m_hasEscapes;
};
