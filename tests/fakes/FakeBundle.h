#pragma once

#include "platform/Bundle.h"

#include <QHash>
#include <QMap>

namespace quillmark::test {

/// A bundle in memory. A resource exists when it is in `resources`; its path is below the resource path.
class FakeBundle final : public Bundle {
public:
    QString bundlePath = QStringLiteral("/Applications/Quillmark.app");
    QStringList resources;
    QVariantMap information;
    QMap<QString, QString> strings = {{QStringLiteral("ProductName"), QStringLiteral("Quillmark")}};
    mutable QHash<QString, int> lookups; ///< how often each key was asked for

    QString path() const override { return bundlePath; }
    QString resourcePath() const override { return bundlePath + QStringLiteral("/Contents/Resources"); }
    QString pathForResource(const QString &name, const QString &type) const override {
        const QString file = type.isEmpty() ? name : name + u'.' + type;
        return resources.contains(file) ? resourcePath() + u'/' + file : QString();
    }
    QVariantMap infoDictionary() const override { return information; }
    QString localizedString(const QString &key) const override {
        ++lookups[key];
        return strings.value(key, key);
    }
};

} // namespace quillmark::test
