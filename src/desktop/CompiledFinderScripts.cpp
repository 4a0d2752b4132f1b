#include "desktop/CompiledFinderScripts.h"

#include "utils/FormattedText.h"

#include <fmt/format.h>

namespace quillmark {

namespace {

/// What both scripts end with.
constexpr const char *kLinesThatReadTheSelection[] = {
    "set alist to selection as alias list",
    "set plist to {}",
    "repeat with afile in alist",
    "set end of plist to (POSIX path of (afile as text))",
    "end repeat",
    "end tell",
    "return plist",
};

/// A script: the lines and those that read the selection, each behind tabs and blanks, without a line end behind the
/// last.
std::string sourceOf(const std::string &indentation, std::vector<std::string> lines) {
    for (const char *const line : kLinesThatReadTheSelection) {
        lines.emplace_back(line);
    }
    return fmt::format("{}{}", indentation, fmt::join(lines, '\n' + indentation));
}

std::string selectionSource() { return sourceOf("\t\t\t ", {"tell application \"Finder\""}); }

std::string retrySource(const std::string &productName) {
    return sourceOf("\t\t\t\t\t\t\t\t\t  ", {formatted("tell application \"%@Core\"", productName), "activate",
                                             "end tell", "tell application \"Finder\"", "activate"});
}

} // namespace

CompiledFinderScripts::CompiledFinderScripts(Scripts &scripts, const std::string &productName)
    : m_selection(scripts.scriptWithSource(selectionSource())),
      m_retry(scripts.scriptWithSource(retrySource(productName))) {
    m_selection->compile();
    // Deliberate: the selection script once more. The retry script is compiled when it first runs.
    m_selection->compile();
}

} // namespace quillmark
