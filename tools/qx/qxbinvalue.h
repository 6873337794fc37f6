// The values that `qx bin` packs and dumps.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxserializedata.h"

#include <memory>
#include <string>
#include <string_view>

/// A value of one of the types of `qx bin`, between its text and its bytes.
class qxBinValue
{
public:
    qxBinValue() = default;
    qxBinValue(const qxBinValue&) = delete;
    qxBinValue& operator=(const qxBinValue&) = delete;
    virtual ~qxBinValue() noexcept(false) {} // values on streams may raise when they go

    /// Takes the value from `text`; false when that is none, or one that the type cannot hold.
    virtual bool setText(std::string_view text) = 0;

    /// As setText takes it.
    virtual std::string getText() const = 0;

    virtual qxSerializeData& getData() = 0;
};

/// A value of the type of this name; null when there is no such type.
std::unique_ptr<qxBinValue> makeBinValue(std::string_view type, bool isLittleEndian);
