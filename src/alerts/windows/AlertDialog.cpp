#include "alerts/windows/AlertDialog.h"

#include "alerts/windows/AlertParts.h"
#include "platform/Alerts.h"
#include "texts/windows/QtText.h"

#include <QAccessible>
#include <QCheckBox>
#include <QCursor>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QIcon>
#include <QPushButton>
#include <QScreen>
#include <QStyle>
#include <QVBoxLayout>
#include <algorithm>

namespace quillmark {

namespace {

constexpr int kMargin = 20;       // between the window's edge and what it holds
constexpr int kIconSpacing = 18;  // between icon and texts
constexpr int kTextSpacing = 8;   // between the two texts
constexpr int kAboveButtons = 22; // between texts and buttons
constexpr int kBetweenButtons = 10;
constexpr int kMinimumButtonWidth = 88;
constexpr int kBesideTitle = 6;          // more than the style leaves between a button's title and its edges
constexpr int kAboveSuppression = 8;     // more than between the texts
constexpr int kDark = 128;               // lightness below which a ground is dark
constexpr int kLighterGround = 250;      // percent
constexpr double kSmallFont = 11.0 / 13; // the small system font of a Mac beside the ordinary one

/// An ampersand marks no shortcut key here; the texts are shared with systems that have none.
QString titleWithoutMnemonic(QString title) { return title.replace(u'&', QStringLiteral("&&")); }

} // namespace

AlertDialog::AlertDialog(const AlertDescription &alert, const QIcon &icon, QWidget *parent)
    : QDialog(parent, (parent != nullptr ? Qt::Sheet : Qt::Dialog) | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                          Qt::WindowCloseButtonHint),
      m_escapeButton(alert.escapeButton.value_or(alert.lastButton())) {
    setObjectName(QStringLiteral("alert"));
    setWindowTitle(qtText(alert.windowTitle));
    setWindowIcon(icon);
    // Its accessible name is the title; a screen reader reads this beside it when the window appears.
    setAccessibleDescription(
        QStringList{qtText(alert.messageText), qtText(alert.informativeText)}.join(u' ').trimmed());

    // A layout that stands in the window makes what is added to it the window's child at once, and the order of the
    // children is the order in which assistive programs read them.
    auto *const all = new QVBoxLayout(this);
    all->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
    all->setSpacing(kAboveButtons);
    all->setSizeConstraint(QLayout::SetFixedSize);
    auto *const upper = new QHBoxLayout;
    all->addLayout(upper, 1);
    upper->setSpacing(kIconSpacing);
    upper->addWidget(new AlertIcon(icon), 0, Qt::AlignTop);
    auto *const texts = new QVBoxLayout;
    upper->addLayout(texts, 1);
    addTexts(*texts, alert);
    auto *const lower = new QHBoxLayout;
    lower->setSpacing(kBetweenButtons);
    all->addLayout(lower);
    QStringList titles;
    for (const std::string &title : alert.buttons) {
        titles << qtText(title);
    }
    addButtons(*lower, titles);
}

void AlertDialog::addTexts(QBoxLayout &layout, const AlertDescription &alert) {
    layout.setSpacing(kTextSpacing);
    auto *const message = new AlertText(qtText(alert.messageText));
    message->setObjectName(QStringLiteral("messageText"));
    QFont bold;
    bold.setBold(true);
    message->setFont(bold);
    layout.addWidget(message);
    if (!alert.informativeText.empty()) {
        auto *const informative = new AlertText(qtText(alert.informativeText));
        informative->setObjectName(QStringLiteral("informativeText"));
        layout.addWidget(informative);
    }
    if (!alert.suppressionText.empty()) {
        layout.addSpacing(kAboveSuppression);
        addSuppression(layout, qtText(alert.suppressionText));
    }
    layout.addStretch(1);
}

void AlertDialog::addSuppression(QBoxLayout &layout, const QString &title) {
    m_suppression = new QCheckBox(titleWithoutMnemonic(title));
    m_suppression->setObjectName(QStringLiteral("suppression"));
    m_suppression->setAccessibleName(title);
    m_suppression->setAttribute(Qt::WA_MacSmallSize);
    QFont small = m_suppression->font();
    small.setPointSizeF(small.pointSizeF() * kSmallFont);
    m_suppression->setFont(small);
    // Styles draw its frame darker than the window, which nobody sees where that is dark.
    QPalette colors = palette();
    if (const QColor ground = colors.color(QPalette::Window); ground.lightness() < kDark) {
        colors.setColor(QPalette::Base, ground.lighter(kLighterGround));
        m_suppression->setPalette(colors);
    }
    layout.addWidget(m_suppression, 0, Qt::AlignLeading);
}

bool AlertDialog::isSuppressionChecked() const { return m_suppression != nullptr && m_suppression->isChecked(); }

/// The default button is made first, which makes it the first for the Tab key, and stands outermost.
void AlertDialog::addButtons(QBoxLayout &layout, QStringList titles) {
    if (titles.isEmpty()) {
        titles << QStringLiteral("OK");
    }
    layout.addStretch(1);
    for (int index = 0; index < titles.size(); ++index) {
        auto *const button = new QPushButton(titleWithoutMnemonic(titles[index]), this);
        button->setObjectName(QStringLiteral("button%1").arg(index));
        button->setAccessibleName(titles[index]);
        button->setMinimumWidth(std::max(kMinimumButtonWidth, button->sizeHint().width() + 2 * kBesideTitle));
        button->setAutoDefault(false); // Return presses the default button wherever the focus is
        button->setDefault(index == 0);
        connect(button, &QPushButton::clicked, this, [this, index] { done(index); });
        layout.insertWidget(1, button); // behind the stretch, before the earlier ones
        if (index == 0) {
            button->setFocus();
        }
    }
}

void AlertDialog::showEvent(QShowEvent *event) {
    adjustSize();
    if (parentWidget() == nullptr) { // a sheet is where its window has put it
        // Where the user looks: the screen with the pointer.
        const QScreen *pointed = QGuiApplication::screenAt(QCursor::pos());
        const QScreen &shown = pointed != nullptr ? *pointed : *screen();
        move(QStyle::alignedRect(layoutDirection(), Qt::AlignCenter, size(), shown.availableGeometry()).topLeft());
    }
    QDialog::showEvent(event);
    raise();
    activateWindow();
    QAccessibleEvent alert(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

} // namespace quillmark
