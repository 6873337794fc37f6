// The writer's state: form of the output, open elements, bytes on their way to the adapter.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxstring.h"

#include <vector>

/// What an object that writes keeps between its write... operations.
class qxXmlWriterState
{
public:
    /// The level of the open element; 0 outside the root.
    unsigned int getLevel() const { return static_cast<unsigned int>(m_names.size()); }

    /// The name of the element that is open at `level`, 1 to getLevel().
    const qxString& getName(unsigned int level) const { return m_names[level - 1]; }

private:
    std::vector<qxString> m_names;
};
