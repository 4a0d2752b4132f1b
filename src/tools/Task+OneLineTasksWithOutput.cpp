#include "tools/Task+OneLineTasksWithOutput.h"

#include "platform/Authorization.h"
#include "platform/Platform.h"
#include "tools/TaskOutputReader.h"
#include "utils/Exception.h"
#include "utils/FormattedText.h"
#include "utils/Utf8Text.h"

#include <QStringDecoder>
#include <array>

namespace quillmark {

namespace {

void store(std::optional<Error> *target, std::optional<Error> error) {
    if (target != nullptr) {
        *target = std::move(error);
    }
}

/// The user info ends at its first missing value, which is the standard error of a program that did not run.
QVariantMap failureInfo(const QString &standardError, const Exception &exception, int terminationStatus) {
    if (standardError.isNull()) {
        return {};
    }
    return {{kTaskStandardErrorKey, standardError},
            {kLocalizedFailureReasonKey, exception.name()},
            {kLocalizedDescriptionKey, exception.reason()},
            {kTaskTerminationStatusKey, terminationStatus}};
}

} // namespace

QString stringByLaunchingPath(const QString &path, const QStringList &arguments, const OnCreatedBlock &onCreatedDoBlock,
                              std::optional<Error> *error) {
    TaskOutputReader reader(platform().tasks, platform().mainThread, {path, arguments});
    QString output;
    QString standardError;
    try {
        reader.launchTaskAndRunSynchronous(onCreatedDoBlock);
        output = utf8Text(reader.standardOutputData());
        standardError = utf8Text(reader.standardErrorData());
        if (const int status = reader.terminationStatus(); status != 0) {
            throw Exception(QStringLiteral("Process Failed"), formatted("Task terminationStatus was %d", status));
        }
    } catch (const Exception &exception) {
        store(error,
              Error{kTaskErrorDomain, kTaskFailed, failureInfo(standardError, exception, reader.terminationStatus())});
        return output;
    }
    if (standardError.isEmpty()) {
        store(error, std::nullopt);
    } else {
        store(error, Error{kTaskErrorDomain,
                           kTaskWroteToStandardError,
                           {{kTaskStandardErrorKey, standardError}, {kTaskTerminationStatusKey, 0}}});
    }
    return output;
}

QString stringByLaunchingPath(const QString &path, const QStringList &arguments,
                              Authorization::Reference &authorization, const OnCreatedBlock & /*onCreatedDoBlock*/,
                              std::optional<Error> *error) {
    std::vector<std::string> vector;
    for (const QString &argument : arguments) {
        vector.push_back(argument.toStdString());
    }
    std::unique_ptr<CommunicationsPipe> pipe;
    if (const qint32 status = authorization.executeWithPrivileges(path.toStdString(), vector, &pipe); status != 0) {
        store(error, Error{kTaskErrorDomain, status, {}});
        return {};
    }
    store(error, std::nullopt);
    QString output = QStringLiteral("");
    // Keeps a character's bytes from one piece to the next, and a byte order mark as printed.
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::ConvertInitialBom);
    std::array<char, 64> piece{};
    for (std::int64_t count = 0; (count = pipe->read(piece.data(), piece.size())) > 0;) {
        output += decoder.decode(QByteArrayView(piece.data(), count));
    }
    return output;
}

} // namespace quillmark
