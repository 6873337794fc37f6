// SPDX-License-Identifier: see LICENSE

#include "qxstring.h"

#include "core/qxascii.h"
#include "text/qxnumberscanner.h"

#include <algorithm>

qxInt64 qxString::num() const
{
    if (length() == 1 && qxIsDigit(*m_text)) return *m_text - '0';
    return qxIntegerOf(qxScanNumber(getString(), getString() + length(), '.'));
}

double qxString::real(char decimalPoint) const
{
    return qxDoubleOf(qxScanNumber(getString(), getString() + length(), decimalPoint));
}

qxInt64 qxString::dotValue(char separator) const
{
    constexpr unsigned int COMPONENTS = 4;
    constexpr unsigned int LARGEST_COMPONENT = 65535;

    const char* const end = getString() + length();
    const char* place = std::find_if_not(getString(), end, qxIsWhiteSpace);
    qxUInt64 components[COMPONENTS] = {};
    for (qxUInt64& component : components) {
        for (; place != end && qxIsDigit(*place); ++place)
            component = std::min<qxUInt64>(component * 10 + static_cast<unsigned int>(*place - '0'),
                                           LARGEST_COMPONENT);
        if (place == end || *place != separator) break;
        ++place;
    }
    return static_cast<qxInt64>(components[0] << 48 | components[1] << 32 | components[2] << 16 |
                                components[3]);
}

bool qxString::yesNo() const
{
    qxString text(*this);
    text.toLower().stripWhiteSpace();
    return text == "yes" || text == "true" || text.num() >= 1;
}
