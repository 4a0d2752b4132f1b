#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVariantMap>
#include <exception>
#include <memory>

namespace quillmark {

/// Invalid configuration: a bad logging level, a log file that can't be opened.
inline constexpr QLatin1StringView kConfigurationFault("Configuration Fault");
/// A failure at run time that has no better name.
inline constexpr QLatin1StringView kGenericException("NSGenericException");

/// The only key of Exception::userInfo: an ExceptionStack.
inline constexpr QLatin1StringView kExceptionStackKey("stack");

/// The earlier exceptions that one wraps, the innermost first, each as "name (reason)". The list is shared between an
/// exception and those that wrap it.
using ExceptionStack = std::shared_ptr<QStringList>;

class Exception : public std::exception {
public:
    Exception(QString name, QString reason, QVariantMap userInfo = {})
        : m_name(std::move(name)), m_reason(std::move(reason)), m_userInfo(std::move(userInfo)),
          m_what((m_name + QStringLiteral(" (") + m_reason + u')').toUtf8()) {}

    const QString &name() const { return m_name; }
    const QString &reason() const { return m_reason; }
    QVariantMap &userInfo() { return m_userInfo; }
    const QVariantMap &userInfo() const { return m_userInfo; }
    const char *what() const noexcept override { return m_what.constData(); }

    /// Null when the exception wraps none.
    ExceptionStack stack() const { return m_userInfo.value(kExceptionStackKey).value<ExceptionStack>(); }

private:
    QString m_name;
    QString m_reason;
    QVariantMap m_userInfo;
    QByteArray m_what;
};

} // namespace quillmark

Q_DECLARE_METATYPE(quillmark::ExceptionStack)
