#include "platform/linux/LinuxPropertyList.h"
#include "platform/linux/PropertyListCost.h"
#include "platform/linux/Utc.h"

#include <QDateTime>
#include <QtEndian>
#include <bit>
#include <cmath>
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

constexpr qint64 kHeaderSize = 8;
constexpr qint64 kTrailerSize = 32;

class BinaryReader {
public:
    explicit BinaryReader(const QByteArray &document) : m_bytes(document) {}

    QVariant root();

private:
    /// An object that is read, with the cost of its whole tree.
    struct Object {
        enum class State : quint8 { Unread, Open, Read };
        QVariant value;
        qint64 treeCost = 0;
        State state = State::Unread;
    };
    /// A span of bytes inside the objects' area.
    struct Span {
        qint64 begin;
        qint64 count;
    };

    std::optional<quint64> number(qint64 at, qint64 width) const;
    std::optional<Span> payload(qint64 at, qint64 unit) const;
    std::optional<quint64> reference(Span references, qint64 index) const;
    const Object *object(quint64 index, int depth);
    bool read(Object &target, qint64 at, int depth);
    bool readDictionary(Object &target, qint64 at, int depth);
    bool readArray(Object &target, qint64 at, int depth);
    bool charge(Object &target, qint64 cost);
    bool chargePart(Object &target, const Object &part) const;

    const QByteArray &m_bytes;
    qint64 m_objectsEnd = 0;
    qint64 m_offsetSize = 0;
    qint64 m_referenceSize = 0;
    std::vector<Object> m_objects;
    PropertyListBudget m_budget;
};

/// Charges what the object itself will take.
bool BinaryReader::charge(Object &target, qint64 cost) {
    target.treeCost = cost;
    return m_budget.take(cost);
}

/// Adds what a part of the object takes to the object's tree.
bool BinaryReader::chargePart(Object &target, const Object &part) const {
    target.treeCost += part.treeCost;
    return target.treeCost <= PropertyList::kMaximumMemory;
}

/// An unsigned number of 1 to 8 bytes inside the objects' area or the offset table.
std::optional<quint64> BinaryReader::number(qint64 at, qint64 width) const {
    if (width < 1 || width > 8 || at < kHeaderSize || at > m_bytes.size() - kTrailerSize - width) {
        return std::nullopt;
    }
    // Eight bytes can be read for any width, since the trailer follows.
    return qFromBigEndian<quint64>(m_bytes.constData() + at) >> (8 * (8 - width));
}

/// The bytes behind the marker at `at`, whose length counts units of `unit` bytes.
std::optional<BinaryReader::Span> BinaryReader::payload(qint64 at, qint64 unit) const {
    quint64 count = static_cast<quint8>(m_bytes[at]) & 0x0FU;
    qint64 begin = at + 1;
    if (count == 0x0F) { // a longer length follows as an integer object
        const auto marker = number(begin, 1);
        if (!marker || *marker < 0x10 || *marker > 0x13) {
            return std::nullopt;
        }
        const qint64 width = 1LL << (*marker & 0x0FU);
        const auto length = number(begin + 1, width);
        if (!length) {
            return std::nullopt;
        }
        count = *length;
        begin += 1 + width;
    }
    if (begin > m_objectsEnd || count > static_cast<quint64>((m_objectsEnd - begin) / unit)) {
        return std::nullopt;
    }
    return Span{begin, static_cast<qint64>(count)};
}

std::optional<quint64> BinaryReader::reference(Span references, qint64 index) const {
    return number(references.begin + index * m_referenceSize, m_referenceSize);
}

/// Reads an object once; null for any fault, a cycle included.
const BinaryReader::Object *BinaryReader::object(quint64 index, int depth) {
    if (index >= m_objects.size() || depth > PropertyList::kMaximumDepth) {
        return nullptr;
    }
    Object &target = m_objects[index];
    if (target.state == Object::State::Unread) {
        const auto offset = number(m_objectsEnd + static_cast<qint64>(index) * m_offsetSize, m_offsetSize);
        if (!offset || *offset < kHeaderSize || *offset >= static_cast<quint64>(m_objectsEnd)) {
            return nullptr;
        }
        target.state = Object::State::Open;
        const bool isRead = read(target, static_cast<qint64>(*offset), depth);
        if (!isRead || !target.value.isValid()) {
            return nullptr;
        }
        target.state = Object::State::Read;
    }
    return target.state == Object::State::Read ? &target : nullptr;
}

/// Integers of up to 4 bytes are unsigned, one of 8 bytes is signed, and one of 16 bytes holds what 8 can't.
QVariant integerFrom(std::optional<quint64> upper, std::optional<quint64> lower, qint64 width) {
    if (!lower || (width == 16 && !upper)) {
        return {};
    }
    if (width < 16) {
        return static_cast<qint64>(*lower);
    }
    const bool isNegative = *upper == ~quint64{0} && (*lower >> 63) == 1;
    if (*upper == 0 && (*lower >> 63) == 1) {
        return *lower;
    }
    return *upper == 0 || isNegative ? QVariant(static_cast<qint64>(*lower)) : QVariant();
}

/// Seconds since 2001-01-01T00:00:00Z.
QVariant dateFrom(double seconds) {
    constexpr qint64 kReference = 978307200;                  // of 1 January 2001, since 1970
    constexpr double kLatest = 253402300800.0 - kReference;   // the year 10000
    constexpr double kEarliest = -62135596800.0 - kReference; // the year 1
    if (!(seconds >= kEarliest && seconds < kLatest)) {
        return {};
    }
    return QDateTime::fromMSecsSinceEpoch(std::llround((seconds + kReference) * 1000), kUtc);
}

