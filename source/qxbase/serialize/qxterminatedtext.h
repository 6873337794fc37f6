// Text from a stream up to a terminator.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxstring.h"

class qxSerializeAdapter;

constexpr int QX_NO_TERMINATOR = -1;

/// Reads up to and with the byte `terminator`, or to the end of the data, and sets `text` to what came before
/// it, or to the first `maximum` bytes of that. False when there were more.
bool qxReadTerminatedText(qxSerializeAdapter& adapter, int terminator, unsigned int maximum, qxString& text);
