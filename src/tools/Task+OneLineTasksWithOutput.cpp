#include "tools/Task+OneLineTasksWithOutput.h"

#include "platform/values/Utf8Text.h"
#include "tools/TaskOutputReader.h"
#include "utils/Exception.h"

#include <array>

namespace quillmark {

namespace {

void store(std::optional<Error> *target, std::optional<Error> error) {
    if (target != nullptr) {
        *target = std::move(error);
    }
}

/// The user info ends at its first missing value, which is the standard error of a program that did not run.
Dictionary failureInfo(const std::optional<std::string> &standardError, const Exception &exception,
                       int terminationStatus) {
    if (!standardError) {
        return {};
    }
    return {{kTaskStandardErrorKey, *standardError},
            {kLocalizedFailureReasonKey, exception.name()},
            {kLocalizedDescriptionKey, exception.reason()},
            {kTaskTerminationStatusKey, terminationStatus}};
}

} // namespace

std::optional<std::string> stringByLaunchingPath(const std::string &path, const std::vector<std::string> &arguments,
                                                 const OnCreatedBlock &onCreatedDoBlock, std::optional<Error> *error) {
    TaskOutputReader reader({path, arguments});
    std::optional<std::string> output;
    std::optional<std::string> standardError;
    try {
        reader.launchTaskAndRunSynchronous(onCreatedDoBlock);
        output = utf8Text(std::move(reader.standardOutputData()));
        standardError = utf8Text(std::move(reader.standardErrorData()));
        if (const int status = reader.terminationStatus(); status != 0) {
            throw Exception("Process Failed", "Task terminationStatus was " + std::to_string(status));
        }
    } catch (const Exception &exception) {
        store(error,
              Error{kTaskErrorDomain, kTaskFailed, failureInfo(standardError, exception, reader.terminationStatus())});
        return output;
    }
    if (!standardError || standardError->empty()) {
        store(error, std::nullopt);
    } else {
        store(error, Error{kTaskErrorDomain,
                           kTaskWroteToStandardError,
                           {{kTaskStandardErrorKey, *standardError}, {kTaskTerminationStatusKey, 0}}});
    }
    return output;
}

std::optional<std::string> stringByLaunchingPath(const std::string &path, const std::vector<std::string> &arguments,
                                                 Authorization::Reference &authorization,
                                                 const OnCreatedBlock & /*onCreatedDoBlock*/,
                                                 std::optional<Error> *error) {
    std::unique_ptr<CommunicationsPipe> pipe;
    if (const std::int32_t status = authorization.executeWithPrivileges(path, arguments, &pipe); status != 0) {
        store(error, Error{kTaskErrorDomain, status, {}});
        return std::nullopt;
    }
    store(error, std::nullopt);
    std::string output;
    std::array<char, 64> piece{};
    for (std::int64_t count = 0; (count = pipe->read(piece.data(), piece.size())) > 0;) {
        output.append(piece.data(), static_cast<size_t>(count));
    }
    return validText(output);
}

} // namespace quillmark
