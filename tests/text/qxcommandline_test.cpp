// SPDX-License-Identifier: see LICENSE

#include "qxcommandline.h"

#include "qxtestrows.h"
#include "qxtesttexts.h"

namespace
{

/// The command line of docs/arguments.md.
class Shelf : public qxCommandLine
{
public:
    Shelf() : qxCommandLine("shelf", "Keeps a list of books")
    {
        addOption("-f, --file", "FILE", "the list; without it the one of the user");
        addQuestion("--version", "", "tells the version");
        addHeading("Books");
        addCommand("book", "changes and shows books");
        addCommand("book add", "enters books")
            .addOption("--kind", "novel|poems|essay", "what they are", "novel")
            .addOption("-q", "", "says nothing")
            .addArgument("TITLE", "what stands on the cover", QX_ARGUMENT_SOME);
        addCommand("book show", "prints what is known of a book")
            .addArgument("TITLE", "what stands on the cover")
            .addArgument("COUNT", "how many of them", QX_ARGUMENT_OPTIONAL);
        addHeading("The list");
        addCommand("list", "prints all books").setDescription("One line a book.").setFooter("Status: 0.");
    }
};

/// What a command line is found to be: "COMMAND|OPTION=VALUE|ARGUMENT", or the error.
std::string parsed(const std::string& line)
{
    Shelf shelf;
    const bool fits = shelf.parse(qxArgumentParser(qxString(line.data(), line.size())));
    EXPECT_EQ(fits, shelf.getError().isEmpty());
    if (!fits) return bytesOf(shelf.getError());
    std::string text = bytesOf(shelf.getCommand());
    for (const char* const name : {"--file", "--kind", "-q", "--help", "--version"}) {
        for (unsigned int i = 0; i < shelf.getOptionCount(name); ++i)
            text += std::string("|") + name + "=" + bytesOf(shelf.getOptionValue(name, i));
    }
    for (unsigned int i = 0; i < shelf.getArgumentCount(); ++i) text += "|" + bytesOf(shelf.getArgument(i));
    return text;
}

TEST(qxCommandLine, readsCommandsOptionsAndArguments)
{
    expectRows(
        parsed, "list => list", "book show Emma => book show|Emma", "book show Emma 2 => book show|Emma|2",
        "book add -q A --kind=novel B => book add|--kind=novel|-q=|A|B",
        "-f a book --file=b add -f c A => book add|--file=a|--file=b|--file=c|A",
        "book add --file -q A => book add|--file=-q|A", "book add --file= A => book add|--file=|A",
        "book add -- -q --kind => book add|-q|--kind",
        "book add -5 -0 -0.5 -.0 - => book add|-5|-0|-0.5|-.0|-", "book add \"a b\" '' => book add|a b|",
        "--help => |--help=", "book -h => book|--help=", "book show --help => book show|--help=",
        "help => |--help=", "help book add => book add|--help=", "book help => book|--help=",
        "book show help => book show|help", "--version => |--version=", "--version list => list|--version=");
}

TEST(qxCommandLine, aDigitCanBeAnOption)
{
    const auto read = [](const std::string& text) {
        qxCommandLine line("shelf", "");
        line.addCommand("go", "").addOption("-4", "", "").addArgument("N", "", QX_ARGUMENT_ANY);
        if (!line.parse(qxArgumentParser(text.c_str()))) return bytesOf(line.getError());
        std::string result = line.hasOption("-4") ? "four" : "none";
        for (unsigned int i = 0; i < line.getArgumentCount(); ++i)
            result += " " + bytesOf(line.getArgument(i));
        return result;
    };
    expectRows(read, "go -4 a => four a", "go a -5 -44 -4.0 => none a -5 -44 -4.0", "go -- -4 => none -4",
               "go '' - -0 => none  - -0");
}

TEST(qxCommandLine, saysWhatIsWrongInOneLine)
{
    expectRows(
        parsed, " => a command is missing", "book => a command is missing behind 'book'",
        "lsit => unknown command 'lsit'; did you mean 'list'?", "buy => unknown command 'buy'",
        "book shw => unknown command 'book shw'; did you mean 'show'?",
        "show => unknown command 'show'; did you mean 'book show'?",
        "hlep => unknown command 'hlep'; did you mean 'help'?",
        "help lsit => unknown command 'lsit'; did you mean 'list'?",
        "list --version => unknown option '--version'",
        "book add --knd novel A => unknown option '--knd'; did you mean '--kind'?",
        "--kind novel list => unknown option '--kind'", "-x => unknown option '-x'",
        "list --flie=x => unknown option '--flie'; did you mean '--file'?",
        "book add --kind => option '--kind' needs a value", "book add -q=1 A => option '-q' takes no value",
        "book add --kind novle A => option '--kind' takes novel|poems|essay, not 'novle'; did you mean "
        "'novel'?",
        "book add => book add: TITLE is missing", "book show => book show: TITLE is missing",
        "book show A 1 2 => argument '2' is one too many",
        "list \"a\nb\" => argument 'a\\nb' is one too many");
    const std::string longWord(1000, 'x');
    EXPECT_EQ(parsed(longWord), "unknown command '" + std::string(200, 'x') + "…'");
}

TEST(qxCommandLine, readsWhatMainGets)
{
    Shelf shelf;
    const char* const words[] = {"shelf", "book", "add", "a b"};
    EXPECT_TRUE(shelf.parse(4, words));
    EXPECT_STREQ(shelf.getArgument(0), "a b");
    EXPECT_STREQ(shelf.getArgument(1), "");
    EXPECT_STREQ(shelf.getOption("--file", "none"), "none");
    EXPECT_STREQ(shelf.getOptionText("--file", "none"), "none");
    EXPECT_STREQ(shelf.getOption("--kind", "none"), "novel");
    EXPECT_STREQ(shelf.getOptionText("--kind"), "novel");
    EXPECT_FALSE(shelf.hasOption("--kind"));
    EXPECT_FALSE(shelf.isHelpAsked());
    const wchar_t* const wide[] = {L"shelf", L"-f", L"\x00E9", L"-h"};
    EXPECT_TRUE(shelf.parse(4, wide));
    EXPECT_EQ(bytesOf(shelf.getOption("-f")), "\xC3\xA9");
    EXPECT_TRUE(shelf.isHelpAsked());
    EXPECT_FALSE(shelf.parse(1, words));
    EXPECT_EQ(shelf.getArgumentCount(), 0U);

    qxCommandLine open("tool", "");
    open.addArgument("A", "", QX_ARGUMENT_OPTIONAL)
        .addArgument("B", "", QX_ARGUMENT_OPTIONAL)
        .addArgument("C", "", QX_ARGUMENT_ANY);
    EXPECT_TRUE(open.parse(1, words));
    EXPECT_TRUE(open.parse(4, words));
    EXPECT_STREQ(open.getArgument(2), "a b");

    qxCommandLine single("copy", "Copies a file");
    single.addArgument("FROM", "the file").addArgument("TO", "where", QX_ARGUMENT_ANY);
    EXPECT_TRUE(single.parse(2, words));
    EXPECT_FALSE(single.parse(1, words));
    EXPECT_STREQ(single.getError(), "FROM is missing");
}

TEST(qxCommandLine, readsWordsOfAnyLength)
{
    const std::string title(70000, 'x');
    const std::string file = "--file=" + title;
    const std::string number = "-5" + title;
    const char* const words[] = {"shelf", file.c_str(), "book", "add", title.c_str(), number.c_str()};
    Shelf shelf;
    EXPECT_TRUE(shelf.parse(6, words)) << bytesOf(shelf.getError());
    EXPECT_EQ(shelf.getOptionText("-f"), title);
    EXPECT_EQ(shelf.getArgumentText(0), title);
    EXPECT_EQ(shelf.getArgumentText(1), number);
    EXPECT_STREQ(shelf.getArgumentText(2), "");
    EXPECT_EQ(fatalText([&] { shelf.getArgument(0); }), "Too many characters in qxString");
}

TEST(qxCommandLine, writesHelp)
{
    const Shelf shelf;
    EXPECT_EQ(bytesOf(shelf.getHelp()),
              "usage: shelf COMMAND … [--file FILE] [--version]\n\nKeeps a list of books\n\n"
              "Books:\n"
              "  book add TITLE…          enters books\n"
              "  book show TITLE [COUNT]  prints what is known of a book\n"
              "\nThe list:\n"
              "  list                     prints all books\n"
              "\nOptions:\n"
              "  -h, --help       shows this help\n"
              "  -f, --file FILE  the list; without it the one of the user\n"
              "  --version        tells the version\n"
              "\n'shelf COMMAND --help' tells more of a command.\n");
    EXPECT_EQ(bytesOf(shelf.getHelp("book add")),
              "usage: shelf book add TITLE… [--kind novel|poems|essay] [-q] [--file FILE]\n\nenters books\n"
              "\nArguments:\n"
              "  TITLE…  what stands on the cover\n"
              "\nOptions:\n"
              "  --kind novel|poems|essay  what they are; without it novel\n"
              "  -q                        says nothing\n"
              "  -h, --help                shows this help\n"
              "  -f, --file FILE           the list; without it the one of the user\n");
    EXPECT_EQ(bytesOf(shelf.getHelp("list")),
              "usage: shelf list [--file FILE]\n\nprints all books\n\nOne line a book.\n"
              "\nOptions:\n"
              "  -h, --help       shows this help\n"
              "  -f, --file FILE  the list; without it the one of the user\n"
              "\nStatus: 0.\n");
    EXPECT_STREQ(shelf.getHelp("book buy"), "");
}

TEST(qxCommandLine, wrapsHelp)
{
    qxCommandLine wide("wide", "Wraps");
    std::string summary;
    for (unsigned int i = 0; i < 30; ++i) summary += "word ";
    wide.addArgument("A", summary.c_str()).setDescription(("  kept\n" + summary).c_str());
    for (const char* const name : {"--one", "--two", "--three", "--four", "--five"})
        wide.addOption(name, "LONG-VALUE", "");
    const std::string help = bytesOf(wide.getHelp());
    EXPECT_NE(help.find("[--four LONG-VALUE]\n       [--five LONG-VALUE]\n"), help.npos) << help;
    EXPECT_NE(help.find("\n  kept\nword word"), help.npos) << help;
    EXPECT_NE(help.find("word\nword"), help.npos) << help;
    EXPECT_NE(help.find("  A     word word"), help.npos);
    EXPECT_NE(help.find("\n        word"), help.npos);
    for (std::size_t at = 0, end = 0; (end = help.find('\n', at)) != help.npos; at = end + 1)
        EXPECT_LE(end - at, 100U);
}

TEST(qxCommandLine, writesACompletion)
{
    qxCommandLine line("my-tool", "Does");
    line.addCommand("go", "goes")
        .addOption("-m, --mode", "fast|slow|$(rm)", "how")
        .addOption("--to", "PLACE", "where");
    EXPECT_EQ(bytesOf(line.getCompletion()), "_my_tool() {\n"
                                             "    local word=${COMP_WORDS[COMP_CWORD]} path= words= i\n"
                                             "    for ((i = 1; i < COMP_CWORD; ++i)); do\n"
                                             "        case \"$path/${COMP_WORDS[i]}\" in\n"
                                             "        /go) path=/go ;;\n"
                                             "        esac\n"
                                             "    done\n"
                                             "    case \"$path:${COMP_WORDS[COMP_CWORD - 1]}\" in\n"
                                             "    /go:-m) words=\"fast slow\" ;;\n"
                                             "    /go:--mode) words=\"fast slow\" ;;\n"
                                             "    /go:--to) words=\"\" ;;\n"
                                             "    *)\n"
                                             "        case \"$path\" in\n"
                                             "        '') words=\"help go -h --help\" ;;\n"
                                             "        '/go') words=\"-m --mode --to -h --help\" ;;\n"
                                             "        esac\n"
                                             "        ;;\n"
                                             "    esac\n"
                                             "    COMPREPLY=($(compgen -W \"$words\" -- \"$word\"))\n"
                                             "}\n"
                                             "complete -o default -F _my_tool my-tool\n");
}

TEST(qxCommandLine, refusesDeclarationsThatMakeNoSense)
{
    EXPECT_EQ(fatalText([] { qxCommandLine("my tool", ""); }), "'my tool' is no name of a command");
    qxCommandLine line("tool", "");
    for (const char* const names :
         {"", "-", "--", "name", "-ab", "--1", "--a b", "-a, -b", "--help", "-a, ", "-a,-b"}) {
        SCOPED_TRACE(names);
        EXPECT_EQ(fatalText([&] { line.addOption(names, "", ""); }),
                  std::string("The option '") + names + "' cannot be declared here");
    }
    EXPECT_EQ(fatalText([&] { line.addOption("-k", "a|b", "", "c"); }),
              "The option '-k' cannot have the value 'c'");
    EXPECT_EQ(fatalText([&] { line.addOption("-k", "", "", "c"); }),
              "The option '-k' cannot have the value 'c'");
    line.addOption("-k", "a|b", "", "b"); // what was refused is not there
    EXPECT_EQ(fatalText([&] { line.addCommand("group a", ""); }), "'group a' is no name of a command");
    qxCommand& command = line.addCommand("a", "");
    EXPECT_EQ(fatalText([&] { line.addCommand("a", ""); }), "The command 'a' cannot be declared here");
    EXPECT_EQ(fatalText([&] { line.addArgument("B", ""); }), "The argument 'B' cannot be declared here");
    command.addArgument("B", "", QX_ARGUMENT_OPTIONAL);
    EXPECT_EQ(fatalText([&] { command.addArgument("C", ""); }), "The argument 'C' cannot be declared here");
    EXPECT_EQ(fatalText([&] { line.addCommand("a d", ""); }), "The command 'd' cannot be declared here");
    command.addArgument("E", "", QX_ARGUMENT_ANY);
    EXPECT_EQ(fatalText([&] { command.addArgument("F", "", QX_ARGUMENT_ANY); }),
              "The argument 'F' cannot be declared here");
}

} // namespace
