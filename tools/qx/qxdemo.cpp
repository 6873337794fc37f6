// SPDX-License-Identifier: see LICENSE

#include "qxcommands.h"
#include "qxloopback.h"
#include "qxoutput.h"

#include <cstdio>
#include <filesystem>
#include <random>

namespace
{

// Documents that many systems have.
const char* const LARGE_DOCUMENTS[] = {
    "/usr/share/mime/packages/freedesktop.org.xml",
    "/usr/share/xml/iso-codes/iso_639-3.xml",
    "/usr/share/xml/iso-codes/iso_639.xml",
};

std::string shellWord(const std::string& word)
{
    if (!word.empty() &&
        word.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789"
                               "_-./=:,+@%") == std::string::npos)
        return word;
    std::string quoted = "'";
    for (const char c : word) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

// The folder of the samples as it is seen from here, so that the lines are short and can be typed again.
std::string sampleFolder()
{
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::proximate(QX_DEMO_DATA, error);
    return error ? QX_DEMO_DATA : folder.generic_string();
}

// Shows the command line, then what it prints.
void show(qxReport& report, const std::vector<std::string>& words)
{
    std::string line = "$ qx";
    for (const std::string& word : words) line += " " + shellWord(word);
    writeOutput(line + "\n");
    flushOutput();
    const qxStatus status = runCommandLine(report, words);
    if (status != qxStatus::DONE)
        writeOutput("(exit status " + std::to_string(static_cast<int>(status)) + ")\n");
    writeOutput("\n");
}

// Rules are shown where the folder of the documents has one of rules beside it, as examples/data has.
void showRules(qxReport& report, const std::string& data)
{
    const std::string rules = (std::filesystem::path(data) / "../rules").lexically_normal().generic_string();
    const std::string log = rules + "/access.log";
    if (!std::filesystem::exists(log)) {
        report.printNote("No sample rules in '" + rules + "'");
        return;
    }
    show(report, {"parse", rules + "/accesslog.rules", log});
    show(report, {"parse", "--check", rules + "/accesslog.rules"});
    show(report, {"scan", "%'^ '%+%@ %'^ '%+%@ %'^ '%+%@ [%'^#x5D'%+%@] %e", log, "--header",
                  "host,ident,user,time,request"});
}

// A document of settings that is there for the demonstration only.
void showSettings(qxReport& report)
{
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("qxdemo-" + std::to_string(std::random_device()()));
    const std::string file = (folder / "demo.reg").generic_string();
    show(report, {"conf", "--file", file, "set", "greeting", "hello"});
    show(report, {"conf", "--file", file, "set", "window/width", "640"});
    show(report, {"conf", "--file", file, "get", "greeting", "window/width"});
    show(report, {"conf", "--file", file, "get", "greetings"});
    show(report, {"conf", "--file", file, "list"});
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}

// An exchange with itself: what was sent, and what came.
qxStatus showNetwork()
{
    std::string bytes(1000000, '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i * 2654435761U >> 24);
    const qxLoopbackResult result = exchangeOnLoopback(bytes);
    const qxString text =
        qxString::str("TCP on 127.0.0.1: sent %d bytes, CRC-32 %08X\n"
                      "              received %d bytes, CRC-32 %08X\n",
                      bytes.size(), result.sentChecksum, result.received, result.receivedChecksum);
    writeOutput(viewOf(text));
    return result.sentChecksum == result.receivedChecksum ? qxStatus::DONE : qxStatus::FATAL;
}

qxStatus runDemo(qxReport& report, const qxCommandLine& line)
{
    const std::string data = line.getArgumentCount() == 0 ? sampleFolder() : line.getArgumentText(0);
    const std::string scene = data + "/scene.xml";
    const std::string settings = data + "/settings.xml";
    if (!std::filesystem::exists(scene)) throw qxFileError("No sample documents in '" + data + "'");

    show(report, {"xml", "check", scene, settings});
    show(report, {"xml", "events", settings});
    show(report, {"xml", "tree", scene});
    show(report, {"xml", "get", scene, "scene/body[name=buoy]/script", "scene/camera/@fov"});
    show(report, {"xml", "get", "--all", settings, "//server"});
    show(report, {"xml", "set", settings, "settings/network/timeout=900", "settings/display/@fullscreen=no",
                  "-o", "-"});
    show(report, {"xml", "format", "--encoding", "ISO-8859-1", "--plain", scene});
    show(report, {"xml", "check", data + "/broken.xml"});
    for (const char* const large : LARGE_DOCUMENTS) {
        std::error_code ignored;
        if (!std::filesystem::exists(large, ignored)) continue;
        show(report, {"xml", "check", large});
        break;
    }
    showRules(report, data);
    showSettings(report);
    show(report, {"net", "resolve", "localhost"});
    return showNetwork();
}

} // namespace

void declareDemo(qxTool& tool)
{
    tool.add("demo", "shows some of these at work", runDemo)
        .addArgument("FOLDER", "sample documents; without it those of the sources", QX_ARGUMENT_OPTIONAL);
}
