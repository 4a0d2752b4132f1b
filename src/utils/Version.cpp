#include "utils/Version.h"

#include "platform/Bundle.h"
#include "platform/Platform.h"
#include "utils/FormattedText.h"
#include "utils/IntegerValue.h"

namespace quillmark {

extern const char Quillmark_ClientVersionString[] __attribute__((used)) =
    "@(#)PROGRAM:Quillmark Client  PROJECT:QuillmarkLauncher-1303";

QString versionOfBundleAsString(const Bundle &bundle, qint32 defaultBuild, bool withBuild) {
    const QVariantMap information = bundle.infoDictionary();
    const QVariant version = information.value(QStringLiteral("CFBundleShortVersionString"), QStringLiteral("1.14.4"));
    const QVariant build = information.value(QStringLiteral("CFBundleVersion"), defaultBuild);
    if (!withBuild) {
        return formatted("%@", version.toString());
    }
    return formatted("%@ (%d)", version.toString(), static_cast<qint32>(integerValueOf(build)));
}

QString versionOfThisAppAsString(bool withBuild) {
    constexpr auto kBuild = static_cast<qint32>(Quillmark_ClientVersionNumber);
    static const QString sVersionOfThisAppWithBuild = versionOfBundleAsString(platform().mainBundle, kBuild, true);
    static const QString sVersionOfThisApp = versionOfBundleAsString(platform().mainBundle, kBuild, false);
    return withBuild ? sVersionOfThisAppWithBuild : sVersionOfThisApp;
}

} // namespace quillmark
