#include "utils/ProductVersion.h"

#include "platform/Bundle.h"
#include "platform/Platform.h"
#include "platform/values/ScalarText.h"
#include "utils/FormattedText.h"
#include "utils/IntegerValue.h"

namespace quillmark {

extern const char Quillmark_ClientVersionString[] __attribute__((used, retain)) =
    "@(#)PROGRAM:Quillmark Client  PROJECT:QuillmarkLauncher-1303";

std::string versionOfBundleAsString(const Bundle &bundle, std::int32_t defaultBuild, bool withBuild) {
    const Dictionary information = bundle.infoDictionary();
    const auto entry = [&information](std::string_view key, const Value &fallback) {
        return information.contains(key) ? valueOf(information, key) : fallback;
    };
    const Value version = entry("CFBundleShortVersionString", "1.14.4");
    const Value build = entry("CFBundleVersion", defaultBuild);
    if (!withBuild) {
        return formatted("%@", scalarText(version));
    }
    return formatted("%@ (%d)", scalarText(version), static_cast<std::int32_t>(integerValueOf(build)));
}

std::string versionOfThisAppAsString(bool withBuild) {
    constexpr auto kBuild = static_cast<std::int32_t>(Quillmark_ClientVersionNumber);
    static const std::string sVersionOfThisAppWithBuild = versionOfBundleAsString(platform().mainBundle, kBuild, true);
    static const std::string sVersionOfThisApp = versionOfBundleAsString(platform().mainBundle, kBuild, false);
    return withBuild ? sVersionOfThisAppWithBuild : sVersionOfThisApp;
}

} // namespace quillmark
