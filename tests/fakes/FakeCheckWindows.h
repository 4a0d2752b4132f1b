#pragma once

#include "fakes/Transcript.h"
#include "platform/Alerts.h"
#include "platform/CheckWindowView.h"
#include "platform/files/Path.h"
#include "platform/windows/HeaderBranding.h"

#include <map>
#include <optional>

namespace quillmark::test {

/// A check window that records what it is told, and keeps it.
class FakeCheckWindow final : public CheckWindowView, public Recorder {
public:
    using Recorder::Recorder;

    std::map<Outlet, std::string> texts;
    std::vector<std::string> faults; ///< "NAME is STATUS"
    std::optional<HeaderBranding> branding;
    Owner *owner = nullptr;

    void setText(Outlet outlet, const std::string &text) override {
        static const std::map<Outlet, std::string> names{
            {Outlet::Header, "header"},          {Outlet::Explanation, "explanation"},
            {Outlet::InstallButton, "install"},  {Outlet::DontInstallButton, "don't install"},
            {Outlet::DetailsButton, "details"},  {Outlet::FaultsList, "list"},
            {Outlet::NameColumn, "name column"}, {Outlet::StatusColumn, "status column"},
            {Outlet::Window, "window"},          {Outlet::Progress, "progress"}};
        texts[outlet] = text;
        record("setText " + names.at(outlet));
    }
    void useWelcomeBranding() override { record("useWelcomeBranding"); }
    void setHeaderLogo(const Image &image) override { record("setHeaderLogo " + image.name); }
    void makeInstallButtonDefault() override { record("makeInstallButtonDefault"); }
    void setFaults(const std::vector<Fault> &list) override {
        faults.clear();
        for (const Fault &fault : list) {
            faults.push_back(fault.name + " is " + fault.status);
        }
        record("setFaults");
    }
    void bringToFront() override { record("bringToFront"); }
    void beginProgressSheet() override { record("beginProgressSheet"); }
    void endProgressSheet() override {
        record("endProgressSheet");
        owner->sheetDidEnd();
    }
    void orderOutProgressSheet() override { record("orderOutProgressSheet"); }
    void beginAlertSheet(const AlertDescription &alert) override {
        record("beginAlertSheet " + alert.messageText + " | " + alert.informativeText + " | " +
               joined(alert.buttons, ", "));
    }
};

class FakeCheckWindows final : public CheckWindows, public Recorder {
public:
    explicit FakeCheckWindows(Transcript &transcript) : Recorder(transcript), window(transcript) {}

    bool canBeShown = true;
    FakeCheckWindow window;
    CheckWindowView *windowInItsPlace = nullptr; ///< is handed out instead

    void prepare() override { record("prepare"); }
    CheckWindowView *load(const std::string &interfaceFile, const HeaderBranding &branding,
                          CheckWindowView::Owner &owner) override {
        record("load " + lastPathComponent(interfaceFile));
        window.branding = branding;
        window.owner = &owner;
        CheckWindowView *const shown = windowInItsPlace != nullptr ? windowInItsPlace : &window;
        return canBeShown ? shown : nullptr;
    }
    std::optional<std::string> drawHeader(const HeaderPicture & /*picture*/, std::string &obstacle) override {
        obstacle = "nothing is drawn here";
        return std::nullopt;
    }
};

} // namespace quillmark::test
