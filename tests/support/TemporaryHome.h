#pragma once

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace quillmark::test {

/// A folder of the test's own, which also is its home folder.
class TemporaryHome {
public:
    TemporaryHome() : m_previousHome(qgetenv("HOME")) { qputenv("HOME", QFile::encodeName(m_folder.path())); }
    TemporaryHome(const TemporaryHome &) = delete;
    TemporaryHome &operator=(const TemporaryHome &) = delete;
    ~TemporaryHome() { qputenv("HOME", m_previousHome); }

    QString path(const QString &relative = {}) const {
        return relative.isEmpty() ? m_folder.path() : m_folder.path() + u'/' + relative;
    }
    /// Writes a file below the home folder, with the folders above it. \returns its path.
    QString write(const QString &relative, const QByteArray &contents) const {
        const QString file = path(relative);
        QDir().mkpath(file.left(file.lastIndexOf(u'/')));
        QFile writer(file);
        EXPECT_TRUE(writer.open(QIODevice::WriteOnly));
        EXPECT_EQ(writer.write(contents), contents.size());
        return file;
    }
    QString makeFolder(const QString &relative) const {
        EXPECT_TRUE(QDir().mkpath(path(relative)));
        return path(relative);
    }

private:
    QByteArray m_previousHome;
    QTemporaryDir m_folder;
};

/// A whole file's bytes.
inline QByteArray readAll(const QString &path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(unreadable)");
}

} // namespace quillmark::test
