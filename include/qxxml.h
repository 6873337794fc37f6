// XML: the reader and writer, and documents as trees.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxxmldom.h"
#include "qxxmlsax.h"
