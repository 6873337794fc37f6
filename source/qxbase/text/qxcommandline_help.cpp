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

/// Adds the words of `text` to `lines`, whose last is `line`, with those that begin a line at `column`.
void addWords(std::string& lines, std::string line, std::string_view text, std::size_t column)
{
    std::size_t at = widthOf(line);
    bool isFirst = true;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find(' ', begin), text.size());
        const std::string_view word = text.substr(begin, end - begin);
        begin = end + 1;
        if (!isFirst && at + 1 + widthOf(word) > WIDTH) {
            lines += line + "\n";
            line.clear();
            at = 0;
        }
        const std::string gap(at < column ? column - at : at == 0 ? 0 : 1, ' ');
        line += gap;
        line += word;
        at += gap.size() + widthOf(word);
        isFirst = false;
    }
    lines += line + "\n";
}

/// Behind an empty line, unless there is no text. Lines that fit stay as they are.
std::string paragraphsOf(const std::string& text)
{
    std::string lines = text.empty() ? "" : "\n";
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        const std::string line = text.substr(begin, end - begin);
        begin = end + 1;
        if (widthOf(line) <= WIDTH)
            lines += line + "\n";
        else
            addWords(lines, "", line, 0);
    }
    return lines;
}

/// Two columns, of which the right one is wrapped. Lines with a title stand between.
class Table
{
public:
    void add(const std::string& left, const std::string& right) { m_rows.push_back({left, right, false}); }

    /// Unless it is that of the last rows.
    void addTitle(const std::string& title)
    {
        if (title == m_title) return;
        m_title = title;
        m_rows.push_back({title, "", true});
    }

    std::string getText() const
    {
        std::size_t column = 8;
        for (const Row& row : m_rows) {
            const std::size_t width = row.isTitle ? 0 : widthOf(row.left);
            if (width <= LONGEST_LEFT) column = std::max(column, width + 4);
        }
        std::string text;
        for (const Row& row : m_rows) {
            if (row.isTitle)
                text += "\n" + row.left + ":\n";
            else
                addRow(text, row, column);
        }
        return text;
    }

private:
    struct Row {
        std::string left;
        std::string right;
        bool isTitle;
    };

    static void addRow(std::string& text, const Row& row, std::size_t column)
    {
        std::string line = "  " + row.left;
        if (widthOf(line) + 2 > column && !row.right.empty()) {
            text += line + "\n";
            line.clear();
        }
        addWords(text, line, row.right, column);
    }

    std::vector<Row> m_rows;
    std::string m_title;
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

/// The names of the command and what stands behind them, but for options.
std::string callOf(const qxCommandParts& command)
{
    std::string call = command.getPath();
    if (!command.commands.empty()) call += call.empty() ? "COMMAND …" : " COMMAND …";
    for (const qxCommandParts::Argument& argument : command.arguments)
        call += (call.empty() ? "" : " ") + argumentText(argument);
    return call;
}

std::string usageOf(const qxCommandParts& command, const std::string& program)
{
    constexpr std::size_t INDENT = 7;
    std::string usage = "usage: " + program;
    const std::string call = callOf(command);
    if (!call.empty()) usage += " " + call;
    std::string lines;
    for (const qxCommandParts::Option* const option : command.getAllOptions()) {
        if (option->isNamed("--help")) continue;
        const std::string text =
            "[" + option->getName() + (option->value.empty() ? "" : " " + option->value) + "]";
        if (widthOf(usage) + 1 + widthOf(text) > WIDTH) {
            lines += usage + "\n";
            usage = std::string(INDENT - 1, ' ');
        }
        usage += " " + text;
    }
    return lines + usage + "\n";
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

/// The commands beneath `command` that have none beneath them, under their headings.
std::string commandTable(const qxCommandParts& command)
{
    Table table;
    for (const auto& one : command.commands) {
        const qxCommandParts& child = qxCommandParts::of(*one);
        table.addTitle(child.heading.empty() ? "Commands" : child.heading);
        if (child.commands.empty()) table.add(callOf(child), child.summary);
        forEachCommand(child, [&](const qxCommandParts& leaf) {
            if (leaf.commands.empty()) table.add(callOf(leaf), leaf.summary);
        });
    }
    return table.getText();
}

std::string argumentTable(const qxCommandParts& command)
{
    Table table;
    for (const qxCommandParts::Argument& argument : command.arguments) {
        table.addTitle("Arguments");
        table.add(argumentText(argument), argument.summary);
    }
    return table.getText();
}

std::string optionTable(const qxCommandParts& command)
{
    Table table;
    table.addTitle("Options");
    for (const qxCommandParts::Option* const option : command.getAllOptions())
        table.add(optionText(*option),
                  option->summary + (option->standard.empty() ? "" : "; without it ") + option->standard);
    return table.getText();
}

std::string helpOf(const qxCommandParts& command, const std::string& program)
{
    std::string help = usageOf(command, program) + paragraphsOf(command.summary) +
                       paragraphsOf(command.description) + commandTable(command) + argumentTable(command) +
                       optionTable(command);
    if (!command.commands.empty()) {
        const std::string path = command.getPath();
        help += paragraphsOf("'" + program + (path.empty() ? "" : " " + path) +
                             " COMMAND --help' tells more of a command.");
    }
    return help + paragraphsOf(command.footer);
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
    std::string known = command.commands.empty() || command.findCommand("help") ? "" : "help";
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
