// The declaration of a command.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxcommandline.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

struct qxCommandParts {
    struct Option {
        std::string shortName; // with its dashes; one of the names may be missing
        std::string longName;
        std::string value; // empty: it takes none
        std::string summary;
        std::string standard;    // its value where it is not given
        bool isQuestion = false; // where it is given nothing is missing
        bool isInherited = true; // by the commands beneath

        bool isNamed(std::string_view text) const
        {
            return !text.empty() && (text == shortName || text == longName);
        }
        const std::string& getName() const { return longName.empty() ? shortName : longName; }

        /// What its value can be; none when it can be anything.
        std::vector<std::string> getChoices() const;
    };

    struct Argument {
        std::string name;
        std::string summary;
        qxArgumentNumber number;

        bool isNeeded() const { return number == QX_ARGUMENT_ONE || number == QX_ARGUMENT_SOME; }
        bool isRepeated() const { return number == QX_ARGUMENT_SOME || number == QX_ARGUMENT_ANY; }
    };

    /// Commands have their destructor for themselves.
    struct Deleter {
        void operator()(qxCommand* command) const { delete command; }
    };

    static std::string bytesOf(const qxString& text) { return {text.getString(), text.length()}; }

    static const qxCommandParts& of(const qxCommand& command) { return *command.m_parts; }

    void add(const Option& option, const qxString& names);

    /// Of this command and of those above it.
    const Option* findOption(std::string_view name) const;
    std::vector<const Option*> getAllOptions() const;
    const qxCommandParts* findCommand(std::string_view word) const;

    /// The names from beneath the program on, separated by blanks.
    std::string getPath() const;

    std::string name;
    std::string summary;
    std::string description;
    std::string footer;
    std::string heading;     // what it stands under in the help of the command above it
    std::string nextHeading; // of the commands declared from now on
    const qxCommandParts* parent = nullptr;
    std::vector<std::unique_ptr<qxCommand, Deleter>> commands;
    std::vector<Option> options;
    std::vector<Argument> arguments;
};
