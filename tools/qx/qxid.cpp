// SPDX-License-Identifier: see LICENSE

#include "qxcommands.h"
#include "qxoutput.h"

#include "qxguid.h"

#include <chrono>

namespace
{

using Maker = qxGUID (*)();

Maker makerOf(const qxCommandLine& line)
{
    const bool isTimeBased = line.hasOption("--v1");
    const bool isRandom = line.hasOption("--v4");
    const bool isSortable = line.hasOption("--v7");
    if (isTimeBased + isRandom + isSortable > 1) throw qxUsageError("an id has one version only");
    if (isRandom) return qxGUID::generateGUID4;
    if (isSortable) return qxGUID::generateGUID7;
    return qxGUID::generateGUID;
}

const char* variantOf(const qxGUIDRecord& record)
{
    const unsigned int bits = record.Data4[0] >> 5; // the more of them are set, the fewer count
    if (bits < 4) return "ncs";
    if (bits < 6) return "standard";
    return bits == 6 ? "microsoft" : "future";
}

// An id holds moments outside the library's calendar.
std::string dateText(std::chrono::milliseconds sinceThe1970s)
{
    using namespace std::chrono;
    const auto second = floor<seconds>(sinceThe1970s);
    const auto day = floor<days>(second);
    const year_month_day date{sys_days(day)};
    const hh_mm_ss time{second - day};
    return qxString::str("%04d-%02d-%02d %02d:%02d:%02d", static_cast<int>(date.year()),
                         static_cast<unsigned int>(date.month()), static_cast<unsigned int>(date.day()),
                         static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                         static_cast<int>(time.seconds().count()))
        .getString();
}

// Of versions 1 and 7.
std::string timeOf(const qxGUIDRecord& record, unsigned int version)
{
    if (version == 7)
        return dateText(std::chrono::milliseconds(static_cast<qxInt64>(record.Data1) << 16 | record.Data2));
    constexpr qxInt64 MILLISECONDS_TO_1970 = 12219292800000; // from 1582
    const qxInt64 steps = static_cast<qxInt64>(record.Data3 & 0x0FFF) << 48 |
                          static_cast<qxInt64>(record.Data2) << 32 | static_cast<qxInt64>(record.Data1);
    return dateText(std::chrono::milliseconds(steps / 10000 - MILLISECONDS_TO_1970));
}

std::string nodeOf(const qxGUIDRecord& record)
{
    qxString node;
    for (int i = 2; i < 8; ++i) node += qxString::str("%02X", record.Data4[i]);
    return node.getString();
}

qxStatus runIdNew(qxReport&, const qxCommandLine& line)
{
    const Maker make = makerOf(line);
    const unsigned int count = parseNumber<unsigned int>(line.getOptionText("-n"), "count");
    for (unsigned int i = 0; i < count && !isInterrupted(); ++i) {
        const qxGUID guid = make();
        if (guid.isNull()) return qxStatus::NO_FILE; // the library has said why
        writeOutput(std::string(viewOf(guid.asString())) + "\n");
    }
    return qxStatus::DONE;
}

qxStatus runIdShow(qxReport&, const qxCommandLine& line)
{
    const std::string text = line.getArgumentText(0);
    const qxGUID guid(text.c_str());
    const std::string form = guid.asString().getString();
    const bool isShown = text == form || "{" + text + "}" == form;
    if (guid.isNull() && !isShown) return qxStatus::MALFORMED; // the library has said why

    const qxGUIDRecord& record = guid;
    const unsigned int version = record.Data3 >> 12;
    writeOutput("guid " + form + "\nvariant " + variantOf(record) + "\nversion " + std::to_string(version) +
                "\n");
    if (version == 1 || version == 7) writeOutput("time " + timeOf(record, version) + "\n");
    if (version == 1) writeOutput("node " + nodeOf(record) + "\n");
    return qxStatus::DONE;
}

} // namespace

void declareId(qxTool& tool)
{
    tool.addCommand("id", "makes identifiers and takes them apart");
    tool.add("id new", "makes identifiers", runIdNew)
        .addOption("-n", "N", "how many", "1")
        .addOption("--v1", "", "from the time, the thread and the machine, as without an option")
        .addOption("--v4", "", "at random")
        .addOption("--v7", "", "from the time and at random, so that they sort by age");
    tool.add("id show", "takes an identifier apart", runIdShow)
        .addArgument("GUID", "the identifier; braces may be missing and letters may be small");
}
