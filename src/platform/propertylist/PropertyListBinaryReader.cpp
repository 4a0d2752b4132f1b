#include "platform/propertylist/PropertyListBytes.h"
#include "platform/propertylist/PropertyListFormats.h"
#include "platform/propertylist/PropertyListLimits.h"

#include <bit>
#include <vector>

// The form: the eight bytes "bplist00", the objects, a table of the objects' offsets, and a trailer of 32 bytes that
// gives the sizes of offsets and references, the number of objects, the root object and the table's place. All numbers
// are big-endian. An object begins with a marker byte: its type in the upper half, a length or a power of two in the
// lower one.
//
// Containers name other objects by number, so that a small file can describe a huge or an endless tree: what the tree
// takes when it is written out is limited. And objects may lie on top of each other in the file, so that many large
// ones fit into a small one: what they take together is limited as well, before each is read.

namespace quillmark {

namespace {

constexpr std::int64_t kHeaderSize = 8;
constexpr std::int64_t kTrailerSize = 32;

std::uint64_t bigEndian(const char *bytes) {
    std::uint64_t number = 0;
    for (size_t i = 0; i < sizeof number; ++i) {
        number = number << 8U | static_cast<unsigned char>(bytes[i]);
    }
    return number;
}

class BinaryReader {
public:
    explicit BinaryReader(const std::string &document) : m_bytes(document) {}

    Value root();

private:
    /// An object that is read, with the cost of its whole tree.
    struct Object {
        enum class State : std::uint8_t { Unread, Open, Read };
        Value value;
        std::int64_t treeCost = 0;
        State state = State::Unread;
    };
    /// A span of bytes inside the objects' area.
    struct Span {
        std::int64_t begin;
        std::int64_t count;
    };

    std::string_view bytes(Span span) const {
        return std::string_view(m_bytes).substr(static_cast<size_t>(span.begin), static_cast<size_t>(span.count));
    }
    std::optional<std::uint64_t> number(std::int64_t at, std::int64_t width) const;
    std::optional<Span> payload(std::int64_t at, std::int64_t unit) const;
    std::optional<std::uint64_t> reference(Span references, std::int64_t index) const;
    const Object *object(std::uint64_t index, int depth);
    bool read(Object &target, std::int64_t at, int depth);
    bool readDictionary(Object &target, std::int64_t at, int depth);
    bool readArray(Object &target, std::int64_t at, int depth);
    bool charge(Object &target, std::int64_t cost);
    bool chargePart(Object &target, const Object &part);

