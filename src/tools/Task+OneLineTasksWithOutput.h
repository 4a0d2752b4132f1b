#pragma once

#include "platform/Authorization.h"
#include "utils/Error.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace quillmark {

/// The domain of the errors made here. Their codes: -1 the run failed, -2 it succeeded and something was written to
/// standard error; in the privileged form the platform's status.
inline constexpr const char *kTaskErrorDomain = "com.apple.NSTask.OneLineTasksWithOutput";
inline constexpr std::int32_t kTaskFailed = -1;
inline constexpr std::int32_t kTaskWroteToStandardError = -2;

/// Keys of the errors' user info besides the two common ones.
inline constexpr Key kTaskStandardErrorKey{"standardError"};
inline constexpr Key kTaskTerminationStatusKey{"terminationStatus"};

using OnCreatedBlock = std::function<void(std::int32_t processIdentifier)>;

/// Runs a program to its end, as TaskOutputReader does. \returns its standard output, untrimmed; absent when the
/// program could not be launched or printed what is not UTF-8. An error does not take the output away. \param error
/// receives what went wrong, or nothing; may be null.
std::optional<std::string> stringByLaunchingPath(const std::string &path, const std::vector<std::string> &arguments,
                                                 const OnCreatedBlock &onCreatedDoBlock, std::optional<Error> *error);

/// Runs a program with administrator rights. \returns its standard output, absent on failure. Nobody learns its exit
/// status. \param onCreatedDoBlock is accepted and never called.
std::optional<std::string> stringByLaunchingPath(const std::string &path, const std::vector<std::string> &arguments,
                                                 Authorization::Reference &authorization,
                                                 const OnCreatedBlock &onCreatedDoBlock, std::optional<Error> *error);

} // namespace quillmark
