// Documents from files and from standard input.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxserializeadapter.h"

#include <string>

/// A document that is being read.
struct qxInput {
    qxRefPointer<qxSerializeAdapter> adapter;

    /// Bytes of the whole document; of a stream those read so far.
    unsigned long long getSize() const { return countsItself ? *countsItself : size; }

    unsigned long long size = 0;
    const unsigned long long* countsItself = nullptr; // of a stream
};

/// Opens the file `name`, or standard input for "-"; raises qxFileError when that fails.
qxInput openInput(const std::string& name);

/// Raises qxFileError when reading `input` failed on the way.
void checkInput(const qxInput& input);

/// The next bytes of `input`, a block at most; false at its end. Raises qxFileError when reading fails.
bool readBlock(const qxInput& input, std::string& block);

/// All bytes of the file `name`, or of standard input for "-"; raises qxFileError when that fails.
std::string readAll(const std::string& name);
