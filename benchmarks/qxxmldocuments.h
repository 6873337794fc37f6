// The XML documents that benchmarks read.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include <fstream>
#include <iterator>
#include <random>
#include <string>

/// A scene graph of about `size` bytes: many short elements, numbers in attributes.
inline std::string qxBenchScene(std::size_t size)
{
    std::minstd_rand random(1);
    const auto number = [&random](unsigned int range) { return std::to_string(random() % range); };
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<scene name=\"bench\">\n";
    for (unsigned int i = 0; text.size() < size; ++i) {
        text += "\t<node id=\"" + std::to_string(i) + "\" type=\"group\" visible=\"true\">\n";
        text += "\t\t<transform x=\"" + number(1000) + ".5\" y=\"-" + number(1000) + ".25\" z=\"0\"/>\n";
        text += "\t\t<material ref=\"m" + number(50) +
                "\" ambient=\"0.2 0.2 0.2 1\" diffuse=\"0.8 0.8 0.8 1\"/>\n";
        for (unsigned int k = 0; k < 3; ++k) {
            text += "\t\t<geometry><vertex x=\"" + number(100) + "\" y=\"" + number(100) + "\" z=\"" +
                    number(100) + "\"/><normal>" + number(1000) + "</normal></geometry>\n";
        }
        text += "\t</node>\n";
    }
    return text + "</scene>\n";
}

/// Settings of about `size` bytes: elements with short texts.
inline std::string qxBenchSettings(std::size_t size)
{
    std::minstd_rand random(2);
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<settings version=\"3\">\n";
    for (unsigned int i = 0; text.size() < size; ++i) {
        text += "  <group name=\"group" + std::to_string(i) + "\">\n";
        for (unsigned int k = 0; k < 8; ++k) {
            text += "    <key name=\"key" + std::to_string(k) + "\" type=\"string\">/usr/local/share/value" +
                    std::to_string(random() % 100000) + "</key>\n";
        }
        text += "  </group>\n";
    }
    return text + "</settings>\n";
}

/// Prose of about `size` bytes in paragraphs, made of these words.
inline std::string qxBenchProse(std::size_t size, const std::string (&words)[8])
{
    std::minstd_rand random(3);
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<book>\n";
    while (text.size() < size) {
        text += "<p>";
        for (unsigned int i = 0; i < 120; ++i) text += words[random() % 8] + (i % 12 == 11 ? ",\n" : " ");
        text += "<em>" + words[random() % 8] + "</em>.</p>\n";
    }
    return text + "</book>\n";
}

inline std::string qxBenchAsciiProse(std::size_t size)
{
    return qxBenchProse(size, {"the", "quick", "brown", "fox", "jumps", "over", "lazy", "dogs"});
}

inline std::string qxBenchCyrillicProse(std::size_t size)
{
    return qxBenchProse(size, {"съешь", "ещё", "этих", "мягких", "французских", "булок", "да", "выпей"});
}

inline std::string qxBenchChineseProse(std::size_t size)
{
    return qxBenchProse(size, {"天地", "玄黄", "宇宙", "洪荒", "日月", "盈昃", "辰宿", "列张"});
}

/// The shared MIME database; empty where the system has none.
inline std::string qxBenchMime()
{
    std::ifstream file("/usr/share/mime/packages/freedesktop.org.xml", std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}
