// SPDX-License-Identifier: see LICENSE

#include "qxconf.h"

#include "qxoutput.h"
#include "qxtextsink.h"

#include <algorithm>
#include <filesystem>
#include <numeric>

namespace
{

const char DESCRIPTION[] = R"(KEY is NAME, a value of the default path, or PATH/NAME.
The document is that of --file, else of the environment variable QUAXO_SETTINGS, else the
user's own, when it is there, else the system's, when it is there, else the user's own.)";

/// Reads a document as settings are read, to say what is wrong with it.
class Check : public qxXmlSax
{
public:
    unsigned char onElementStart(const qxString&, unsigned int) override { return !isInterrupted(); }
};

std::string documentOf(const qxCommandLine& line)
{
    if (line.hasOption("--file")) return line.getOptionText("--file");
    return std::string(viewOf(qxKeyDatabase::getPreferredRegistryURL()));
}

bool isThere(const std::string& file)
{
    std::error_code error;
    const std::filesystem::path path(std::u8string(file.begin(), file.end()));
    return std::filesystem::exists(path, error) || error;
}

// What was asked for while messages waited, and how it ended; those that waited are shown.
qxStatus kept(qxReport& report, unsigned char isDone)
{
    report.release(qxString());
    return isDone ? qxStatus::DONE : qxStatus::NO_FILE;
}

// How many letters must be changed, added or taken away, as far as that is at most `most`.
std::size_t distance(const std::string& left, const std::string& right, std::size_t most)
{
    const std::size_t difference =
        left.size() > right.size() ? left.size() - right.size() : right.size() - left.size();
    if (difference > most) return most + 1;
    std::vector<std::size_t> row(right.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < left.size(); ++i) {
        std::size_t diagonal = std::exchange(row[0], i + 1);
        for (std::size_t k = 0; k < right.size(); ++k) {
            const std::size_t change = diagonal + (left[i] == right[k] ? 0 : 1);
            diagonal = row[k + 1];
            row[k + 1] = std::min({change, row[k] + 1, diagonal + 1});
        }
    }
    return row.back();
}

// "; did you mean 'KEY'?" for the key that is written most like `text`, if one is near enough.
std::string suggestion(const std::string& text)
{
    const std::string standard = std::string(viewOf(qxKeyDatabase::getDefaultRegistry())) + "/";
    std::size_t nearest = std::max<std::size_t>(text.size() / 3, 1) + 1;
    std::string found;
    for (const qxKeyEntry& entry : qxKeyDatabase::getLocalKeys()) {
        std::string key = confKeyText(entry.path, entry.name);
        if (key.starts_with(standard) && text.find('/') == std::string::npos) key.erase(0, standard.size());
        const std::size_t far = distance(text, key, nearest - 1);
        if (far >= nearest) continue;
        nearest = far;
        found = key;
    }
    return found.empty() ? std::string() : "; did you mean '" + found + "'?";
}

qxStatus runGet(qxReport& report, const qxCommandLine& line)
{
    std::vector<qxConfKey> keys;
    for (const std::string& text : argumentsFrom(line, 0)) keys.push_back(parseConfKey(text));
    const qxStatus status = openSettings(report, line);
    if (status != qxStatus::DONE) return status;
    bool areAllThere = true;
    for (std::size_t i = 0; i < keys.size(); ++i) {
        const auto& [path, name] = keys[i];
        if (qxKeyDatabase::existRegKey(QX_KEY_USER, path, name)) {
            writeOutput(std::string(viewOf(qxKeyDatabase::getRegKey(QX_KEY_USER, path, name))) + "\n");
            continue;
        }
        const std::string text = line.getArgumentText(static_cast<unsigned int>(i));
        report.printNote("no key '" + text + "'" + suggestion(text));
        areAllThere = false;
    }
    return areAllThere ? qxStatus::DONE : qxStatus::NO;
}

// Settings are text: tabs and the ends of lines are the only control characters.
bool isText(const std::string& value)
{
    return std::none_of(value.begin(), value.end(), [](char c) {
        return static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n' && c != '\r';
    });
}

qxStatus runSet(qxReport& report, const qxCommandLine& line)
{
    const qxConfKey key = parseConfKey(line.getArgumentText(0));
    const std::string value = line.getArgumentText(1);
    if (value.size() > qxString::MAX_LENGTH) {
        report.printError("a value has at most 65535 bytes");
        return qxStatus::LIMIT;
    }
    if (!isText(value)) {
        report.printError("a value can not hold control characters");
        return qxStatus::MALFORMED;
    }
    const qxStatus status = openSettings(report, line);
    if (status != qxStatus::DONE) return status;
    report.hold();
    return kept(report, qxKeyDatabase::setRegKey(QX_KEY_USER, key.path, key.name, value.c_str()));
}

qxStatus runUnset(qxReport& report, const qxCommandLine& line)
{
    const std::string text = line.getArgumentText(0);
    const qxConfKey key = parseConfKey(text);
    const qxStatus status = openSettings(report, line);
    if (status != qxStatus::DONE) return status;
    if (!qxKeyDatabase::existRegKey(QX_KEY_USER, key.path, key.name)) {
        report.printNote("no key '" + text + "'" + suggestion(text));
        return qxStatus::NO;
    }
    report.hold();
    return kept(report, qxKeyDatabase::removeRegKey(QX_KEY_USER, key.path, key.name));
}

qxStatus runList(qxReport& report, const qxCommandLine& line)
{
    const qxStatus status = openSettings(report, line);
    if (status != qxStatus::DONE) return status;
    std::vector<std::string> rows;
    for (const qxKeyEntry& entry : qxKeyDatabase::getLocalKeys(line.getArgument(0))) {
        const std::string value = entry.value.isEmpty() ? std::string() : confValueText(true, entry.value);
        rows.push_back(confKeyText(entry.path, entry.name) + "=" + value + "\n");
    }
    std::sort(rows.begin(), rows.end());
    for (const std::string& row : rows) writeOutput(row);
    return qxStatus::DONE;
}

qxStatus runWhere(qxReport&, const qxCommandLine& line)
{
    writeOutput(documentOf(line) + "\n");
    return qxStatus::DONE;
}

typedef std::vector<std::pair<std::string, qxString>> Rows;

qxStatus readRows(qxReport& report, const std::string& file, Rows& rows)
{
    if (!isThere(file)) throw qxFileError("there is no document '" + file + "'");
    const qxStatus status = openSettings(report, file);
    if (status != qxStatus::DONE) return status;
    for (const qxKeyEntry& entry : qxKeyDatabase::getLocalKeys())
        rows.emplace_back(confKeyText(entry.path, entry.name), entry.value);
    std::sort(rows.begin(), rows.end(),
              [](const auto& one, const auto& other) { return one.first < other.first; });
    return qxStatus::DONE;
}

qxStatus runDiff(qxReport& report, const qxCommandLine& line)
{
    Rows left;
    Rows right;
    qxStatus status = readRows(report, line.getArgumentText(0), left);
    if (status == qxStatus::DONE) status = readRows(report, line.getArgumentText(1), right);
    if (status != qxStatus::DONE) return status;
    bool areSame = true;
    for (std::size_t i = 0, k = 0; i < left.size() || k < right.size();) {
        const bool isLeft = k == right.size() || (i < left.size() && left[i].first <= right[k].first);
        const bool isRight = i == left.size() || (k < right.size() && right[k].first <= left[i].first);
        const std::string key = isLeft ? left[i].first : right[k].first;
        const qxString before = isLeft ? left[i++].second : qxString();
        const qxString after = isRight ? right[k++].second : qxString();
        if (isLeft && isRight && before == after) continue;
        writeOutput(key + ": " + confValueText(isLeft, before) + " -> " + confValueText(isRight, after) +
                    "\n");
        areSame = false;
    }
    return areSame ? qxStatus::DONE : qxStatus::NO;
}

qxStatus runExport(qxReport& report, const qxCommandLine& line)
{
    const qxStatus status = openSettings(report, line);
    if (status != qxStatus::DONE) return status;
    qxTextSink sink;
    if (!qxKeyDatabase::exportLocalRegistry(&sink)) throw qxFileError("the document can not be written");
    writeFile(line.getArgumentCount() == 0 ? std::string("-") : line.getArgumentText(0), sink.text);
    return qxStatus::DONE;
}

qxStatus runImport(qxReport& report, const qxCommandLine& line)
{
    const std::string file = line.getArgumentText(0);
    Rows rows;
    qxStatus status = readRows(report, file, rows); // shows what is wrong with it
    if (status == qxStatus::DONE) status = openSettings(report, line);
    if (status != qxStatus::DONE) return status;
    report.hold();
    return kept(report, qxKeyDatabase::importLocalRegistry(file.c_str()));
}

} // namespace

