#include "branding/LocalizedStrings.h"

#include "platform/Bundle.h"
#include "platform/Platform.h"

namespace quillmark {

LocalizedStrings &LocalizedStrings::sharedManager() {
    // Never destroyed: other threads may ask until the very end.
    static auto &instance = *new LocalizedStrings(platform().mainBundle);
    return instance;
}

LocalizedStrings::LocalizedStrings(const Bundle &bundle)
    : m_bundle(bundle), productName(bundle.localizedString(QStringLiteral("ProductName"))),
      carryfoldProduct(bundle.localizedString(QStringLiteral("CarryfoldProduct"))),
      backupProduct(bundle.localizedString(QStringLiteral("BackupProduct"))),
      teamFolderProduct(bundle.localizedString(QStringLiteral("TeamFolderProduct"))),
      teamFoldersProduct(bundle.localizedString(QStringLiteral("TeamFoldersProduct"))) {}

QString LocalizedStrings::localisedString(const QString &key) {
    if (key.isNull()) {
        return {};
    }
    const std::scoped_lock lock(m_mutex);
    if (const auto cached = localisedStrings.constFind(key); cached != localisedStrings.constEnd()) {
        return *cached;
    }
    QString text = m_bundle.localizedString(key);
    text.replace(QLatin1StringView("{#ProductName#}"), productName);
    text.replace(QLatin1StringView("{#CarryfoldProduct#}"), carryfoldProduct);
    text.replace(QLatin1StringView("{#BackupProduct#}"), backupProduct);
    text.replace(QLatin1StringView("{#TeamFolderProduct#}"), teamFolderProduct);
    text.replace(QLatin1StringView("{#TeamFoldersProduct#}"), teamFoldersProduct);
    localisedStrings.insert(key, text);
    return text;
}

QString LocalizedStrings::localisedStringForSection(const QString &section, const QString &key) {
    const QString composite = formatted("%@_%@", section, key);
    const QString text = localisedString(composite);
    return text != composite ? text : localisedString(key);
}

QString LocalizedStrings::localisedStringStrippingBrandingSection(const QString &section, const QString &key) {
    QString stripped = formatted("%@_%@", section, key);
    // The order is deliberate: of a plural that contains its singular the rest stays. So are "/n" and "/r", which are
    // two characters each and no line ends.
    for (const QString &piece : {productName, carryfoldProduct, backupProduct, teamFolderProduct, teamFoldersProduct,
                                 QStringLiteral(" "), QStringLiteral("/n"), QStringLiteral("/r")}) {
        if (!piece.isEmpty()) {
            stripped.remove(piece);
        }
    }
    const QString text = localisedString(stripped);
    return text != stripped ? text : localisedString(key);
}

QString QMLocalizedString(const QString &key) { return LocalizedStrings::sharedManager().localisedString(key); }

QString QMLocalizedMonoString(const QString &section, const QString &key) {
    return LocalizedStrings::sharedManager().localisedStringForSection(section, key);
}

QString QMLocalizedMonoStringStripProduct(const QString &section, const QString &key) {
    return LocalizedStrings::sharedManager().localisedStringStrippingBrandingSection(section, key);
}

} // namespace quillmark
