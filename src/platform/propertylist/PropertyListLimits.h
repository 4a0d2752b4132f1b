#pragma once

#include <cstdint>

namespace quillmark {

/// Nested dictionaries and arrays, and the memory that one document may take while it is read.
inline constexpr int kMaximumPropertyListDepth = 256;
inline constexpr std::int64_t kMaximumPropertyListMemory = 56LL << 20;

/// What a value takes in memory once it is read: bytes, rounded up, allocation overhead included. A document is
/// refused before it costs more than kMaximumPropertyListMemory.
namespace cost {

constexpr std::int64_t kDictionary = 128;
constexpr std::int64_t kArray = 96;
constexpr std::int64_t kScalar = 48;

constexpr std::int64_t text(std::int64_t bytes) { return kScalar + bytes; }
constexpr std::int64_t data(std::int64_t bytes) { return kScalar + bytes; }
/// A place in an array, and a place in a dictionary less its key's text, with what sorting takes.
constexpr std::int64_t kElement = 40;
constexpr std::int64_t kEntry = 112;

} // namespace cost

/// Counts down what is left of one document's memory.
class PropertyListBudget {
public:
    /// Takes a share. \returns false when there is not enough left; then nothing is taken.
    bool take(std::int64_t bytes) {
        if (bytes > m_left) {
            return false;
        }
        m_left -= bytes;
        return true;
    }
    void giveBack(std::int64_t bytes) { m_left += bytes; }
    std::int64_t left() const { return m_left; }

private:
    std::int64_t m_left = kMaximumPropertyListMemory;
};

} // namespace quillmark
