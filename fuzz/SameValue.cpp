#include "SameValue.h"

#include "platform/linux/LinuxPropertyList.h"

#include <QDateTime>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace quillmark::fuzz {

namespace {

QString toTheSecond(const QVariant &date) { return date.toDateTime().toString(u"yyyy-MM-ddTHH:mm:sst"); }

} // namespace

bool sameValue(const QVariant &a, const QVariant &b) {
    if (a.typeId() != b.typeId()) {
        return false;
    }
    switch (a.typeId()) {
    case QMetaType::QVariantMap: {
        const QVariantMap left = a.toMap();
        const QVariantMap right = b.toMap();
        return left.keys() == right.keys() && std::equal(left.begin(), left.end(), right.begin(), sameValue);
    }
    case QMetaType::QVariantList: {
        const QVariantList left = a.toList();
        const QVariantList right = b.toList();
        return std::equal(left.begin(), left.end(), right.begin(), right.end(), sameValue);
    }
    case QMetaType::Double:
        return a.toDouble() == b.toDouble() || (std::isnan(a.toDouble()) && std::isnan(b.toDouble()));
    case QMetaType::QDateTime:
        return toTheSecond(a) == toTheSecond(b);
    default:
        return a == b;
    }
}

void requireRoundTrip(const QVariant &value) {
    // A value that is dear in its binary form may be too dear in XML; that is no fault.
    constexpr qsizetype kSmallDocument = 1 << 20;
    const LinuxPropertyList propertyList;
    const auto xml = propertyList.toXml(value);
    if (!xml || xml->size() > kSmallDocument) {
        return;
    }
    if (!sameValue(value, propertyList.parse(*xml))) {
        std::fprintf(stderr, "Read back as another value:\n%s\n", xml->constData());
        std::abort();
    }
}

} // namespace quillmark::fuzz
