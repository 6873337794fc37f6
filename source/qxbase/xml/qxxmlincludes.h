// The include instructions that items of trees came from.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxstring.h"

/// Items that were included know their instruction by a number of 24 bits, so that other items pay nothing for it.
/// The process keeps the instructions as long as an item holds their number.
///
/// Threads: any.
class qxXmlIncludes
{
public:
    /// A number for an instruction with this data, held once; 0 when all are in use.
    static unsigned int enter(const qxString& data);

    static void hold(unsigned int number);
    static void release(unsigned int number);
    static qxString getData(unsigned int number);
};
