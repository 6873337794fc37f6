// Settings: a document of 1,000 keys is loaded, asked and saved.
// SPDX-License-Identifier: see LICENSE

#include "qxbench.h"

#include "qxkeydatabase.h"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#if defined(QX_PEER_GLIB)
#include <glib.h>
#endif
#if defined(QX_PEER_QT5)
#include <QtCore/QSettings>
#endif
#if defined(QX_PEER_POCOUTIL)
#include <Poco/AutoPtr.h>
#include <Poco/SAX/InputSource.h>
#include <Poco/Util/XMLConfiguration.h>
#endif

namespace
{

constexpr int KEYS = 1000;
constexpr const char* PATH = "software/Norvale/QuaxoSDK";

std::string keyName(int i)
{
    return "key" + std::to_string(i);
}

std::string valueText(int i)
{
    return "value number " + std::to_string(i * 7919 % 1000);
}

std::uint64_t checksum(const char* text)
{
    return qxBenchChecksum(text, std::strlen(text));
}

/// The same keys in the form of each contender, in a folder that goes at the end.
class Files
{
public:
    Files()
        : m_folder(std::filesystem::temp_directory_path() /
                   ("qxbench-" + std::to_string(std::random_device()())))
    {
        std::filesystem::create_directory(m_folder);
        std::string ini = "[QuaxoSDK]\n";
        std::string keys;
        for (int i = 0; i < KEYS; ++i) {
            ini += keyName(i) + "=" + valueText(i) + "\n";
            keys += "        <" + keyName(i) + ">" + valueText(i) + "</" + keyName(i) + ">\n";
        }
        const std::string xml =
            "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\" ?>\n<registry>\n  <software>\n"
            "    <Norvale>\n      <QuaxoSDK>\n" +
            keys + "      </QuaxoSDK>\n    </Norvale>\n  </software>\n</registry>\n";
        write("settings.reg", xml);
        for (int i = 0; i < COPIES; ++i) write(iniName(i), ini);
        qxKeyDatabase::enableSystemRegistry(0);
        qxKeyDatabase::setLocalRegistry(name("settings.reg").c_str());
    }
    ~Files()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_folder, ignored);
    }
    Files(const Files&) = delete;
    Files& operator=(const Files&) = delete;

    std::string name(const std::string& file) const { return (m_folder / file).string(); }
    std::string read(const std::string& file) const
    {
        std::ifstream in(m_folder / file, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }

    static constexpr int COPIES = 64; // a peer keeps what it has read last
    static std::string iniName(int i) { return "settings" + std::to_string(i) + ".ini"; }

private:
    void write(const std::string& file, const std::string& content) const
    {
        std::ofstream(m_folder / file, std::ios::binary) << content;
    }

    const std::filesystem::path m_folder;
};

void prepareLoad(qxBenchCase& bench)
{
    const auto files = std::make_shared<Files>();
    const std::string last = keyName(KEYS - 1);
    bench.add("qxbase", [files, last] {
        qxKeyDatabase::setLocalRegistry(files->name("settings.reg").c_str());
        return checksum(qxKeyDatabase::getRegKey(QX_KEY_USER, PATH, last.c_str()).getString());
    });
#if defined(QX_PEER_GLIB)
    bench.add("GKeyFile", [files, last] {
        GKeyFile* const settings = g_key_file_new();
        g_key_file_load_from_file(settings, files->name(Files::iniName(0)).c_str(), G_KEY_FILE_NONE, nullptr);
        gchar* const value = g_key_file_get_string(settings, "QuaxoSDK", last.c_str(), nullptr);
        const std::uint64_t result = checksum(value);
        g_free(value);
        g_key_file_free(settings);
        return result;
    });
#endif
#if defined(QX_PEER_QT5)
    const auto turn = std::make_shared<int>(0);
    bench.add("QSettings", [files, last, turn] {
        *turn = (*turn + 1) % Files::COPIES;
        const QSettings settings(QString::fromStdString(files->name(Files::iniName(*turn))),
                                 QSettings::IniFormat);
        return checksum(
            settings.value(QString::fromStdString("QuaxoSDK/" + last)).toString().toUtf8().constData());
    });
#endif
#if defined(QX_PEER_POCOUTIL)
    bench.add("Poco XML", [files, last] {
        Poco::AutoPtr<Poco::Util::XMLConfiguration> settings(new Poco::Util::XMLConfiguration);
        Poco::XML::InputSource source(files->name("settings.reg"));
        settings->load(&source, 4 * KEYS); // its usual pool of names is too small
        return checksum(settings->getString("software.Norvale.QuaxoSDK." + last).c_str());
    });
#endif
}

void prepareGet(qxBenchCase& bench)
{
    const auto files = std::make_shared<Files>();
    bench.amount = KEYS;
    const auto names = std::make_shared<std::vector<qxString>>();
    for (int i = 0; i < KEYS; ++i) names->push_back(keyName(i).c_str());
    const qxString path = PATH;
    bench.add("qxbase", [files, names, path] {
        std::uint64_t sum = 0;
        for (const qxString& name : *names) sum += qxKeyDatabase::getRegKey(QX_KEY_USER, path, name).length();
        return sum;
    });
#if defined(QX_PEER_GLIB)
    const std::shared_ptr<GKeyFile> keyFile(g_key_file_new(), g_key_file_free);
    g_key_file_load_from_file(keyFile.get(), files->name(Files::iniName(0)).c_str(), G_KEY_FILE_NONE,
                              nullptr);
    bench.add("GKeyFile", [keyFile, names] {
        std::uint64_t sum = 0;
        for (const qxString& name : *names) {
            gchar* const value = g_key_file_get_string(keyFile.get(), "QuaxoSDK", name.getString(), nullptr);
            sum += std::strlen(value);
            g_free(value);
        }
        return sum;
    });
#endif
#if defined(QX_PEER_QT5)
    const auto settings = std::make_shared<QSettings>(QString::fromStdString(files->name(Files::iniName(0))),
                                                      QSettings::IniFormat);
    const auto keys = std::make_shared<std::vector<QString>>();
    for (int i = 0; i < KEYS; ++i) keys->push_back(QString::fromStdString("QuaxoSDK/" + keyName(i)));
    bench.add("QSettings", [settings, keys] {
        std::uint64_t sum = 0;
        for (const QString& key : *keys)
            sum += static_cast<std::uint64_t>(settings->value(key).toString().size());
        return sum;
    });
#endif
}

// One key is set and on the disk; beside it the same bytes are written, synced and renamed.
void prepareSet(qxBenchCase& bench)
{
    const auto files = std::make_shared<Files>();
    const auto turn = std::make_shared<int>(0);
    bench.add("qxbase", [files, turn]() -> std::uint64_t {
        return qxKeyDatabase::setRegKey(QX_KEY_USER, PATH, "key500", ++*turn % 2 ? "one" : "two");
    });
    const std::string bytes = files->read("settings.reg");
    bench.add("write, sync, rename", [files, bytes]() -> std::uint64_t {
        const std::string temporary = files->name("bare.tmp");
        const int file = open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        const bool isWritten = write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
        const bool isSynced = fsync(file) == 0;
        close(file);
        return isWritten && isSynced && rename(temporary.c_str(), files->name("bare.reg").c_str()) == 0;
    });
}

const qxBenchEntry s_load("settings/load", QX_BENCH_NANOSECONDS, prepareLoad);
const qxBenchEntry s_get("settings/get", QX_BENCH_NANOSECONDS, prepareGet);
const qxBenchEntry s_set("settings/set", QX_BENCH_NANOSECONDS, prepareSet);

} // namespace
