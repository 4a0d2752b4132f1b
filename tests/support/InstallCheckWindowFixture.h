#pragma once

#include "support/InstallCheckFixture.h"

namespace quillmark::test {

using Outlet = CheckWindowView::Outlet;

/// Ends the launcher, as the real one does, when it is to start the core.
class FakeDelegate final : public ApplicationDelegate {
public:
    explicit FakeDelegate(Transcript &transcript) : m_transcript(transcript) {}
    std::int32_t brandId() const override { return 15; }
    bool endsTheProcess = true;
    void launchCore() override {
        m_transcript.record("launchCore");
        if (endsTheProcess) {
            throw Terminated();
        }
    }

private:
    Transcript &m_transcript;
};

/// A check window over a catalogue with items at fault. Its texts are its keys, but for those that are put together.
class InstallCheckWindow : public InstallCheckFixture {
protected:
    InstallCheckWindow() {
        platform.tasks.usualStatus = 0;
        platform.bundle.resources = {"InstallCheck.ui", "logo-1.bmp"};
        platform.bundle.strings.insert({{"QuillmarkLauncher_RepairInfo", "info;"},
                                        {"QuillmarkLauncher_Components", "components;"},
                                        {"QuillmarkLauncher_FileSystem", "file system;"},
                                        {"QuillmarkLauncher_Helpers", "helpers;"},
                                        {"RepairFailed", "50%% failed"}});
    }

    RequiredItem missing(const char *type, const char *name) const {
        return itemOf(type, name, home.path("none"), {{kInstaller, "x.pkg"}, {kVersion, "1.14.4"}});
    }
    /// Shows the window over those items.
    void show(const List &items) {
        setItems(items);
        manager().setDelegate(&delegate);
        EXPECT_FALSE(manager().checkForRequiredItems());
        platform.transcript.clear();
    }
    std::string explanationFor(const List &items) {
        show(items);
        return window.texts.at(Outlet::Explanation);
    }
    /// What was asked of the window and of the application, without what the repair asked for.
    Lines calls() const {
        Lines list = platform.transcript.calls();
        std::erase_if(list, [](const std::string &call) {
            return call.starts_with("run ") || call.starts_with("Authorization");
        });
        return list;
    }
    void runRepairThread() {
        ASSERT_EQ(platform.mainThread.threads.size(), 1U);
        std::exchange(platform.mainThread.threads, {}).front()();
    }

    /// What the thread does after a click of the button; the main one has not heard of its end yet.
    void repair() {
        window.owner->installButtonClick();
        platform.transcript.clear();
        runRepairThread();
    }

    FakeCheckWindow &window = platform.checkWindows.window;
    FakeDelegate delegate{platform.transcript};
};

} // namespace quillmark::test
