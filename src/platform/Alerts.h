#pragma once

#include <QString>
#include <QStringList>
#include <optional>

namespace quillmark {

/// What an alert says. All texts are plain, in the user's language.
struct AlertDescription {
    QString windowTitle;     ///< the product's name
    QString messageText;     ///< what is the matter, in one sentence
    QString informativeText; ///< what it means and what can be done; may be empty
    /// The first is the default button, which Return presses; the last is the harmless one. None stands for one "OK".
    QStringList buttons;
    /// The button that Escape and the close box press; absent: the last one.
    std::optional<int> escapeButton;

    /// The index of the harmless button.
    int lastButton() const { return buttons.isEmpty() ? 0 : static_cast<int>(buttons.size()) - 1; }
};

/// Alerts in windows of their own.
///
/// Concurrency: the main thread only.
class Alerts {
public:
    virtual ~Alerts() = default;

    /// Shows an alert and waits for an answer. Where no window can be shown, the texts go to standard error, the
    /// problem is reported, and the last button counts as pressed. \returns the index of the button that was pressed.
    virtual int runModal(const AlertDescription &alert) = 0;
};

} // namespace quillmark
