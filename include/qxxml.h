// XML: the reader and writer.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxxmlsax.h"
