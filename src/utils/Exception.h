#pragma once

#include <exception>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace quillmark {

/// Invalid configuration: a bad logging level, a log file that can't be opened.
inline constexpr const char *kConfigurationFault = "Configuration Fault";
/// A failure at run time that has no better name.
inline constexpr const char *kGenericException = "NSGenericException";

/// The only key of Exception::userInfo.
inline constexpr const char *kExceptionStackKey = "stack";

/// The earlier exceptions that one wraps, the innermost first, each as "name (reason)". The list is shared between an
/// exception and those that wrap it.
using ExceptionStack = std::shared_ptr<std::vector<std::string>>;

class Exception : public std::exception {
public:
    using UserInfo = std::map<std::string, ExceptionStack>;

    Exception(std::string name, std::string reason, UserInfo userInfo = {})
        : m_name(std::move(name)), m_reason(std::move(reason)), m_userInfo(std::move(userInfo)),
          m_what(m_name + " (" + m_reason + ')') {}

    const std::string &name() const { return m_name; }
    const std::string &reason() const { return m_reason; }
    UserInfo &userInfo() { return m_userInfo; }
    const UserInfo &userInfo() const { return m_userInfo; }
    const char *what() const noexcept override { return m_what.c_str(); }

    /// Null when the exception wraps none.
    ExceptionStack stack() const {
        const auto stack = m_userInfo.find(kExceptionStackKey);
        return stack != m_userInfo.end() ? stack->second : nullptr;
    }

private:
    std::string m_name;
    std::string m_reason;
    UserInfo m_userInfo;
    std::string m_what;
};

} // namespace quillmark
