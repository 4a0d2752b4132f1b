#pragma once

#include "platform/PropertyList.h"

namespace quillmark {

/// What a value takes in memory once it is read: bytes, rounded up, allocation overhead included. A document is
/// refused before it costs more than PropertyList::kMaximumMemory.
namespace cost {

constexpr qint64 kDictionary = 128;
constexpr qint64 kArray = 96;
constexpr qint64 kScalar = 48;

constexpr qint64 text(qint64 characters) { return kScalar + 2 * characters; }
constexpr qint64 data(qint64 bytes) { return kScalar + bytes; }
/// A place in an array, and a place in a dictionary less its key's text.
constexpr qint64 kElement = 32;
constexpr qint64 kEntry = 96;

} // namespace cost

/// Counts down what is left of one document's memory.
class PropertyListBudget {
public:
    /// Takes a share. \returns false when there is not enough left; then nothing is taken.
    bool take(qint64 bytes) {
        if (bytes > m_left) {
            return false;
        }
        m_left -= bytes;
        return true;
    }
    void giveBack(qint64 bytes) { m_left += bytes; }
    qint64 left() const { return m_left; }

private:
    qint64 m_left = PropertyList::kMaximumMemory;
};

} // namespace quillmark