    const std::string &m_bytes;
    std::int64_t m_objectsEnd = 0;
    std::int64_t m_offsetSize = 0;
    std::int64_t m_referenceSize = 0;
    std::vector<Object> m_objects;
    PropertyListBudget m_budget;
};

/// Charges what the object itself will take.
bool BinaryReader::charge(Object &target, std::int64_t cost) {
    target.treeCost = cost;
    return m_budget.take(cost);
}

/// Adds what a part of the object takes to the object's tree. Lists and dictionaries are shared by all that hold them,
/// other values are copied.
bool BinaryReader::chargePart(Object &target, const Object &part) {
    target.treeCost += part.treeCost;
    const bool isShared = part.value.is<List>() || part.value.is<Dictionary>();
    return target.treeCost <= kMaximumPropertyListMemory && (isShared || m_budget.take(part.treeCost));
}

/// An unsigned number of 1 to 8 bytes inside the objects' area or the offset table.
std::optional<std::uint64_t> BinaryReader::number(std::int64_t at, std::int64_t width) const {
    if (width < 1 || width > 8 || at < kHeaderSize || at > std::ssize(m_bytes) - kTrailerSize - width) {
        return std::nullopt;
    }
    // Eight bytes can be read for any width, since the trailer follows.
    return bigEndian(m_bytes.data() + at) >> (8 * (8 - width));
}

/// The bytes behind the marker at `at`, whose length counts units of `unit` bytes.
std::optional<BinaryReader::Span> BinaryReader::payload(std::int64_t at, std::int64_t unit) const {
    std::uint64_t count = static_cast<std::uint8_t>(m_bytes[static_cast<size_t>(at)]) & 0x0FU;
    std::int64_t begin = at + 1;
    if (count == 0x0F) { // a longer length follows as an integer object
        const auto marker = number(begin, 1);
        if (!marker || *marker < 0x10 || *marker > 0x13) {
            return std::nullopt;
        }
        const std::int64_t width = std::int64_t{1} << (*marker & 0x0FU);
        const auto length = number(begin + 1, width);
        if (!length) {
            return std::nullopt;
        }
        count = *length;
        begin += 1 + width;
    }
    if (begin > m_objectsEnd || count > static_cast<std::uint64_t>((m_objectsEnd - begin) / unit)) {
        return std::nullopt;
    }
    return Span{begin, static_cast<std::int64_t>(count)};
}

std::optional<std::uint64_t> BinaryReader::reference(Span references, std::int64_t index) const {
    return number(references.begin + index * m_referenceSize, m_referenceSize);
}

/// Reads an object once; null for any fault, a cycle included.
const BinaryReader::Object *BinaryReader::object(std::uint64_t index, int depth) {
    if (index >= m_objects.size() || depth > kMaximumPropertyListDepth) {
        return nullptr;
    }
    Object &target = m_objects[index];
    if (target.state == Object::State::Unread) {
        const auto offset = number(m_objectsEnd + static_cast<std::int64_t>(index) * m_offsetSize, m_offsetSize);
        if (!offset || *offset < kHeaderSize || *offset >= static_cast<std::uint64_t>(m_objectsEnd)) {
            return nullptr;
        }
        target.state = Object::State::Open;
        const bool isRead = read(target, static_cast<std::int64_t>(*offset), depth);
        if (!isRead || target.value.isNothing()) {
            return nullptr;
        }
        target.state = Object::State::Read;
    }
    return target.state == Object::State::Read ? &target : nullptr;
}

bool BinaryReader::read(Object &target, std::int64_t at, int depth) {
    const auto marker = static_cast<std::uint8_t>(m_bytes[static_cast<size_t>(at)]);
    const std::int64_t width = std::int64_t{1} << (marker & 0x0FU);
    target.treeCost = cost::kScalar;
    switch (marker >> 4U) {
    case 0x0:
        target.value = marker == 0x08 || marker == 0x09 ? Value(marker == 0x09) : Value();
        return true;
    case 0x1:
        target.value = width == 16 ? integerFrom(number(at + 1, 8), number(at + 9, 8), width)
                                   : integerFrom(std::nullopt, number(at + 1, width), width);
        return true;
    case 0x2:
    case 0x3: {
        const auto bits = number(at + 1, width);
        if (!bits || (width != 4 && width != 8)) {
            return false;
        }
        const double real = width == 4 ? static_cast<double>(std::bit_cast<float>(static_cast<std::uint32_t>(*bits)))
                                       : std::bit_cast<double>(*bits);
        target.value = marker == 0x33 ? dateFrom(real) : marker < 0x30 ? Value(real) : Value();
        return true;
    }
    case 0x4:
        if (const auto span = payload(at, 1); span && charge(target, cost::data(span->count))) {
            target.value = Bytes{std::string(bytes(*span))};
        }
        return true;
    case 0x5:
        if (const auto span = payload(at, 1); span && charge(target, cost::text(span->count))) {
            target.value = asciiTextFrom(bytes(*span));
        }
        return true;
    case 0x6:
        if (const auto span = payload(at, 2); span && charge(target, cost::text(3 * span->count))) { // bytes of UTF-8
            target.value = utf16TextFrom(bytes({span->begin, 2 * span->count}));
        }
        return true;
    case 0x8: { // an archiver's identifier, in the form that the XML writers give it
        const auto identifier = number(at + 1, (marker & 0x0F) + 1);
        if (identifier && *identifier <= 0xFFFFFFFF && charge(target, cost::kDictionary + cost::kEntry)) {
            target.value = Dictionary{{"CF$UID", *identifier}};
        }
        return true;
    }
    case 0xA:
        return readArray(target, at, depth);
    case 0xD:
        return readDictionary(target, at, depth);
    default:
        return false;
    }
}

bool BinaryReader::readArray(Object &target, std::int64_t at, int depth) {
    const auto span = payload(at, m_referenceSize);
    if (!span || depth >= kMaximumPropertyListDepth || !charge(target, cost::kArray + span->count * cost::kElement)) {
        return false;
    }
    List list;
    list.reserve(static_cast<size_t>(span->count));
    for (std::int64_t i = 0; i < span->count; ++i) {
        const auto index = reference(*span, i);
        const Object *element = index ? object(*index, depth + 1) : nullptr;
        if (element == nullptr || !chargePart(target, *element)) {
            return false;
        }
        list.push_back(element->value);
    }
    target.value = std::move(list);
    return true;
}

bool BinaryReader::readDictionary(Object &target, std::int64_t at, int depth) {
    const auto span = payload(at, 2 * m_referenceSize); // all the keys, then all the values
    if (!span || depth >= kMaximumPropertyListDepth ||
        !charge(target, cost::kDictionary + span->count * cost::kEntry)) {
        return false;
    }
    std::vector<Dictionary::value_type> entries;
    entries.reserve(static_cast<size_t>(span->count));
    for (std::int64_t i = 0; i < span->count; ++i) {
        const auto keyIndex = reference(*span, i);
        const auto valueIndex = reference(*span, span->count + i);
        const Object *key = keyIndex ? object(*keyIndex, depth + 1) : nullptr;
        const Object *value = key != nullptr && valueIndex ? object(*valueIndex, depth + 1) : nullptr;
        const auto *const name = key != nullptr ? key->value.as<std::string>() : nullptr;
        if (value == nullptr || name == nullptr || !chargePart(target, *key) || !chargePart(target, *value)) {
            return false;
        }
        entries.emplace_back(*name, value->value);
    }
    target.value = Dictionary(std::move(entries));
    return true;
}

Value BinaryReader::root() {
    if (std::ssize(m_bytes) < kHeaderSize + kTrailerSize) {
        return {};
    }
    const char *trailer = m_bytes.data() + m_bytes.size() - kTrailerSize;
    m_offsetSize = static_cast<std::uint8_t>(trailer[6]);
    m_referenceSize = static_cast<std::uint8_t>(trailer[7]);
    const auto count = bigEndian(trailer + 8);
    const auto top = bigEndian(trailer + 16);
    const auto table = bigEndian(trailer + 24);
    const auto end = static_cast<std::uint64_t>(m_bytes.size() - kTrailerSize);
    const auto inRange = [](std::int64_t size) { return size >= 1 && size <= 8; };
    if (!inRange(m_offsetSize) || !inRange(m_referenceSize) || table < kHeaderSize || table > end ||
        count > (end - table) / static_cast<std::uint64_t>(m_offsetSize)) {
        return {};
    }
    if (!m_budget.take(std::ssize(m_bytes) + static_cast<std::int64_t>(count * sizeof(Object)))) {
        return {};
    }
    m_objectsEnd = static_cast<std::int64_t>(table);
    m_objects.resize(count);
    const Object *object = this->object(top, 0);
    return object != nullptr ? object->value : Value();
}

} // namespace

Value parseBinaryPropertyList(const std::string &document) {
    return document.starts_with("bplist00") ? BinaryReader(document).root() : Value();
}

} // namespace quillmark