bool isAscii(QByteArrayView bytes) {
    return std::all_of(bytes.begin(), bytes.end(), [](char byte) { return static_cast<signed char>(byte) >= 0; });
}

bool BinaryReader::read(Object &target, qint64 at, int depth) {
    const auto marker = static_cast<quint8>(m_bytes[at]);
    const qint64 width = 1LL << (marker & 0x0FU);
    target.treeCost = cost::kScalar;
    switch (marker >> 4U) {
    case 0x0:
        target.value = marker == 0x08 || marker == 0x09 ? QVariant(marker == 0x09) : QVariant();
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
        const double real = width == 4 ? static_cast<double>(std::bit_cast<float>(static_cast<quint32>(*bits)))
                                       : std::bit_cast<double>(*bits);
        target.value = marker == 0x33 ? dateFrom(real) : marker < 0x30 ? QVariant(real) : QVariant();
        return true;
    }
    case 0x4:
        if (const auto span = payload(at, 1); span && charge(target, cost::data(span->count))) {
            target.value = QByteArray(m_bytes.constData() + span->begin, span->count);
        }
        return true;
    case 0x5:
        if (const auto span = payload(at, 1); span && charge(target, cost::text(span->count))) {
            const auto text = QByteArrayView(m_bytes).sliced(span->begin, span->count);
            target.value = isAscii(text) ? QVariant(QString::fromLatin1(text)) : QVariant();
        }
        return true;
    case 0x6:
        if (const auto span = payload(at, 2); span && charge(target, cost::text(span->count))) {
            QString text(span->count, Qt::Uninitialized);
            qFromBigEndian<quint16>(m_bytes.constData() + span->begin, span->count, text.data());
            target.value = text.isValidUtf16() ? QVariant(text) : QVariant();
        }
        return true;
    case 0x8: { // an archiver's identifier, in the form that the XML writers give it
        const auto identifier = number(at + 1, (marker & 0x0F) + 1);
        if (identifier && *identifier <= 0xFFFFFFFF && charge(target, cost::kDictionary + cost::kEntry)) {
            target.value = QVariantMap{{QStringLiteral("CF$UID"), static_cast<qint64>(*identifier)}};
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

bool BinaryReader::readArray(Object &target, qint64 at, int depth) {
    const auto span = payload(at, m_referenceSize);
    if (!span || depth >= PropertyList::kMaximumDepth || !charge(target, cost::kArray + span->count * cost::kElement)) {
        return false;
    }
    QVariantList list;
    list.reserve(span->count);
    for (qint64 i = 0; i < span->count; ++i) {
        const auto index = reference(*span, i);
        const Object *element = index ? object(*index, depth + 1) : nullptr;
        if (element == nullptr || !chargePart(target, *element)) {
            return false;
        }
        list.append(element->value);
    }
    target.value = list;
    return true;
}

bool BinaryReader::readDictionary(Object &target, qint64 at, int depth) {
    const auto span = payload(at, 2 * m_referenceSize); // all the keys, then all the values
    if (!span || depth >= PropertyList::kMaximumDepth ||
        !charge(target, cost::kDictionary + span->count * cost::kEntry)) {
        return false;
    }
    QVariantMap map;
    for (qint64 i = 0; i < span->count; ++i) {
        const auto keyIndex = reference(*span, i);
        const auto valueIndex = reference(*span, span->count + i);
        const Object *key = keyIndex ? object(*keyIndex, depth + 1) : nullptr;
        const Object *value = key != nullptr && valueIndex ? object(*valueIndex, depth + 1) : nullptr;
        if (value == nullptr || key->value.typeId() != QMetaType::QString || !chargePart(target, *key) ||
            !chargePart(target, *value)) {
            return false;
        }
        // Writers often sort their keys: then the end is the place.
        map.insert(map.cend(), *static_cast<const QString *>(key->value.constData()), value->value);
    }
    target.value = map;
    return true;
}

QVariant BinaryReader::root() {
    if (m_bytes.size() < kHeaderSize + kTrailerSize) {
        return {};
    }
    const char *trailer = m_bytes.constData() + m_bytes.size() - kTrailerSize;
    m_offsetSize = static_cast<quint8>(trailer[6]);
    m_referenceSize = static_cast<quint8>(trailer[7]);
    const auto count = qFromBigEndian<quint64>(trailer + 8);
    const auto top = qFromBigEndian<quint64>(trailer + 16);
    const auto table = qFromBigEndian<quint64>(trailer + 24);
    const auto end = static_cast<quint64>(m_bytes.size() - kTrailerSize);
    const auto inRange = [](qint64 size) { return size >= 1 && size <= 8; };
    if (!inRange(m_offsetSize) || !inRange(m_referenceSize) || table < kHeaderSize || table > end ||
        count > (end - table) / static_cast<quint64>(m_offsetSize)) {
        return {};
    }
    if (!m_budget.take(m_bytes.size() + static_cast<qint64>(count * sizeof(Object)))) {
        return {};
    }
    m_objectsEnd = static_cast<qint64>(table);
    m_objects.resize(count);
    const Object *object = this->object(top, 0);
    return object != nullptr ? object->value : QVariant();
}

} // namespace

QVariant parseBinaryPropertyList(const QByteArray &document) {
    return document.startsWith("bplist00") ? BinaryReader(document).root() : QVariant();
}

} // namespace quillmark