qxConfKey parseConfKey(const std::string& text)
{
    const std::size_t end = text.rfind('/');
    const std::string name = end == std::string::npos ? text : text.substr(end + 1);
    if (name.empty() || text.size() > qxString::MAX_LENGTH / 2)
        throw qxUsageError("'" + text + "' is no key");
    const std::string path = end == std::string::npos ? std::string() : text.substr(0, end);
    return {path.c_str(), name.c_str()};
}

std::string confKeyText(const qxString& path, const qxString& name)
{
    return std::string(viewOf(path)) + "/" + std::string(viewOf(name));
}

std::string confValueText(bool isThere, const qxString& value)
{
    const std::string text(viewOf(value));
    if (!isThere) return "(none)";
    const bool isClear = !text.empty() && text.front() != '"' && text != "(none)" &&
                         std::none_of(text.begin(), text.end(), [](char c) {
                             return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
                         });
    return isClear ? text : quote(text);
}

qxStatus openSettings(qxReport& report, const std::string& url)
{
    qxKeyDatabase::enableSystemRegistry(0);
    const qxString scheme = qxSerializeAdapter::getURLScheme(url.c_str());
    if (url.empty() || url.size() > qxString::MAX_LENGTH || scheme == "mem" || scheme == "con")
        throw qxUsageError("'" + url + "' is no document");
    if (scheme.isEmpty() && isThere(url)) {
        Check check;
        const qxStatus status = readDocument(report, url, check);
        if (status != qxStatus::DONE) return status;
    }
    report.hold();
    const unsigned char isOpen = qxKeyDatabase::openLocalRegistry(url.c_str());
    return kept(report, isOpen);
}

