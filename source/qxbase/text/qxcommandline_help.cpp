// SPDX-License-Identifier: see LICENSE

#include "core/qxascii.h"
#include "text/qxcommandparts.h"

#include <algorithm>

namespace
{

constexpr std::size_t WIDTH = 100;       // characters of a line
constexpr std::size_t LONGEST_LEFT = 34; // what is longer has a line for itself

std::size_t widthOf(std::string_view text)
{
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

/// Two columns, of which the right one is wrapped.
class Table
{
public:
    void add(const std::string& left, const std::string& right) { m_rows.push_back({left, right}); }

    std::string getText(const std::string& title) const
    {
        if (m_rows.empty()) return {};
        std::size_t column = 0;
        for (const Row& row : m_rows) {
            const std::size_t width = widthOf(row.left);
            if (width <= LONGEST_LEFT) column = std::max(column, width + 4);
        }
        column = std::max<std::size_t>(column, 8);
        std::string text = "\n" + title + "\n";
        for (const Row& row : m_rows) addRow(text, row, column);
        return text;
    }

private:
    struct Row {
        std::string left;
        std::string right;
    };

    static void addRow(std::string& text, const Row& row, std::size_t column)
    {
        std::string line = "  " + row.left;
        std::size_t at = widthOf(line);
        const auto startLine = [&] {
            text += line + "\n";
            line.clear();
            at = 0;
        };
        if (at + 2 > column) startLine();
        bool isFirst = true;
        for (std::size_t begin = 0; begin < row.right.size();) {
            const std::size_t end = std::min(row.right.find(' ', begin), row.right.size());
            const std::string word = row.right.substr(begin, end - begin);
            begin = end + 1;
            if (!isFirst && at + 1 + widthOf(word) > WIDTH) startLine();
            const std::string gap(at < column ? column - at : 1, ' ');
            line += gap + word;
            at += gap.size() + widthOf(word);
            isFirst = false;
        }
        if (!line.empty()) text += line + "\n";
    }

    std::vector<Row> m_rows;
};

std::string optionText(const qxCommandParts::Option& option)
{
    const bool hasBoth = !option.shortName.empty() && !option.longName.empty();
    return option.shortName + (hasBoth ? ", " : "") + option.longName +
           (option.value.empty() ? "" : " " + option.value);
}

std::string argumentText(const qxCommandParts::Argument& argument)
{
    const std::string text = argument.name + (argument.isRepeated() ? "…" : "");
    return argument.isNeeded() ? text : "[" + text + "]";
}

/// What stands behind the names of a command.
std::string usageOf(const qxCommandParts& command)
{
    std::string usage = command.commands.empty() ? "" : " COMMAND …";
    for (const qxCommandParts::Argument& argument : command.arguments) usage += " " + argumentText(argument);
    for (const qxCommandParts::Option& option : command.options) {
        if (option.isNamed("--help")) continue;
        usage += " [" + option.getName() + (option.value.empty() ? "" : " " + option.value) + "]";
    }
    return usage;
}

/// Calls `each` with all commands beneath `command`, in their order.
template <class Each>
void forEachCommand(const qxCommandParts& command, const Each& each)
{
    for (const auto& one : command.commands) {
        each(qxCommandParts::of(*one));
        forEachCommand(qxCommandParts::of(*one), each);
    }
}

std::string helpOf(const qxCommandParts& command, const std::string& program)
{
    const std::string path = command.getPath();
    std::string help = "usage: " + program + (path.empty() ? "" : " " + path) + usageOf(command) + "\n";
    for (const std::string& text : {command.summary, command.description})
        if (!text.empty()) help += "\n" + text + "\n";

    Table commands;
    forEachCommand(command, [&](const qxCommandParts& one) {
        if (one.commands.empty()) commands.add(one.getPath() + usageOf(one), one.summary);
    });
    Table arguments;
    for (const qxCommandParts::Argument& argument : command.arguments)
        arguments.add(argumentText(argument), argument.summary);
    Table options;
    for (const qxCommandParts::Option* const option : command.getAllOptions())
        options.add(optionText(*option), option->summary);
    return help + commands.getText("Commands:") + arguments.getText("Arguments:") +
           options.getText("Options:");
}

/// True when the shell takes it as one word that means itself.
bool isBareWord(const std::string& text)
{
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
        const char lower = qxToLower(c);
        return (lower >= 'a' && lower <= 'z') || qxIsDigit(c) || c == '-' || c == '_' || c == '.';
    });
}

void addWord(std::string& words, const std::string& word)
{
    if (isBareWord(word)) words += (words.empty() ? "" : " ") + word;
}

/// The path of a command as the script spells it: each name behind a slash.
std::string slashed(const qxCommandParts& command)
{
    std::string path = command.getPath();
    if (!path.empty()) path.insert(0, "/");
    std::replace(path.begin(), path.end(), ' ', '/');
    return path;
}

/// The cases for a word behind an option with a value, and for any other word.
void addCases(std::string& values, std::string& words, const qxCommandParts& command)
{
    const std::string path = slashed(command);
    std::string known;
    for (const auto& one : command.commands) addWord(known, qxCommandParts::of(*one).name);
    for (const qxCommandParts::Option* const option : command.getAllOptions()) {
        std::string choices;
        for (const std::string& choice : option->getChoices()) addWord(choices, choice);
        for (const std::string& name : {option->shortName, option->longName}) {
            addWord(known, name);
            if (!option->value.empty() && !name.empty())
                values += "    " + path + ":" + name + ") words=\"" + choices + "\" ;;\n";
        }
    }
    words += "        '" + path + "') words=\"" + known + "\" ;;\n";
}

} // namespace

qxString qxCommandLine::getHelp(const qxString& command) const
{
    const qxCommandParts* found = m_parts.get();
    const std::string names(command.getString(), command.length());
    for (std::size_t begin = 0; found && begin < names.size();) {
        const std::size_t end = std::min(names.find(' ', begin), names.size());
        found = found->findCommand(std::string_view(names).substr(begin, end - begin));
        begin = end + 1;
    }
    if (!found) return {};
    const std::string help = helpOf(*found, m_parts->name);
    return {help.data(), help.size()};
}

qxString qxCommandLine::getCompletion() const
{
    std::string function = "_" + m_parts->name;
    std::replace(function.begin(), function.end(), '-', '_');
    std::string paths;
    std::string values;
    std::string words;
    addCases(values, words, *m_parts);
    forEachCommand(*m_parts, [&](const qxCommandParts& command) {
        paths += "        " + slashed(command) + ") path=" + slashed(command) + " ;;\n";
        addCases(values, words, command);
    });
    const std::string script = function + "() {\n" +
                               "    local word=${COMP_WORDS[COMP_CWORD]} path= words= i\n"
                               "    for ((i = 1; i < COMP_CWORD; ++i)); do\n"
                               "        case \"$path/${COMP_WORDS[i]}\" in\n" +
                               paths +
                               "        esac\n"
                               "    done\n"
                               "    case \"$path:${COMP_WORDS[COMP_CWORD - 1]}\" in\n" +
                               values +
                               "    *)\n"
                               "        case \"$path\" in\n" +
                               words +
                               "        esac\n"
                               "        ;;\n"
                               "    esac\n"
                               "    COMPREPLY=($(compgen -W \"$words\" -- \"$word\"))\n"
                               "}\n"
                               "complete -o default -F " +
                               function + " " + m_parts->name + "\n";
    return {script.data(), script.size()};
}
