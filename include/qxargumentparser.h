// Command lines: options, their values and plain arguments.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include "qxarray.h"
#include "qxstring.h"

/// Splits a command line into options and plain arguments, and answers questions about them.
///
/// A text is split at white space; a quoted part keeps its blanks, and one at the start of a token is the whole token,
/// without its quotes. A quote without another is an ordinary character. There are no escapes and no comments, and every
/// token stays as it was written. An array is taken as it is, element by element.
///
/// A token is an option when it begins with the prefix, is longer than that, and what follows is no number, or is 0: "-x"
/// and "-0" are options, "-5" and "-" are arguments. The name of "--long" is "-long". The tokens behind an option, up to
/// the next one, are its values, and plain arguments as well.
///
/// Lifetime: a value.
/// Threads:  one thread at a time, or read by many.
/// Errors:   the last one is stored (hasError, getError). Where setSyntaxString and checkArgumentCount say so, and only
///           while exitOnError is on, the process ends. Texts of more than 65,535 bytes raise qxFatalError.
class QX_API qxArgumentParser
{
public:
    /// A token with the option prefix.
    struct QX_API qxArgOption {
        qxString name;              ///< without the prefix
        unsigned int position = 0;  ///< among all tokens, from 0
        unsigned char isOption = 1; ///< always
    };

    /// Any other token.
    struct QX_API qxArgArgument {
        qxString text;
        unsigned int position = 0;
        unsigned char isOption = 0; ///< never
    };

    /// The command line of a program, whose name is an argument like the others, in UTF-8. exitOnError is on, and
    /// setSyntaxString is called with a syntax that is not empty.
    qxArgumentParser(int count, const char* const* arguments, const qxString& syntax,
                     const qxString& prefix = "-");
    qxArgumentParser(int count, const wchar_t* const* arguments, const qxString& syntax,
                     const qxString& prefix = "-");

    /// Any text. exitOnError is off.
    explicit qxArgumentParser(const qxString& text, const qxString& prefix = "-");

    /// Replaces all by what `text` holds, and forgets the error. The syntax stays.
    void setArgumentString(const qxString& text, const qxString& prefix = "-");

    /// How the command line is to be written, for messages. While exitOnError is on and there is an option "help" or "h",
    /// in letters of either case, the syntax is sent as a notice, and the process ends with the status 0.
    void setSyntaxString(const qxString& syntax);
    const qxString& getSyntaxString() const { return m_syntax; }
    const qxString& getOptionPrefix() const { return m_prefix; }

    void exitOnError(bool on) { m_exitsOnError = on; }
    bool hasError() const { return !m_error.isEmpty(); }
    const qxString& getError() const { return m_error; }

    /// All tokens.
    unsigned int getTokenCount() const { return m_tokens.entries(); }

    // Options

    /// True when there is an option of this name. `position` then receives where the first one stands, and `count` the
    /// tokens from it up to the next option: itself and its values.
    bool hasOption(const qxString& name, unsigned char caseSensitive = 1, unsigned int* position = nullptr,
                   unsigned int* count = nullptr) const;

    /// A value of the option, counted from 0, or `whenMissing`. When the option is there but has fewer values, and
    /// `silent` is not set, the error "Missing argument %d for option '-%s'" is stored, with the value's number counted
    /// from 1. A text without a number is 0, one out of range the nearest that fits.
    qxString getOptionValue(const qxString& name, const qxString& whenMissing, unsigned int index = 0,
                            unsigned char caseSensitive = 1, unsigned char silent = 0);
    signed char getOptionValue(const qxString& name, signed char whenMissing, unsigned int index = 0,
                               unsigned char caseSensitive = 1, unsigned char silent = 0);
    unsigned char getOptionValue(const qxString& name, unsigned char whenMissing, unsigned int index = 0,
                                 unsigned char caseSensitive = 1, unsigned char silent = 0);
    short getOptionValue(const qxString& name, short whenMissing, unsigned int index = 0,
                         unsigned char caseSensitive = 1, unsigned char silent = 0);
    unsigned short getOptionValue(const qxString& name, unsigned short whenMissing, unsigned int index = 0,
                                  unsigned char caseSensitive = 1, unsigned char silent = 0);
    int getOptionValue(const qxString& name, int whenMissing, unsigned int index = 0,
                       unsigned char caseSensitive = 1, unsigned char silent = 0);
    unsigned int getOptionValue(const qxString& name, unsigned int whenMissing, unsigned int index = 0,
                                unsigned char caseSensitive = 1, unsigned char silent = 0);
    qxInt64 getOptionValue(const qxString& name, qxInt64 whenMissing, unsigned int index = 0,
                           unsigned char caseSensitive = 1, unsigned char silent = 0);
    qxUInt64 getOptionValue(const qxString& name, qxUInt64 whenMissing, unsigned int index = 0,
                            unsigned char caseSensitive = 1, unsigned char silent = 0);
    float getOptionValue(const qxString& name, float whenMissing, unsigned int index = 0,
                         unsigned char caseSensitive = 1, unsigned char silent = 0);
    double getOptionValue(const qxString& name, double whenMissing, unsigned int index = 0,
                          unsigned char caseSensitive = 1, unsigned char silent = 0);

