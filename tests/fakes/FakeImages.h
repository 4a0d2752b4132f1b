#pragma once

#include "platform/Images.h"

#include <QMap>

namespace quillmark::test {

/// Pictures by path; every other file is none.
class FakeImages final : public Images {
public:
    QMap<QString, Image> pictures;

    std::optional<Image> load(const QString &path) const override {
        const auto found = pictures.constFind(path);
        return found != pictures.constEnd() ? std::optional(*found) : std::nullopt;
    }
};

} // namespace quillmark::test
