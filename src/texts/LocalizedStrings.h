#pragma once

#include "utils/FormattedText.h"

#include <map>
#include <mutex>
#include <string>
#include <string_view>

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

    /// The text of a key; the key itself, with its tokens replaced, when the table lacks it.
    std::string localisedString(std::string_view key);
    /// The text of SECTION_KEY without product names and blanks, when the table has it, else that of the plain key.
    std::string localisedStringStrippingBrandingSection(std::string_view section, std::string_view key);
    /// The text of SECTION_KEY, when the table has it, else that of the plain key.
    std::string localisedStringForSection(std::string_view section, std::string_view key);

private:
    const Bundle &m_bundle;
    const std::string productName;
    const std::string carryfoldProduct;
    const std::string backupProduct;
    const std::string teamFolderProduct;
    const std::string teamFoldersProduct;

    std::mutex m_mutex;
    std::map<std::string, std::string, std::less<>> localisedStrings;
};

/// LocalizedStrings::localisedString() of the main bundle's strings.
std::string QMLocalizedString(std::string_view key);

std::string QMLocalizedMonoString(std::string_view section, std::string_view key);
std::string QMLocalizedMonoStringStripProduct(std::string_view section, std::string_view key);

/// The text of a key as a printf-style format over the arguments.
template <class... Arguments>
std::string QMLocalizedStringWithArguments(std::string_view key, const Arguments &...arguments) {
    return formatted(QMLocalizedString(key), arguments...);
}

} // namespace quillmark
