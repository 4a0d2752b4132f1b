#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillmark {

/// Statuses of the platform's authorization services; 0 is success.
inline constexpr std::int32_t kAuthorizationDenied = -60005;
inline constexpr std::int32_t kAuthorizationCanceled = -60006;
inline constexpr std::int32_t kAuthorizationToolExecuteFailure = -60031;

/// Flags of copyRights().
inline constexpr std::uint32_t kAuthorizationInteractionAllowed = 1U << 0U;
inline constexpr std::uint32_t kAuthorizationExtendRights = 1U << 1U;
inline constexpr std::uint32_t kAuthorizationPreAuthorize = 1U << 4U;

/// The right to run programs as the administrator.
inline constexpr const char *kAuthorizationRightAdmin = "system.privilege.admin";

/// The communications pipe of a privileged program.
class CommunicationsPipe {
public:
    virtual ~CommunicationsPipe() = default;

    /// Waits for the program's output and reads at most `size` bytes of it. \returns their number; 0 at the end.
    virtual std::int64_t read(char *buffer, std::int64_t size) = 0;
};

/// Programs with administrator rights, as the platform's authorization services run them.
class Authorization {
public:
    /// What the user has been asked for, and has granted. Its rights end with it.
    class Reference {
    public:
        virtual ~Reference() = default;

        /// Asks for a right, with the platform's password dialog where that is needed. \returns a status.
        virtual std::int32_t copyRights(std::string_view right, std::uint32_t flags) = 0;

        /// Starts a program as the administrator and does not wait for it. \param pipe receives the program's standard
        /// output, when it is not null. \returns a status.
        virtual std::int32_t executeWithPrivileges(const std::string &path, const std::vector<std::string> &arguments,
                                                   std::unique_ptr<CommunicationsPipe> *pipe) = 0;

        /// Waits for the end of any program that executeWithPrivileges() started. \returns its status as `waitpid`
        /// gives it; nothing when there is none left, or when it can't be told.
        virtual std::optional<int> waitForChild() = 0;
    };

    virtual ~Authorization() = default;

    /// Makes a reference that holds no rights yet. \returns a status.
    virtual std::int32_t create(std::unique_ptr<Reference> &reference) = 0;
};

} // namespace quillmark
