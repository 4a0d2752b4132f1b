#pragma once

#include <QByteArray>
#include <QString>
#include <QVariantMap>
#include <optional>

namespace quillmark {

/// Property lists, in their XML and their binary form.
///
/// Dictionary, array, string, integer, real, boolean, date and data are QVariantMap, QVariantList, QString,
/// qlonglong (qulonglong above its range), double, bool, QDateTime (UTC) and QByteArray.
class PropertyList {
public:
    /// Nested dictionaries and arrays, and the memory that one document may take while it is read.
    static constexpr int kMaximumDepth = 256;
    static constexpr qint64 kMaximumMemory = 56LL << 20;

    virtual ~PropertyList() = default;

    /// The document's root value. An invalid QVariant when the bytes are no well-formed property list of either form,
    /// or when they exceed kMaximumDepth or kMaximumMemory. The document is taken over and may be parsed in place.
    virtual QVariant parse(QByteArray document) const = 0;

    /// The XML form, or nothing when a value has no place in a property list or a text holds a character that XML
    /// cannot carry.
    virtual std::optional<QByteArray> toXml(const QVariant &value) const = 0;

    /// The root value of the file; an invalid QVariant when it can't be read or is no property list.
    QVariant read(const QString &path) const;
    /// The root dictionary of the file; empty when it can't be read or its root is no dictionary.
    QVariantMap readDictionary(const QString &path) const { return read(path).toMap(); }
};

} // namespace quillmark