qxStatus openSettings(qxReport& report, const qxCommandLine& line)
{
    return openSettings(report, documentOf(line));
}

void declareConf(qxTool& tool)
{
    tool.addCommand("conf", "reads, changes and watches settings")
        .addOption("--file", "FILE", "the document")
        .setDescription(DESCRIPTION);
    tool.add("conf get", "prints values", runGet).addArgument("KEY", "whose values", QX_ARGUMENT_SOME);
    tool.add("conf set", "sets a value", runSet)
        .addArgument("KEY", "whose value")
        .addArgument("VALUE", "the text");
    tool.add("conf unset", "removes a value", runUnset).addArgument("KEY", "whose value");
    tool.add("conf list", "prints all values, sorted", runList)
        .addArgument("PATH", "only those beneath it", QX_ARGUMENT_OPTIONAL);
    tool.add("conf where", "prints where the document is", runWhere);
    tool.add("conf diff", "prints what differs between two documents", runDiff)
        .addArgument("A", "a document")
        .addArgument("B", "another");
    tool.add("conf watch", "prints changes as they happen, until it is interrupted", runConfWatch)
        .addArgument("KEY", "only those of this key", QX_ARGUMENT_OPTIONAL);
    tool.add("conf export", "writes the document", runExport)
        .addArgument("FILE", "to this file", QX_ARGUMENT_OPTIONAL);
    tool.add("conf import", "sets all values of another document", runImport)
        .addArgument("FILE", "the other document");
}
