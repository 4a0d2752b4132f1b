#pragma once

#include "utils/FormattedText.h"

#include <QHash>
#include <QString>
#include <mutex>

namespace quillmark {

class Bundle;

/// Looks up every text that the user sees, and puts the brand's product names in the place of their tokens. A text
/// stays as it was at its first lookup.
class LocalizedStrings {
public:
    /// The strings of the main bundle.
    static LocalizedStrings &sharedManager();
    /// Reads the five product names; they never change afterwards.
    explicit LocalizedStrings(const Bundle &bundle);

    /// The text of a key; the key itself, with its tokens replaced, when the table lacks it. Null for a null key.
    QString localisedString(const QString &key);
    /// The text of SECTION_KEY without product names and blanks, when the table has it, else that of the plain key.
    QString localisedStringStrippingBrandingSection(const QString &section, const QString &key);
    /// The text of SECTION_KEY, when the table has it, else that of the plain key.
    QString localisedStringForSection(const QString &section, const QString &key);

private:
    const Bundle &m_bundle;
    const QString productName;
    const QString carryfoldProduct;
    const QString backupProduct;
    const QString teamFolderProduct;
    const QString teamFoldersProduct;

    std::mutex m_mutex;
    QHash<QString, QString> localisedStrings;
};

/// LocalizedStrings::localisedString() of the main bundle's strings.
QString QMLocalizedString(const QString &key);

QString QMLocalizedMonoString(const QString &section, const QString &key);
QString QMLocalizedMonoStringStripProduct(const QString &section, const QString &key);

/// The text of a key as a printf-style format over the arguments; null for a null key.
template <class... Arguments>
QString QMLocalizedStringWithArguments(const QString &key, const Arguments &...arguments) {
    return formatted(QMLocalizedString(key), arguments...);
}

} // namespace quillmark
