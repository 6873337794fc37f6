// Dynamic values out of texts.
// SPDX-License-Identifier: see LICENSE

#include "qxdynamictypes.h"

#include "qxdynamictypeargumentparser.h"

qxDynamicType qxDynamicType::fromString(const qxString& text, const qxString& separator, bool* ok,
                                        bool hasBrackets)
{
    qxDynamicTypeArgumentParser parser(separator, true);
    const qxArray<qxDynamicType> values = parser.parseArguments(text);
    if (!parser.hasError() && hasBrackets && values.entries() > 1)
        parser.setError("Not All arguments were parsed");
    if (ok) *ok = !parser.hasError();
    if (parser.hasError()) return qxDynamicTypeError(parser.getError());
    if (!hasBrackets) return qxDynamicTypeArray(values);
    return values.entries() == 0 ? qxDynamicType() : values[0];
}
