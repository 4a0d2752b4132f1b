#pragma once

#include <optional>
#include <string>
#include <vector>

namespace quillmark {

/// What an alert says. All texts are plain, in the user's language.
struct AlertDescription {
    std::string windowTitle;     ///< the product's name
    std::string messageText;     ///< what is the matter, in one sentence
    std::string informativeText; ///< what it means and what can be done; may be empty
    /// The first is the default button, which Return presses; the last is the harmless one. None stands for one "OK".
    std::vector<std::string> buttons;
    /// The button that Escape and the close box press; absent: the last one.
    std::optional<int> escapeButton;
    /// What stands beside a small check box under the texts, which is off at first; empty: there is none.
    std::string suppressionText;

    /// The index of the harmless button.
    int lastButton() const { return buttons.empty() ? 0 : static_cast<int>(buttons.size()) - 1; }
};

/// What the user did with an alert.
struct AlertAnswer {
    int button = 0; ///< the index of the one that was pressed
    bool isSuppressionChecked = false;
};

/// Alerts in windows of their own.
///
/// Concurrency: the main thread only.
class Alerts {
public:
    virtual ~Alerts() = default;

    /// Shows an alert and waits for an answer. Where no window can be shown, the texts go to standard error, the
    /// problem is reported, and the last button counts as pressed.
    virtual AlertAnswer runModal(const AlertDescription &alert) = 0;
};

} // namespace quillmark
