#include "SameValue.h"
#include "accounts/JSONEncoder.h"
#include "unit/JSONReference.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

using namespace quillmark;
using test::JSONReference;

namespace {

void require(bool holds, const char *what) {
    if (!holds) {
        std::fprintf(stderr, "Not so: %s\n", what);
        std::abort();
    }
}

/// A key is written as it is, and none is read without a character.
bool isReadBack(const QString &key) { return !key.isEmpty() && !key.contains(u'"') && !key.contains(u'\\'); }

/// An exponent is not read as one, and what stands behind its sign would be the next member's value.
bool isReadBack(const QVariant &value) {
    return value.typeId() != QMetaType::Double || !QString::number(value.toDouble(), 'g', 16).contains(u'e');
}

/// A double that is whole comes back as an integer, another one with what sixteen digits and their sum leave of it.
bool isAlmost(double number, const QVariant &back) {
    const bool isNumber = back.typeId() == QMetaType::Double || back.typeId() == QMetaType::LongLong;
    return isNumber && std::abs(back.toDouble() - number) <= 1e-14 * std::abs(number);
}

/// What was read, written and read again is the same, where that can be: see isReadBack() and isAlmost().
void requireRoundTrip(const QVariantMap &members) {
    const auto isKeyReadBack = [](const QString &key) { return isReadBack(key); };
    const auto isValueReadBack = [](const QVariant &value) { return isReadBack(value); };
    const QStringList keys = members.keys();
    if (!std::all_of(keys.begin(), keys.end(), isKeyReadBack) ||
        !std::all_of(members.begin(), members.end(), isValueReadBack)) {
        return;
    }
    const auto back = JSONEncoder::createObjFromJSONStr(JSONEncoder::createJSONStrFromDict(members));
    require(back && back->keys() == keys, "the keys come back");
    for (auto member = members.begin(); member != members.end(); ++member) {
        const QVariant value = back->value(member.key());
        require(member->typeId() == QMetaType::Double ? isAlmost(member->toDouble(), value)
                                                      : fuzz::sameValue(*member, value),
                "the values come back");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const QString text =
        QString::fromUtf8(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size)); // NOLINT
    // A copy without a QString's final null character, so that a step behind the end is seen.
    const std::vector<QChar> characters(text.begin(), text.end());
    const QStringView view(characters.data(), static_cast<qsizetype>(characters.size()));

    const auto members = JSONEncoder::createObjFromJSONStr(view);
    const auto expected = JSONReference::createObjFromJSONStr(text);
    require(members.has_value() == expected.has_value(), "both are an object or none");
    require(!members || fuzz::sameValue(*members, *expected), "the members are the reference's");
    require(JSONEncoder::stringByAddingJSONEscape(view) == JSONReference::stringByAddingJSONEscape(text),
            "escaped as in the reference");
    require(JSONEncoder::stringByReplacingJSONEscape(text) == JSONReference::stringByReplacingJSONEscape(text),
            "unescaped as in the reference");
    if (members) {
        require(JSONEncoder::createJSONStrFromDict(*members) == JSONReference::createJSONStrFromDict(*members),
                "written as in the reference");
        requireRoundTrip(*members);
    }
    return 0;
}
