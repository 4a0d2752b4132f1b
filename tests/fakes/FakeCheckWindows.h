#pragma once

#include "fakes/Transcript.h"
#include "platform/Alerts.h"
#include "platform/CheckWindowView.h"
#include "platform/HeaderBranding.h"

#include <QMap>
#include <optional>

namespace quillmark::test {

/// A check window that records what it is told, and keeps it.
class FakeCheckWindow final : public CheckWindowView {
public:
    explicit FakeCheckWindow(Transcript &transcript) : m_transcript(transcript) {}

    QMap<Outlet, QString> texts;
    QStringList faults; ///< "NAME is STATUS"
    std::optional<HeaderBranding> branding;
    Owner *owner = nullptr;

    void setText(Outlet outlet, const QString &text) override {
        static const QMap<Outlet, QString> names{{Outlet::Header, QStringLiteral("header")},
                                                 {Outlet::Explanation, QStringLiteral("explanation")},
                                                 {Outlet::InstallButton, QStringLiteral("install")},
                                                 {Outlet::DontInstallButton, QStringLiteral("don't install")},
                                                 {Outlet::DetailsButton, QStringLiteral("details")},
                                                 {Outlet::FaultsList, QStringLiteral("list")},
                                                 {Outlet::NameColumn, QStringLiteral("name column")},
                                                 {Outlet::StatusColumn, QStringLiteral("status column")},
                                                 {Outlet::Window, QStringLiteral("window")},
                                                 {Outlet::Progress, QStringLiteral("progress")}};
        texts.insert(outlet, text);
        m_transcript.record(QStringLiteral("setText ") + names.value(outlet));
    }
    void useWelcomeBranding() override { m_transcript.record(QStringLiteral("useWelcomeBranding")); }
    void setHeaderLogo(const Image &image) override {
        m_transcript.record(QStringLiteral("setHeaderLogo ") + image.name);
    }
    void makeInstallButtonDefault() override { m_transcript.record(QStringLiteral("makeInstallButtonDefault")); }
    void setFaults(const QList<Fault> &list) override {
        faults.clear();
        for (const Fault &fault : list) {
            faults << fault.name + QStringLiteral(" is ") + fault.status;
        }
        m_transcript.record(QStringLiteral("setFaults"));
    }
    void bringToFront() override { m_transcript.record(QStringLiteral("bringToFront")); }
    void beginProgressSheet() override { m_transcript.record(QStringLiteral("beginProgressSheet")); }
    void endProgressSheet() override {
        m_transcript.record(QStringLiteral("endProgressSheet"));
        owner->sheetDidEnd();
    }
    void orderOutProgressSheet() override { m_transcript.record(QStringLiteral("orderOutProgressSheet")); }
    void beginAlertSheet(const AlertDescription &alert) override {
        m_transcript.record(QStringLiteral("beginAlertSheet %1 | %2 | %3")
                                .arg(alert.messageText, alert.informativeText, alert.buttons.join(u", ")));
    }

private:
    Transcript &m_transcript;
};

class FakeCheckWindows final : public CheckWindows {
public:
    explicit FakeCheckWindows(Transcript &transcript) : window(transcript), m_transcript(transcript) {}

    bool canBeShown = true;
    FakeCheckWindow window;
    CheckWindowView *windowInItsPlace = nullptr; ///< is handed out instead

    void prepare() override { m_transcript.record(QStringLiteral("prepare")); }
    CheckWindowView *load(const QString &interfaceFile, const HeaderBranding &branding,
                          CheckWindowView::Owner &owner) override {
        m_transcript.record(QStringLiteral("load ") + interfaceFile.mid(interfaceFile.lastIndexOf(u'/') + 1));
        window.branding = branding;
        window.owner = &owner;
        CheckWindowView *const shown = windowInItsPlace != nullptr ? windowInItsPlace : &window;
        return canBeShown ? shown : nullptr;
    }

private:
    Transcript &m_transcript;
};

} // namespace quillmark::test
