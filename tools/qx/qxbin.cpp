// SPDX-License-Identifier: see LICENSE

#include "qxbinvalue.h"
#include "qxcommands.h"
#include "qxinput.h"
#include "qxoutput.h"

#include "qxserializeadaptermemory.h"

#include <algorithm>
#include <vector>

namespace
{

constexpr std::size_t MAX_VALUE = 65536; // bytes of one value: those of the longest text and its terminator

std::unique_ptr<qxBinValue> parseValue(const std::string& word, bool isLittleEndian)
{
    const std::size_t equals = word.find('=');
    if (equals == std::string::npos) throw qxUsageError("'" + word + "' is not of the form TYPE=VALUE");
    const std::string type = word.substr(0, equals);
    std::unique_ptr<qxBinValue> value = makeBinValue(type, isLittleEndian);
    if (!value) throw qxUsageError("unknown type '" + type + "'");
    const std::string text = word.substr(equals + 1);
    if (!value->setText(text)) throw qxUsageError("'" + text + "' is no value of type " + type);
    return value;
}

std::string bytesOf(const std::vector<std::unique_ptr<qxBinValue>>& values)
{
    std::size_t size = 0;
    for (const auto& value : values) size += value->getData().getDataSize(nullptr);
    std::string bytes(size, '\0');
    qxSerializeAdapterMemory memory(bytes.data(), static_cast<unsigned int>(size));
    for (const auto& value : values) value->getData().write(&memory);
    return bytes;
}

/// Hands on the bytes of another stream and keeps those of the value under way.
class Recorder final : public qxSerializeAdapter
{
public:
    explicit Recorder(const qxInput& source) : m_source(source) {}

    void startValue()
    {
        m_offset += m_bytes.size();
        m_bytes.clear();
    }

    /// Reads one value; raises qxFileError when the other stream fails.
    void readValue(qxSerializeData& data)
    {
        startValue();
        data.read(this);
        checkInput(m_source);
    }

    /// Where the value under way begins.
    qxUInt64 getOffset() const { return m_offset; }
    const std::string& getBytes() const { return m_bytes; }

    /// Whether the value wanted more bytes than there are.
    bool isShort() const { return m_isShort; }

    /// Whether it has more than are kept; the stream then seems to end.
    bool isTooLong() { return m_isTooLong || hasError(); }

protected:
    using qxSerializeAdapter::read_imp;
    using qxSerializeAdapter::write_imp;

    void write_imp(unsigned char) override {} // never written

    unsigned char read_imp() override
    {
        if (!hasData_imp()) {
            m_isShort = !m_isTooLong;
            return 0;
        }
        m_bytes += static_cast<char>(m_source.adapter->read());
        return static_cast<unsigned char>(m_bytes.back());
    }

    unsigned int read_imp(unsigned char* buffer, unsigned int count) override
    {
        const unsigned int got = qxSerializeAdapter::read_imp(buffer, count);
        m_isShort = m_isShort || got < count;
        return got;
    }

    unsigned char hasData_imp() override
    {
        if (!m_source.adapter->hasData()) return 0;
        m_isTooLong = m_bytes.size() == MAX_VALUE;
        return !m_isTooLong;
    }

private:
    const qxInput& m_source;
    qxUInt64 m_offset = 0;
    std::string m_bytes;
    bool m_isShort = false;
    bool m_isTooLong = false;
};

std::string hexadecimal(const std::string& bytes)
{
    static const char digits[] = "0123456789ABCDEF";
    std::string text;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        text += {digits[byte >> 4], digits[byte & 15]};
    }
    return text;
}

std::vector<std::string> splitTypes(const std::string& text)
{
    std::vector<std::string> types;
    for (std::size_t begin = 0; (begin = text.find_first_not_of(' ', begin)) != std::string::npos;) {
        const std::size_t end = std::min(text.find(' ', begin), text.size());
        types.push_back(text.substr(begin, end - begin));
        if (!makeBinValue(types.back(), false)) throw qxUsageError("unknown type '" + types.back() + "'");
        begin = end;
    }
    if (types.empty()) throw qxUsageError("bin dump needs --as with a type");
    return types;
}

// Reads a value and prints its line.
qxStatus dumpValue(qxReport& report, const std::string& file, Recorder& recorder, const std::string& type,
                   qxBinValue& value)
{
    recorder.readValue(value.getData());
    const std::string place = file + ": " + type + " at offset " + std::to_string(recorder.getOffset());
    if (recorder.isTooLong()) {
        report.printError(place + " is longer than 65535 bytes");
        return qxStatus::LIMIT;
    }
    if (recorder.isShort() || recorder.getBytes().empty()) {
        report.printError(place + " is cut short");
        return qxStatus::MALFORMED;
    }
    writeOutput(std::to_string(recorder.getOffset()) + " " + hexadecimal(recorder.getBytes()) + " " + type +
                " " + value.getText() + "\n");
    return qxStatus::DONE;
}

// Bytes that are left in `input` behind the first `taken`.
qxUInt64 countRest(const qxInput& input, qxUInt64 taken)
{
    if (!input.countsItself) return input.size - taken;
    unsigned char buffer[4096];
    while (!isInterrupted() && input.adapter->read(buffer, sizeof(buffer)) != 0) continue;
    return input.getSize() - taken;
}

qxStatus runBinPack(qxReport&, const qxCommandLine& line)
{
    std::vector<std::unique_ptr<qxBinValue>> values;
    for (const std::string& word : argumentsFrom(line, 0))
        values.push_back(parseValue(word, line.hasOption("--little")));
    writeFile(line.getOptionText("-o"), bytesOf(values));
    return qxStatus::DONE;
}

qxStatus runBinDump(qxReport& report, const qxCommandLine& line)
{
    const std::string file = line.getArgumentText(0);
    const std::vector<std::string> types = splitTypes(line.getOptionText("--as"));

    const qxInput input = openInput(file);
    Recorder recorder(input);
    for (const std::string& type : types) {
        if (isInterrupted()) return qxStatus::INTERRUPTED;
        const auto value = makeBinValue(type, line.hasOption("--little"));
        const qxStatus status = dumpValue(report, file, recorder, type, *value);
        if (status != qxStatus::DONE) return status;
    }
    recorder.startValue();
    const qxUInt64 rest = countRest(input, recorder.getOffset());
    checkInput(input);
    if (rest != 0)
        report.printNote(std::to_string(rest) + " bytes left at offset " +
                         std::to_string(recorder.getOffset()));
    return qxStatus::DONE;
}

const char TYPES[] = R"(A TYPE is one of u8 u16 u32 u64 f32 f64 varint str guid vec2 vec3 vec4 mat3 mat4.)";

} // namespace

void declareBin(qxTool& tool)
{
    tool.addCommand("bin", "packs values and shows packed ones");
    tool.add("bin pack", "writes the bytes of values", runBinPack)
        .addArgument("TYPE=VALUE", "the values, one behind the other", QX_ARGUMENT_SOME)
        .addOption("-o", "OUT", "the file for the bytes", "-")
        .addOption("--little", "", "numbers have their least significant byte first")
        .setDescription(TYPES);
    tool.add("bin dump", "prints the values that the bytes of a file are", runBinDump)
        .addArgument("FILE", "the bytes")
        .addOption("--as", "'TYPE…'", "what they are, in their order; needed")
        .addOption("--little", "", "numbers have their least significant byte first")
        .setDescription(TYPES);
}
