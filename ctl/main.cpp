#include "CommandLine.h"

#include "platform/Bundle.h"
#include "platform/Platform.h"
#include "utils/Exception.h"
#include "utils/LogSetup.h"

#include <QFileInfo>
#include <algorithm>
#include <cstdio>
#include <memory>

namespace quillmark::ctl {

namespace {

int tell(const QString &what, const QString &why, int status) {
    // One line, whatever the texts hold.
    const QString named = what.trimmed().isEmpty() ? QStringLiteral("\"%1\"").arg(what) : what;
    const QString line = QStringLiteral("quillmarkctl: %1: %2").arg(named, why).simplified() + u'\n';
    std::fputs(line.toUtf8().constData(), stderr);
    return status;
}

/// Takes another bundle's resources, for good: the managers keep the bundle of their first use.
void takeBundle(const QString &path) {
    static const std::unique_ptr<Bundle> bundle = nativeBundle(path);
    if (!QFileInfo(bundle->resourcePath()).isDir()) {
        throw Failure{path, QStringLiteral("is no application bundle")};
    }
    static const Platform withBundle = nativePlatform().with(*bundle);
    installPlatform(&withBundle);
}

int run(const CommandLine &commandLine) {
    const Options &options = commandLine.options();
    if (options.bundle) {
        takeBundle(QString::fromStdString(*options.bundle));
    }
    if (options.logLevel) {
        initLogging2(QStringLiteral("error"), QString::fromStdString(*options.logLevel), QString());
        _setStandardStreams(stderr, stderr);
        logReportedProblems();
    }
    const Output output(stdout, options.isPretty);
    return static_cast<int>(commandLine.action()(output));
}

int parseAndRun(int count, char **arguments) {
    CommandLine commandLine;
    try {
        commandLine.parse({arguments + std::min(count, 1), arguments + count});
    } catch (const CLI::Success &help) { // --help and --version
        return commandLine.app().exit(help);
    } catch (const CLI::ParseError &error) {
        if (commandLine.options().generatedForm) {
            std::fputs(generated(commandLine.app(), *commandLine.options().generatedForm).c_str(), stdout);
            return 0;
        }
        const std::vector<std::string> unknown = commandLine.app().remaining();
        const std::string why = unknown.empty() ? error.what() : "there is no \"" + unknown.front() + "\"; see --help";
        return tell(QString::fromStdString(commandLine.commandName()), QString::fromStdString(why), kWrongCommandLine);
    }
    const QString what = QString::fromStdString(commandLine.commandName());
    try {
        return run(commandLine);
    } catch (const Failure &failure) {
        return tell(failure.what, failure.why, kFailed);
    } catch (const Exception &exception) {
        return tell(what, exception.reason(), kFailed);
    } catch (const std::exception &exception) {
        return tell(what, QString::fromLocal8Bit(exception.what()), kFailed);
    }
}

} // namespace

} // namespace quillmark::ctl

int main(int count, char **arguments) {
    // Standard output carries results, standard error one line: no log, nor what Qt remarks about the session.
    quillmark::_setStandardStreams(nullptr, nullptr);
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    return quillmark::ctl::parseAndRun(count, arguments);
}
