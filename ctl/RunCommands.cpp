#include "Command.h"

#include "tools/Task+OneLineTasksWithOutput.h"

#include <CLI/CLI.hpp>
#include <memory>

namespace quillmark::ctl {

namespace {

QJsonValue orNull(const QString &text) { return text.isNull() ? QJsonValue() : QJsonValue(text); }

QJsonValue jsonOf(const std::optional<Error> &error) {
    if (!error) {
        return {};
    }
    return QJsonObject{
        {QStringLiteral("domain"), error->domain},
        {QStringLiteral("code"), error->code},
        {QStringLiteral("standardError"), orNull(error->userInfo.value(kTaskStandardErrorKey).toString())},
        {QStringLiteral("terminationStatus"),
         QJsonValue::fromVariant(error->userInfo.value(kTaskTerminationStatusKey))},
        {QStringLiteral("failureReason"), orNull(error->failureReason())},
        {QStringLiteral("description"), orNull(error->description())}};
}

Action defineRun(CLI::App &app) {
    const auto path = std::make_shared<std::string>();
    app.add_option("PATH", *path, "the program; all that follows is its own")->required();
    app.prefix_command();
    app.fallthrough(false);
    return [path, &app](const Output &output) {
        QStringList arguments;
        for (const std::string &word : app.remaining()) {
            arguments << QString::fromStdString(word);
        }
        arguments.removeFirst(); // the "--" before the path
        const QString program = QString::fromStdString(*path);
        std::optional<Error> error;
        const QString printed = stringByLaunchingPath(program, arguments, {}, &error);
        output.json(QJsonObject{{QStringLiteral("output"), orNull(printed)}, {QStringLiteral("error"), jsonOf(error)}});
        if (error && error->code == kTaskFailed) {
            throw Failure{program,
                          error->userInfo.isEmpty() ? QStringLiteral("could not be run") : error->description()};
        }
        return Answer::Yes;
    };
}

constexpr Command kCommands[] = {
    {nullptr, "run", "run a program to its end and tell what it printed", "quillmarkctl run /bin/ls -l /Applications",
     defineRun},
};

} // namespace

std::span<const Command> runCommands() { return kCommands; }

} // namespace quillmark::ctl
