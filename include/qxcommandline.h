// The command line of a program, from a declaration of what it may be.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxargumentparser.h"
#include "qxstring.h"

#include <memory>

struct qxCommandLineResult;
struct qxCommandParts;

/// How often an argument is given.
enum qxArgumentNumber : unsigned int {
    QX_ARGUMENT_ONE,      ///< once
    QX_ARGUMENT_OPTIONAL, ///< once or not at all
    QX_ARGUMENT_SOME,     ///< once or more often
    QX_ARGUMENT_ANY       ///< as often as one likes
};

/// What a command may be followed by: further commands, or arguments, and options.
///
/// Names of commands are letters, digits, "-" and "_", and begin with a letter or digit. Summaries are one sentence without
/// a full stop, for tables. Of a longer text lines that are too long are wrapped.
///
/// Lifetime: the command line's.
/// Errors:   a declaration that makes no sense raises qxFatalError.
class QX_API qxCommand
{
public:
    qxCommand(const qxCommand&) = delete;
    qxCommand& operator=(const qxCommand&) = delete;

    /// Declares a command beneath this one and returns it. Behind names of commands that are there, as in "book add", it
    /// stands beneath these.
    qxCommand& addCommand(const qxString& name, const qxString& summary);

    /// The commands declared from here on, and what is beneath them, stand under `heading` in the help.
    qxCommand& addHeading(const qxString& heading);

    /// Declares an option for this command and all beneath it, and returns this command. `names` are "--name", "-n", or
    /// both as "-n, --name". `value` is what messages call its value, or words separated by "|" when it can be only one of
    /// these; empty: it takes none. `standard` is its value where it is not given; empty: it then has none.
    qxCommand& addOption(const qxString& names, const qxString& value, const qxString& summary,
                         const qxString& standard = qxString());

    /// Declares an option that asks for something of its own, such as "--version": where it is given nothing is missing.
    /// It is for this command only.
    qxCommand& addQuestion(const qxString& names, const qxString& value, const qxString& summary);

    /// Declares the next argument and returns this command. Behind one that can be left out all can, and behind one that
    /// is repeated there is none.
    qxCommand& addArgument(const qxString& name, const qxString& summary,
                           qxArgumentNumber number = QX_ARGUMENT_ONE);

    /// Text for the help of this command, behind its summary.
    qxCommand& setDescription(const qxString& description);

    /// Text for the end of its help.
    qxCommand& setFooter(const qxString& footer);

protected:
    qxCommand(const qxString& name, const qxString& summary);
    ~qxCommand();

    std::unique_ptr<qxCommandParts> m_parts;

private:
    friend struct qxCommandParts;
};

/// Reads a command line by its declaration, and writes help, and completions for the shell, from the same.
///
/// Options stand anywhere behind the command that has them, as `--name value` or `--name=value`; a value may begin with "-".
/// `--` ends them. Negative numbers, and "-", are arguments; a digit that is declared as an option, such as "-4", is one.
/// Every command has "-h, --help"; "help" in the place of the name of a command is the same, so "help book add" asks as
/// "book add --help" does.
///
/// Lifetime: owns its declaration and what it read last.
/// Threads:  one thread at a time.
/// Errors:   a command line that does not fit is one line of text (getError), in which control characters are escaped.
class QX_API qxCommandLine : public qxCommand
{
public:
    /// Of the program `name`.
    qxCommandLine(const qxString& name, const qxString& summary);
    ~qxCommandLine();

    /// Reads the tokens from the one of index `first` on, and returns whether they fit. When help is asked for, what is
    /// missing is no error.
    bool parse(const qxArgumentParser& tokens, unsigned int first = 0);

    /// As above, from what `main` gets, in UTF-8: the first is the program's name. Those of UTF-8 may be of any length.
    bool parse(int count, const char* const* arguments);
    bool parse(int count, const wchar_t* const* arguments);

    qxString getError() const;

    // What was read

    /// The names of the command, separated by blanks; empty for the program itself.
    qxString getCommand() const;

    /// `name` is one of the option's names, with its dashes.
    bool hasOption(const qxString& name) const { return getOptionCount(name) > 0; }

    /// The last value of the option; where it was not given its standard, else `whenMissing`.
    qxString getOption(const qxString& name, const qxString& whenMissing = qxString()) const;

    /// The same for values of any length. The text is valid up to the next parse.
    const char* getOptionText(const qxString& name, const char* whenMissing = "") const;

    /// How often it was given, and each of its values.
    unsigned int getOptionCount(const qxString& name) const;
    qxString getOptionValue(const qxString& name, unsigned int index) const;

    unsigned int getArgumentCount() const;

    /// Empty when there is none of this index.
    qxString getArgument(unsigned int index) const;

    /// The same for arguments of any length. The text is valid up to the next parse.
    const char* getArgumentText(unsigned int index) const;
    bool isHelpAsked() const { return hasOption("--help"); }

    // From the declaration

    /// Help on a command, by its names separated by blanks; empty: on the program, with all its commands. Empty when there
    /// is no such command.
    qxString getHelp(const qxString& command = qxString()) const;

    /// What bash is to read so that it completes commands, options and values.
    qxString getCompletion() const;

private:
    std::unique_ptr<qxCommandLineResult> m_result;
};
