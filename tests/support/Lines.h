#pragma once

#include <initializer_list>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace quillmark::test {

/// Of a log, or of a transcript.
using Lines = std::vector<std::string>;

/// Those of a text, without their ends.
inline Lines linesIn(const std::string &text) {
    Lines lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

/// So many of them, or all that there are, from the one at that index on.
inline Lines linesFrom(const Lines &lines, size_t first, size_t count = std::string::npos) {
    Lines some;
    for (size_t i = first; i < lines.size() && i - first < count; ++i) {
        some.push_back(lines[i]);
    }
    return some;
}

/// The parts, one behind the other.
inline Lines together(std::initializer_list<Lines> parts) {
    Lines all;
    for (const Lines &part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

inline std::string repeated(std::string_view text, size_t times) {
    std::string all;
    while (times-- > 0) {
        all += text;
    }
    return all;
}

/// The texts with a separator between them.
inline std::string joined(const std::vector<std::string> &texts, std::string_view separator) {
    std::string all;
    for (const std::string &text : texts) {
        all.append(&text == &texts.front() ? "" : separator).append(text);
    }
    return all;
}

} // namespace quillmark::test
