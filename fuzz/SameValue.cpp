#include "SameValue.h"

#include "platform/propertylist/PropertyListFormats.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace quillmark::fuzz {

bool sameValue(const Value &a, const Value &b) {
    if (a.is<Dictionary>() && b.is<Dictionary>()) {
        const auto sameEntry = [](const auto &left, const auto &right) {
            return left.first == right.first && sameValue(left.second, right.second);
        };
        return std::equal(a.dictionary().begin(), a.dictionary().end(), b.dictionary().begin(), b.dictionary().end(),
                          sameEntry);
    }
    if (a.is<List>() && b.is<List>()) {
        return std::equal(a.list().begin(), a.list().end(), b.list().begin(), b.list().end(), sameValue);
    }
    if (a.is<double>() && b.is<double>()) {
        return *a.as<double>() == *b.as<double>() || (std::isnan(*a.as<double>()) && std::isnan(*b.as<double>()));
    }
    if (a.is<Date>() && b.is<Date>()) {
        using std::chrono::seconds;
        return std::chrono::floor<seconds>(*a.as<Date>()) == std::chrono::floor<seconds>(*b.as<Date>());
    }
    return a == b;
}

void requireRoundTrip(const Value &value) {
    // A value that is dear in its binary form may be too dear in XML; that is no fault.
    constexpr size_t kSmallDocument = 1 << 20;
    const PropertyListFormats propertyList;
    const auto xml = propertyList.toXml(value);
    if (!xml || xml->size() > kSmallDocument) {
        return;
    }
    if (!sameValue(value, propertyList.parse(*xml))) {
        std::fprintf(stderr, "Read back as another value:\n%s\n", xml->c_str());
        std::abort();
    }
}

} // namespace quillmark::fuzz