    unsigned int getOptionCount() const { return m_options.entries(); }
    const qxDynamicArray<qxArgOption>& getOptions() const { return m_options; }

    /// The first option of this name with its values, separated by blanks; empty when there is none. Here and below tokens
    /// with white space in them, and empty ones, stand in double quotes.
    qxString getOptionString(const qxString& name, unsigned char caseSensitive = 1) const;

    /// All from the first option on.
    qxString getArgOptString() const;

    // Plain arguments, counted from 0. With `withoutValues` set those behind an option do not count

    unsigned int getArgumentCount(unsigned char withoutValues = 0) const;
    const qxDynamicArray<qxArgArgument>& getArguments() const { return m_arguments; }

    /// Empty when there is none of this index.
    qxString getArgument(unsigned int index, unsigned char withoutValues = 0) const;

    /// The whole command line; with `withoutValues` set the plain arguments that are no values.
    qxString getArgumentString(unsigned char withoutValues = 0) const;

    /// An argument converted as by getOptionValue, or `whenMissing`.
    qxString getArgumentValue(unsigned int index, const qxString& whenMissing,
                              unsigned char withoutValues = 0) const;
    signed char getArgumentValue(unsigned int index, signed char whenMissing,
                                 unsigned char withoutValues = 0) const;
    unsigned char getArgumentValue(unsigned int index, unsigned char whenMissing,
                                   unsigned char withoutValues = 0) const;
    short getArgumentValue(unsigned int index, short whenMissing, unsigned char withoutValues = 0) const;
    unsigned short getArgumentValue(unsigned int index, unsigned short whenMissing,
                                    unsigned char withoutValues = 0) const;
    int getArgumentValue(unsigned int index, int whenMissing, unsigned char withoutValues = 0) const;
    unsigned int getArgumentValue(unsigned int index, unsigned int whenMissing,
                                  unsigned char withoutValues = 0) const;
    qxInt64 getArgumentValue(unsigned int index, qxInt64 whenMissing, unsigned char withoutValues = 0) const;
    qxUInt64 getArgumentValue(unsigned int index, qxUInt64 whenMissing,
                              unsigned char withoutValues = 0) const;
    float getArgumentValue(unsigned int index, float whenMissing, unsigned char withoutValues = 0) const;
    double getArgumentValue(unsigned int index, double whenMissing, unsigned char withoutValues = 0) const;

    /// True when there are `count` plain arguments. If not, the error " Wrong number of arguments (%d)" is stored; while
    /// exitOnError is on a warning with the syntax is sent instead, and the process ends with the status 0.
    bool checkArgumentCount(unsigned int count);

private:
    const qxString* findOptionText(const qxString& name, unsigned int index, unsigned char caseSensitive,
                                   unsigned char silent);
    const qxString* findArgumentText(unsigned int index, unsigned char withoutValues) const;

    void clear(const qxString& prefix);
    void addToken(const qxString& token);
    qxString join(unsigned int begin, unsigned int end) const;

    qxString m_prefix;
    qxString m_syntax;
    qxString m_text; // what was split, if it was a text
    qxString m_error;
    qxDynamicArray<qxString> m_tokens;
    qxDynamicArray<qxArgOption> m_options;
    qxDynamicArray<qxArgArgument> m_arguments;
    bool m_isText = false;
    bool m_exitsOnError;
};
