#include "texts/LocalizedStrings.h"

#include "platform/Bundle.h"
#include "platform/Platform.h"
#include "utils/ReplaceAll.h"

namespace quillmark {

LocalizedStrings &LocalizedStrings::sharedManager() {
    // Never destroyed: other threads may ask until the very end.
    static auto &instance = *new LocalizedStrings(platform().mainBundle);
    return instance;
}

LocalizedStrings::LocalizedStrings(const Bundle &bundle)
    : m_bundle(bundle), productName(bundle.localizedString("ProductName")),
      carryfoldProduct(bundle.localizedString("CarryfoldProduct")),
      backupProduct(bundle.localizedString("BackupProduct")),
      teamFolderProduct(bundle.localizedString("TeamFolderProduct")),
      teamFoldersProduct(bundle.localizedString("TeamFoldersProduct")) {}

std::string LocalizedStrings::localisedString(std::string_view key) {
    const std::scoped_lock lock(m_mutex);
    if (const auto cached = localisedStrings.find(key); cached != localisedStrings.end()) {
        return cached->second;
    }
    std::string text = m_bundle.localizedString(key);
    replaceAll(text, "{#ProductName#}", productName);
    replaceAll(text, "{#CarryfoldProduct#}", carryfoldProduct);
    replaceAll(text, "{#BackupProduct#}", backupProduct);
    replaceAll(text, "{#TeamFolderProduct#}", teamFolderProduct);
    replaceAll(text, "{#TeamFoldersProduct#}", teamFoldersProduct);
    return localisedStrings.emplace(key, text).first->second;
}

std::string LocalizedStrings::localisedStringForSection(std::string_view section, std::string_view key) {
    const std::string composite = formatted("%@_%@", section, key);
    const std::string text = localisedString(composite);
    return text != composite ? text : localisedString(key);
}

std::string LocalizedStrings::localisedStringStrippingBrandingSection(std::string_view section, std::string_view key) {
    std::string stripped = formatted("%@_%@", section, key);
    // The order is deliberate: of a plural that contains its singular the rest stays. So are "/n" and "/r", which are
    // two characters each and no line ends.
    for (const std::string_view piece :
         {std::string_view(productName), std::string_view(carryfoldProduct), std::string_view(backupProduct),
          std::string_view(teamFolderProduct), std::string_view(teamFoldersProduct), std::string_view(" "),
          std::string_view("/n"), std::string_view("/r")}) {
        if (!piece.empty()) {
            replaceAll(stripped, piece, "");
        }
    }
    const std::string text = localisedString(stripped);
    return text != stripped ? text : localisedString(key);
}

std::string QMLocalizedString(std::string_view key) { return LocalizedStrings::sharedManager().localisedString(key); }

std::string QMLocalizedMonoString(std::string_view section, std::string_view key) {
    return LocalizedStrings::sharedManager().localisedStringForSection(section, key);
}

std::string QMLocalizedMonoStringStripProduct(std::string_view section, std::string_view key) {
    return LocalizedStrings::sharedManager().localisedStringStrippingBrandingSection(section, key);
}

} // namespace quillmark
